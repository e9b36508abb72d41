#include "dialogs/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace trevane {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  // Without this every new text would be searched for markup, and a file name could contain some.
  setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::sizeHint() const {
  return {fontMetrics().averageCharWidth() * 20, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
  return {0, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QString line = QString(text()).replace(u'\n', u' ');
  const Qt::Alignment place = QStyle::visualAlignment(layoutDirection(), alignment());
  style()->drawItemText(&painter, contentsRect(), int(place | Qt::TextSingleLine), palette(), isEnabled(),
                        fontMetrics().elidedText(line, Qt::ElideMiddle, contentsRect().width()),
                        foregroundRole());
}

}  // namespace trevane
