#pragma once

#include <QStatusBar>

class QLabel;

namespace trevane {

class ElidedLabel;

/// The status bar: one text, and at the right what must be known all the time: of the controller that is
/// shown, and that the operation log cannot be written.
class StatusLine final : public QStatusBar {
  Q_OBJECT

 public:
  explicit StatusLine(QWidget* parent);

  void ShowText(const QString& text);
  /// Shows why something failed; HasReason is true until another text is shown or the reason is dropped.
  void ShowReason(const QString& line);
  [[nodiscard]] bool HasReason() const noexcept { return hasReason_; }
  /// The text stays; the next one may replace it.
  void DropReason() noexcept { hasReason_ = false; }
  void ShowLogFailure();
  /// What the user must know of the controller that is shown; empty for nothing.
  void ShowNotice(const QString& notice);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void BuildNotice();
  /// The notice has half of the bar at most.
  void FitNotice();

  ElidedLabel* text_;
  QLabel* logFailure_;
  QWidget* notice_;
  QLabel* noticeIcon_;
  ElidedLabel* noticeText_;
  bool hasReason_ = false;
};

}  // namespace trevane
