#include "engine/DateText.h"

#include <QDateTime>
#include <QLocale>

namespace trevane {

namespace {

/// The long time form ends, or begins, with the time zone in many locales: not wanted in a column of times
/// that are all local.
QString LongTimeFormat(const QLocale& locale) {
  QString format = locale.timeFormat(QLocale::LongFormat);
  for (const auto* zone : {u"tttt", u"ttt", u"tt", u"t"}) {
    format.remove(QString::fromUtf16(zone));
  }
  return format.remove(QStringLiteral("()")).trimmed();
}

}  // namespace

QString DateText(Date date) {
  if (!date.IsPresent()) {
    return QString();
  }
  const QLocale locale = QLocale::system();
  const QDateTime local = QDateTime::fromMSecsSinceEpoch(date.msecs);
  return locale.toString(local.date(), QLocale::ShortFormat) + u' ' +
         locale.toString(local.time(), LongTimeFormat(locale));
}

}  // namespace trevane
