#include "app/SystemStyle.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QStyle>

namespace trevane {

using namespace Qt::StringLiterals;

SystemStyle::SystemStyle() : own_(QApplication::style()->name()) {
  Choose();
  qApp->installEventFilter(this);
}

QString SystemStyle::StyleFor(const QString& own, const QPalette& palette) {
  const bool isDark =
      palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
  const bool drawsLightAlone = own.compare(u"windowsvista"_s, Qt::CaseInsensitive) == 0 ||
                               own.compare(u"windowsxp"_s, Qt::CaseInsensitive) == 0;
  return isDark && drawsLightAlone ? u"fusion"_s : own;
}

bool SystemStyle::eventFilter(QObject* watched, QEvent* event) {
  // Behind the event: all that it is sent to is to see the same style.
  if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
    QMetaObject::invokeMethod(
        this, [this] { Choose(); }, Qt::QueuedConnection);
  }
  return QObject::eventFilter(watched, event);
}

void SystemStyle::Choose() {
  const QString wanted = StyleFor(own_, QApplication::palette());
  if (QApplication::style()->name().compare(wanted, Qt::CaseInsensitive) != 0) {
    QApplication::setStyle(wanted);
  }
}

}  // namespace trevane
