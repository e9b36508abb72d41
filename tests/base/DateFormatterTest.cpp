#include "base/DateFormatter.h"
#include "tests/support/Wine.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <random>

namespace trevane {
namespace {

/// The locale's own text of the date, without the word for the zone.
QString Wanted(const QLocale& locale, const QString& timePattern, const QTimeZone& zone, qint64 msecs) {
  const QDateTime time = QDateTime::fromMSecsSinceEpoch(msecs, zone);
  return locale.toString(time.date(), QLocale::ShortFormat) + u' ' +
         locale.toString(time.time(), timePattern);
}

struct LocaleRow {
  const char* name;
  const char* locale;
  QString timePattern;
};

class DateFormatterRows : public testing::TestWithParam<LocaleRow> {};

TEST_P(DateFormatterRows, AgreesWithTheLocaleInEveryZoneAndAge) {
  const QLocale locale = QLatin1StringView(GetParam().locale) == QLatin1StringView("C")
                             ? QLocale::c()
                             : QLocale(QString::fromLatin1(GetParam().locale));
  std::mt19937_64 random(5);
  for (const char* id :
       {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kathmandu", "Australia/Lord_Howe"}) {
    const QTimeZone zone{QByteArray(id)};
    if (!zone.isValid() && test::RunsUnderWine()) {
      continue;  // Wine knows only some of the zones
    }
    ASSERT_TRUE(zone.isValid()) << id;
    const DateFormatter formatter(locale, zone);
    for (int i = 0; i < 400; ++i) {
      // From 1801 to 2287, with parts of a second.
      const auto msecs = static_cast<qint64>(random() % 15'337'000'000'000ULL) - 5'337'000'000'000;
      const qint64 whole = msecs - ((msecs % 1000) + 1000) % 1000;
      ASSERT_EQ(formatter.Format(Date{msecs}), Wanted(locale, GetParam().timePattern, zone, whole))
          << id << " " << msecs;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Locales, DateFormatterRows,
    testing::Values(LocaleRow{"Plain", "C",
                              QLocale::c().timeFormat(QLocale::LongFormat).remove(QStringLiteral(" t"))},
                    LocaleRow{"AmericanEnglish", "en_US", QStringLiteral("h:mm:ss AP")},
                    LocaleRow{"German", "de_DE", QStringLiteral("HH:mm:ss")},
                    LocaleRow{"Japanese", "ja_JP", QStringLiteral("H時mm分ss秒")},
                    LocaleRow{"ArabicDigits", "ar_EG", QStringLiteral("h:mm:ss AP")}),
    [](const testing::TestParamInfo<LocaleRow>& info) { return info.param.name; });

TEST(DateFormatter, AnAbsentDateIsNoText) {
  EXPECT_EQ(DateFormatter(QLocale::c()).Format(Date{}), QString());
}

TEST(DateFormatter, IsRightOnBothSidesOfEveryChangeOfTheClocks) {
  const QLocale locale(QStringLiteral("de_DE"));
  for (const char* id : {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Africa/Monrovia"}) {
    const QTimeZone zone{QByteArray(id)};
    const DateFormatter formatter(locale, zone);
    const QDateTime from = QDateTime(QDate(1850, 1, 1), QTime(0, 0), Qt::UTC);
    const QDateTime to = QDateTime(QDate(2037, 1, 1), QTime(0, 0), Qt::UTC);
    const QTimeZone::OffsetDataList changes = zone.transitions(from, to);
    if (changes.isEmpty() && test::RunsUnderWine()) {
      continue;  // Wine knows only some of the zones, and no changes of long ago
    }
    ASSERT_FALSE(changes.isEmpty()) << id;
    for (const QTimeZone::OffsetData& change : changes) {
      for (const qint64 seconds : {-90000, -1, 0, 1, 899, 900, 90000}) {
        const qint64 msecs = change.atUtc.toMSecsSinceEpoch() + seconds * 1000;
        ASSERT_EQ(formatter.Format(Date{msecs}), Wanted(locale, QStringLiteral("HH:mm:ss"), zone, msecs))
            << id << msecs;
      }
    }
  }
}

TEST(DateFormatter, TheLocalZoneIsThatOfTheSystem) {
  const QLocale locale(QStringLiteral("de_DE"));
  const DateFormatter formatter(locale);
  for (const qint64 msecs : {0LL, 1'700'000'000'000LL, -1'000'000'000'000LL}) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(msecs);
    EXPECT_EQ(formatter.Format(Date{msecs}), locale.toString(time.date(), QLocale::ShortFormat) + u' ' +
                                                 time.time().toString(QStringLiteral("HH:mm:ss")));
  }
}

TEST(DateFormatter, YearsBeyondFourDigitsAndBeforeTheFirstAreNoTrouble) {
  const QLocale locale(QStringLiteral("sv_SE"));
  const DateFormatter formatter(locale, QTimeZone::utc());
  for (const int year : {-44, 1, 999, 9999, 10000, 123456}) {
    const QDateTime time(QDate(year, 3, 4), QTime(5, 6, 7), Qt::UTC);
    EXPECT_EQ(formatter.Format(Date{time.toMSecsSinceEpoch()}),
              locale.toString(time.date(), QLocale::ShortFormat) + QStringLiteral(" 05:06:07"));
  }
  EXPECT_EQ(formatter.Format(Date{std::numeric_limits<qint64>::max()}), QString());
  EXPECT_EQ(formatter.Format(Date{std::numeric_limits<qint64>::min() + 1}), QString());
}

TEST(DateFormatter, PartsOfASecondAreDroppedBefore1970Too) {
  const DateFormatter formatter(QLocale(QStringLiteral("de_DE")), QTimeZone::utc());
  EXPECT_TRUE(formatter.Format(Date{-1}).endsWith(QStringLiteral("23:59:59")));
  EXPECT_TRUE(formatter.Format(Date{-1000}).endsWith(QStringLiteral("23:59:59")));
  EXPECT_TRUE(formatter.Format(Date{999}).endsWith(QStringLiteral("00:00:00")));
}

TEST(FormatDateTest, OneDateHasTheFormOfTheSystemsLocale) {
  EXPECT_EQ(FormatDate(Date{}), QString());
  const Date date{QDateTime(QDate(2024, 3, 5), QTime(13, 7, 59)).toMSecsSinceEpoch()};
  EXPECT_EQ(FormatDate(date), DateFormatter().Format(date));
  EXPECT_TRUE(FormatDate(date).contains(QStringLiteral("07:59")));
}

}  // namespace
}  // namespace trevane
