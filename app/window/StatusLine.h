#pragma once

#include <QStatusBar>

class QLabel;

namespace trevane {

class ElidedLabel;

/// The status bar: one text, and a notice that the operation log cannot be written.
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

 private:
  ElidedLabel* text_;
  QLabel* logFailure_;
  bool hasReason_ = false;
};

}  // namespace trevane
