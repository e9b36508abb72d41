#pragma once

#include <QDialog>
#include <QRect>
#include <QStringList>

#include <functional>
#include <vector>

class QPushButton;

namespace trevane {

/// A modal message box with a button for each caption. Set its properties, then call ShowBox; each call
/// builds the window afresh and takes it apart again.
///
/// A button is as wide as its caption's text (with the "&" that marks the access key) and 400 twips more, at
/// least 1000; 100 twips lie between two buttons and 500 between the message and the row; 15 twips are a
/// pixel.
class frmMsgBoxEx final : public QDialog {
  Q_OBJECT

 public:
  /// `messageBeep` plays a sound of platform/SystemSound.h by its number.
  explicit frmMsgBoxEx(std::function<void(qint32)> messageBeep, QWidget* parent = nullptr);
  ~frmMsgBoxEx() override;

  [[nodiscard]] const QString& Prompt() const noexcept { return prompt_; }
  void SetPrompt(const QString& prompt) { prompt_ = prompt; }
  /// Stands below the prompt and can be selected and copied; empty for none. The distance to the buttons is
  /// then that from this text.
  [[nodiscard]] const QString& InformativeText() const noexcept { return informativeText_; }
  void SetInformativeText(const QString& text) { informativeText_ = text; }
  /// The button that Enter presses.
  [[nodiscard]] qint16 Default() const noexcept { return default_; }
  void SetDefault(qint16 index) { default_ = index; }
  /// The button that Esc and the frame's close box press.
  [[nodiscard]] qint16 CANCEL() const noexcept { return cancel_; }
  void SetCANCEL(qint16 index) { cancel_ = index; }
  /// Empty for the application's title.
  [[nodiscard]] const QString& Title() const noexcept { return title_; }
  void SetTitle(const QString& title) { title_ = title; }
  /// "Question", "Exclamation", "Information", "Critical", or empty for neither picture nor sound.
  [[nodiscard]] const QString& MsgIcon() const noexcept { return icon_; }
  void SetMsgIcon(const QString& key) { icon_ = key; }
  [[nodiscard]] const QStringList& Buttons() const noexcept { return captions_; }
  void SetButtons(const QStringList& captions) { captions_ = captions; }

  /// Shows the window modally and returns the position of the button pressed. An index without a button
  /// counts as the nearest one. When the window is destroyed from outside, the answer is CANCEL.
  [[nodiscard]] qint16 ShowBox();

  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Build();
  /// The part of the window that these texts take, whose top left corner is given.
  [[nodiscard]] QRect BuildTexts(int left, bool hasPicture);
  void TakeApart();
  void Clicked(qint16 index);
  [[nodiscard]] qint16 Existing(qint16 index) const;

  std::function<void(qint32)> messageBeep_;
  QString prompt_;
  QString informativeText_;
  QString title_;
  QString icon_;
  QStringList captions_;
  qint16 default_ = 0;
  qint16 cancel_ = 0;
  qint16 result_ = 0;
  std::vector<QPushButton*> cmd_;
};

}  // namespace trevane
