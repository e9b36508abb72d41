#include "dialogs/SelectableText.h"

#include <QFrame>
#include <QKeyEvent>
#include <QPalette>
#include <QScrollBar>
#include <QStyle>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace trevane {

namespace {

constexpr int kFirstColumns = 60;

}  // namespace

SelectableText::SelectableText(QWidget* parent) : QPlainTextEdit(parent) {
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setTabChangesFocus(true);
  setFrameShape(QFrame::NoFrame);
  setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  document()->setDocumentMargin(0);
  setContextMenuPolicy(Qt::DefaultContextMenu);
  setUndoRedoEnabled(false);
  setAcceptDrops(false);
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  // It stands on the window like the text above it.
  viewport()->setAutoFillBackground(false);
  QPalette look = palette();
  look.setColor(QPalette::Text, look.color(QPalette::WindowText));
  setPalette(look);
}

QSizeF SelectableText::WholeSize(int width) const {
  QTextOption option;
  option.setWrapMode(wordWrapMode());
  QSizeF size;
  const QStringList paragraphs = toPlainText().split(u'\n');
  for (const QString& paragraph : paragraphs) {
    QTextLayout layout(paragraph, font());
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
      line.setLineWidth(width);
      size = {std::max(size.width(), line.naturalTextWidth()), size.height() + line.height()};
    }
    layout.endLayout();
  }
  return size;
}

QSize SelectableText::SizeFor(int width) const {
  const QSizeF whole = WholeSize(width);
  // The cursor that selects stands behind the last letter.
  const QSize size(int(std::ceil(whole.width())) + cursorWidth() + 1, int(std::ceil(whole.height())) + 1);
  const bool isScrolled = size.height() > MostHeight() + 1;
  const int bar = isScrolled ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
  return {std::min(width, size.width() + bar), isScrolled ? MostHeight() : size.height()};
}

void SelectableText::resizeEvent(QResizeEvent* event) {
  // The box itself would first break the lines beside a bar that it then finds needless.
  const bool isScrolled = WholeSize(width()).height() > height();
  setVerticalScrollBarPolicy(isScrolled ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  QPlainTextEdit::resizeEvent(event);
}

QSize SelectableText::sizeHint() const {
  return SizeFor(fontMetrics().averageCharWidth() * kFirstColumns);
}

void SelectableText::keyPressEvent(QKeyEvent* event) {
  // Those belong to the window's buttons.
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Escape) {
    event->ignore();
    return;
  }
  QPlainTextEdit::keyPressEvent(event);
}

}  // namespace trevane
