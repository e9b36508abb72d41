#pragma once

#include <QDialog>
#include <QTimer>

class QProgressBar;
class QPushButton;

namespace trevane {

class ElidedLabel;

/// The progress window of a long operation: small, modeless, of a fixed size, above its parent. A window is
/// loaded when it is made and unloaded when it is deleted.
///
/// An operation advances it once an entry, a hundred thousand times if need be. Value and label are exact at
/// once; they are painted at most every kRepaintMilliseconds, and the last state always is, as soon as the
/// operation lets window events run.
///
/// The keyboard stays where it is when the window appears, so that showing a folder takes no keys from the
/// one who walks through the folders; while its parent is disabled the gauge is the only window to work with
/// and takes the keyboard. Esc in either window and the frame's close box press Cancel, if that can be
/// pressed.
class frmGage final : public QDialog {
  Q_OBJECT

 public:
  static constexpr int kRepaintMilliseconds = 100;
  static constexpr qint32 kFreshMaximum = 100;

  explicit frmGage(QWidget* parent = nullptr);
  ~frmGage() override;

  void ShowGage(const QString& caption);
  void GageClear();
  /// The bar's maximum becomes n + 1; a negative n counts as 0. A value beyond it becomes the maximum.
  void SetGageMax(qint32 n);
  [[nodiscard]] qint32 GageMax() const;
  [[nodiscard]] qint32 GageValue() const;
  /// Only while the window is visible. The value does not go beyond the maximum.
  void IncrementGageValue(const QString& label);
  void SetGageLabel(const QString& label);
  [[nodiscard]] QString GageLabel() const;
  void CancelEnable(bool enabled);
  void SetCancelVisible(bool visible);
  void SetGageBarVisible(bool visible);
  void GageFormInit();
  /// Its Cancel is there to be pressed.
  [[nodiscard]] bool CanCancel() const;
  /// Never reset while the window is loaded.
  [[nodiscard]] bool IsClickedCancel() const noexcept { return cancelled_; }

  /// Paints what is not painted yet, before the operation blocks. The first time it waits, for a moment at
  /// most, until the window is on the screen.
  void PaintNow();

  void reject() override;

 Q_SIGNALS:
  /// Cancel was pressed.
  void Cancelled();
  /// What the bar shows is painted, or the window appears: as seldom as the bar is painted.
  void Progressed(qint32 value, qint32 maximum);

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Changed();
  void AskForPainting();
  /// False when the window was destroyed meanwhile.
  [[nodiscard]] bool WaitUntilItStands();
  [[nodiscard]] bool BelongsToUs(const QObject* watched) const;

  QProgressBar* prgState_;
  ElidedLabel* lblInfo_;
  QPushButton* cmdCancel_;
  QTimer pace_;
  bool unpainted_ = false;
  bool stands_ = false;
  bool cancelled_ = false;
};

}  // namespace trevane
