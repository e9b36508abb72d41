#include "dialogs/MessageLabel.h"

#include "base/ShownText.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace trevane {

namespace {

QSizeF LayOut(QTextLayout& layout, const QLabel& label, qreal width) {
  QTextOption option(label.alignment());
  option.setTextDirection(label.layoutDirection());
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.setFont(label.font());
  layout.setText(WithReadableNames(label.text()).replace(u'\n', QChar::LineSeparator).remove(u'\r'));

  QSizeF size;
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
    line.setPosition({0, size.height()});
    size = {std::max(size.width(), line.naturalTextWidth()), size.height() + line.height()};
  }
  layout.endLayout();
  return size;
}

}  // namespace

MessageLabel::MessageLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
  setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

QSize MessageLabel::SizeFor(int width) const {
  QTextLayout layout;
  const QSizeF size = LayOut(layout, *this, width);
  return {int(std::ceil(size.width())), int(std::ceil(size.height()))};
}

void MessageLabel::paintEvent(QPaintEvent*) {
  QTextLayout layout;
  LayOut(layout, *this, width());
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  layout.draw(&painter, {});
}

}  // namespace trevane
