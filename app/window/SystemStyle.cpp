#include "app/window/SystemStyle.h"

#include "app/settings/KeptLooks.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QStyle>

namespace trevane {

namespace {

const KeptLooks* Around() {
  return qobject_cast<const KeptLooks*>(QApplication::style());
}

/// A style that wraps another one has no name of its own.
QString PresentName() {
  const KeptLooks* around = Around();
  return around ? around->baseStyle()->name() : QApplication::style()->name();
}

}  // namespace

SystemStyle::SystemStyle() : own_(PresentName()) {
  Choose();
  qApp->installEventFilter(this);
}

QString SystemStyle::StyleFor(const QString& own, const QPalette& palette) {
  const bool isDark =
      palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
  const bool drawsLightAlone = own.compare(QStringLiteral("windowsvista"), Qt::CaseInsensitive) == 0 ||
                               own.compare(QStringLiteral("windowsxp"), Qt::CaseInsensitive) == 0;
  return isDark && drawsLightAlone ? QStringLiteral("fusion") : own;
}

bool SystemStyle::eventFilter(QObject* watched, QEvent* event) {
  // After the event, so that all its receivers see the same style.
  if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
    QMetaObject::invokeMethod(
        this, [this] { Choose(); }, Qt::QueuedConnection);
  }
  return QObject::eventFilter(watched, event);
}

void SystemStyle::Choose() {
  const QString wanted = StyleFor(own_, QApplication::palette());
  if (PresentName().compare(wanted, Qt::CaseInsensitive) != 0) {
    const bool keepsLooks = Around() != nullptr;
    QApplication::setStyle(wanted);
    if (keepsLooks) {
      KeptLooks::Install();
    }
  }
}

}  // namespace trevane
