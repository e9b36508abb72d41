#pragma once

#include <QPlainTextEdit>
#include <QSizeF>

namespace trevane {

/// Plain text below a message that can be selected and copied by mouse and keyboard. Lines are broken
/// anywhere where no blank is; a text of more lines than fit is scrolled. Without the look of a box to type
/// into.
class SelectableText final : public QPlainTextEdit {
  Q_OBJECT

 public:
  /// More lines than that are scrolled.
  static constexpr int kMostLines = 10;

  explicit SelectableText(QWidget* parent = nullptr);

  /// The size of the text when its lines are at most `width` pixels long, with no more lines than kMostLines.
  [[nodiscard]] QSize SizeFor(int width) const;

  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override { return SizeFor(width).height(); }
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return {0, fontMetrics().lineSpacing()}; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  /// Of all lines, when they are at most `width` pixels long.
  [[nodiscard]] QSizeF WholeSize(int width) const;
  [[nodiscard]] int MostHeight() const { return kMostLines * fontMetrics().lineSpacing(); }
};

}  // namespace trevane
