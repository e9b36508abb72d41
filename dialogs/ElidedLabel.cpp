#include "dialogs/ElidedLabel.h"

#include "base/ShownText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace trevane {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  // Without this every new text would be searched for markup, and a file name could contain some.
  setTextFormat(Qt::PlainText);
}

void ElidedLabel::SetElideMode(Qt::TextElideMode mode) {
  elide_ = mode;
  update();
}

QSize ElidedLabel::sizeHint() const {
  return {fontMetrics().averageCharWidth() * 20, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
  return {0, fontMetrics().height()};
}

QString ElidedLabel::Line() const {
  return WithReadableNames(text()).replace(u'\n', u' ');
}

bool ElidedLabel::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const QString line = Line();
    if (fontMetrics().horizontalAdvance(line) > contentsRect().width()) {
      QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), PlainToolTip(line), this);
    } else {
      QToolTip::hideText();
    }
    return true;
  }
  return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QString line = Line();
  const Qt::Alignment place = QStyle::visualAlignment(layoutDirection(), alignment());
  style()->drawItemText(&painter, contentsRect(), int(place | Qt::TextSingleLine), palette(), isEnabled(),
                        fontMetrics().elidedText(line, elide_, contentsRect().width()), foregroundRole());
}

}  // namespace trevane
