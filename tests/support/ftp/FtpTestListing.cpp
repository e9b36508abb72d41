#include "tests/support/ftp/FtpTestListing.h"

#include <QDateTime>
#include <QLocale>

namespace trevane::test::ftplisting {
namespace {

constexpr qint64 kMinute = 60'000;
constexpr qint64 kDay = 24 * 60 * kMinute;

QByteArray Formatted(const QDateTime& time, const QString& format) {
  return QLocale::c().toString(time, format).toLatin1();
}

QByteArray ModeOf(const FtpTestItem& item) {
  QByteArray text = item.IsFolder() ? "d" : item.kind == FtpTestItem::Kind::Link ? "l" : "-";
  for (int bit = 8; bit >= 0; --bit) {
    text += (item.mode & (1U << bit)) != 0 ? "xwr"[bit % 3] : '-';
  }
  return text;
}

/// As "ls" does: the clock for the last half year, the year for what is older.
QByteArray UnixDate(const QDateTime& time, const FtpVices& vices) {
  const qint64 now = QDateTime::currentMSecsSinceEpoch() + vices.zoneMinutes * kMinute;
  const qint64 age = now - time.toMSecsSinceEpoch();
  const bool hasClock = vices.dates == FtpVices::Dates::Minutes && age >= 0 && age < 180 * kDay;
  return Formatted(time, QStringLiteral("MMM ")) +
         QByteArray::number(time.date().day()).rightJustified(2, ' ') +
         Formatted(time, hasClock ? QStringLiteral(" HH:mm") : QStringLiteral("  yyyy"));
}

}  // namespace

qint64 SizeOf(const FtpTestItem& item) {
  return item.shownSize.value_or(item.content.size());
}

QByteArray TimeValue(qint64 modified) {
  return Formatted(QDateTime::fromMSecsSinceEpoch(modified, Qt::UTC), QStringLiteral("yyyyMMddHHmmss"));
}

QByteArray LineOf(const FtpTestItem& item, const FtpVices& vices) {
  const QDateTime time = QDateTime::fromMSecsSinceEpoch(item.modified + vices.zoneMinutes * kMinute, Qt::UTC);
  const qint64 size = SizeOf(item);
  const QByteArray shownSize = size < 0 ? QByteArray() : QByteArray::number(size);
  if (vices.list == FtpVices::List::Dos) {
    return Formatted(time, QStringLiteral("MM-dd-yy  ")) +
           (vices.dates == FtpVices::Dates::Minutes
                ? QLocale::c().toString(time, QStringLiteral("hh:mmAP")).toLatin1()
                : QByteArray("12:00AM")) +
           (item.IsFolder() ? QByteArray("       <DIR>          ")
                            : ' ' + shownSize.rightJustified(20, ' ') + ' ') +
           item.name + "\r\n";
  }
  QByteArray line = ModeOf(item) + (item.IsFolder() ? "   2 " : "   1 ") + "robot    ";
  if (vices.list == FtpVices::List::NineColumns) {
    line += "cell     ";
  }
  line += shownSize.rightJustified(9, ' ') + ' ' + UnixDate(time, vices) + ' ' + item.name;
  if (item.kind == FtpTestItem::Kind::Link) {
    line += " -> " + item.target;
  }
  return line + "\r\n";
}

QByteArray FactsOf(const FtpTestItem& item, const FtpVices& vices) {
  QByteArray facts = "type=";
  facts += item.IsFolder() ? "dir" : item.kind == FtpTestItem::Kind::Link ? "OS.unix=slink" : "file";
  if (const qint64 size = SizeOf(item); !item.IsFolder() && size >= 0) {
    facts += ";size=" + QByteArray::number(size);
  }
  facts += ";modify=" + TimeValue(item.modified);
  if (item.IsFolder()) {
    facts += item.isReadOnly ? ";perm=el" : ";perm=cdeflmp";
  } else {
    facts += item.isReadOnly ? ";perm=r" : ";perm=adfrw";
  }
  facts += ";UNIX.mode=0" + QByteArray::number(item.mode, 8);
  if (vices.tellsUnique) {
    facts += ";unique=1U" + QByteArray::number(item.id, 16);
  }
  return facts + "; " + item.name;
}

}  // namespace trevane::test::ftplisting
