#include "engine/items/DateText.h"

#include <QDateTime>
#include <QLocale>

namespace trevane {

namespace {

/// The long time form without the time zone that it has in many locales: in a column of times that are all
/// local it tells nothing.
QString LongTimeFormat(const QLocale& locale) {
  QString format;
  bool quoted = false;
  for (const QChar character : locale.timeFormat(QLocale::LongFormat)) {
    quoted = quoted != (character == u'\'');
    if (quoted || character != u't') {
      format.append(character);
    }
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
