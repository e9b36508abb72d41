#include "engine/providers/ftp/ListParser.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <gtest/gtest.h>

#include <optional>

namespace trevane::ftp::test {
namespace {

qint64 Utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC).toMSecsSinceEpoch();
}

std::optional<int> Zone(DateStep step, qint64 listed, qint64 exact) {
  ListedItem item;
  item.modified = {listed};
  item.step = step;
  return ZoneOf(item, exact);
}

/// The date of the only item, in the local time of a server without a zone of its own.
qint64 Modified(QByteArrayView date, qint64 now, int zone = 0) {
  const QByteArray line = "-rw-r--r-- 1 a b 12 " + date.toByteArray() + " x\r\n";
  const ParsedListing listing = ParseList(line, {.now = now, .zone = zone});
  EXPECT_EQ(listing.items.size(), 1U) << line.toStdString();
  return listing.items.empty() ? 0 : listing.items.front().modified.msecs;
}

TEST(ServerTimeTest, TheAnswerOfMdtmIsUtc) {
  EXPECT_EQ(ParseTimeValue("213 20240131120005"), Utc(2024, 1, 31, 12, 0, 5));
  EXPECT_EQ(ParseTimeValue("20240131120005"), Utc(2024, 1, 31, 12, 0, 5));
  EXPECT_EQ(ParseTimeValue("213 20240131120005.25\r\n"), Utc(2024, 1, 31, 12, 0, 5) + 250);
  EXPECT_EQ(ParseTimeValue("213 20240131120005.1239"), Utc(2024, 1, 31, 12, 0, 5) + 123);
  EXPECT_EQ(ParseTimeValue("213 19700101000000"), 0);
  EXPECT_EQ(ParseTimeValue("213 20240229235959"), Utc(2024, 2, 29, 23, 59, 59));
}

TEST(ServerTimeTest, AYearCountedFrom1900IsUnderstood) {
  EXPECT_EQ(ParseTimeValue("213 191240131120005"), Utc(2024, 1, 31, 12, 0, 5));
}

TEST(ServerTimeTest, AnythingElseIsNoTime) {
  for (const char* text :
       {"", "213", "213 ", "213 2024", "213 20240131", "213 202401311200", "213 2024013112000", "550 no file",
        "213 20241331120000", "213 20230229120000", "213 20240131240000", "213 20240131126000",
        "213 20240131120000.", "213 20240131120000.x", "213 -0240131120000", "213 20240131120000 x",
        "213 00000000000000", "214 20240131120000"}) {
    EXPECT_EQ(ParseTimeValue(text), std::nullopt) << text;
  }
}

TEST(ServerTimeTest, AZoneIsLearntFromMinutes) {
  const qint64 exact = Utc(2024, 1, 31, 12, 0, 42);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 12, 0), exact), 0);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 13, 0), exact), 60);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 17, 45), exact), 345);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 8, 30), exact), -210);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 0, 0), exact), -720);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 2, 1, 2, 0), exact), 840);
  // Rounded up.
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 13, 1), exact), 60);
}

TEST(ServerTimeTest, AZoneIsLearntFromSeconds) {
  const qint64 exact = Utc(2024, 1, 31, 12, 0, 42);
  EXPECT_EQ(Zone(DateStep::Second, Utc(2024, 1, 31, 21, 0, 42), exact), 540);
  EXPECT_EQ(Zone(DateStep::Second, Utc(2024, 1, 31, 21, 0, 44), exact), 540);
  EXPECT_EQ(Zone(DateStep::Second, Utc(2024, 1, 31, 21, 0, 0), exact), std::nullopt);
}

TEST(ServerTimeTest, NoZoneIsLearntWhereNoneFits) {
  const qint64 exact = Utc(2024, 1, 31, 12, 0, 42);
  EXPECT_EQ(Zone(DateStep::Day, Utc(2024, 1, 31), exact), std::nullopt);
  EXPECT_EQ(Zone(DateStep::None, Utc(2024, 1, 31, 12), exact), std::nullopt);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 31, 12, 7), exact), std::nullopt);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 1, 30, 23, 45), exact), std::nullopt);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2024, 2, 1, 2, 15), exact), std::nullopt);
  EXPECT_EQ(Zone(DateStep::Minute, Utc(2023, 1, 31, 12, 0), exact), std::nullopt);
  EXPECT_EQ(ZoneOf(ListedItem{}, exact), std::nullopt);
}

TEST(ServerTimeTest, ALearntZoneGivesTheTimeOfMdtm) {
  const qint64 now = Utc(2024, 6, 15, 12);
  EXPECT_EQ(Modified("Jan 31 13:00", now, 60), Utc(2024, 1, 31, 12));
  EXPECT_EQ(Modified("Jan 31 02:30", now, -570), Utc(2024, 1, 31, 12));
}

TEST(ServerTimeTest, AMissingYearIsTheNewestThatFits) {
  const qint64 now = Utc(2024, 6, 15, 12);
  EXPECT_EQ(Modified("Jun 15 11:59", now), Utc(2024, 6, 15, 11, 59));
  EXPECT_EQ(Modified("Jun 16 12:00", now), Utc(2024, 6, 16, 12));
  EXPECT_EQ(Modified("Jun 16 12:01", now), Utc(2023, 6, 16, 12, 1));
  EXPECT_EQ(Modified("Dec 31 23:59", now), Utc(2023, 12, 31, 23, 59));
  // On the last day of a year the server may be in the next one already.
  EXPECT_EQ(Modified("Jan 1 03:00", Utc(2023, 12, 31, 20)), Utc(2024, 1, 1, 3));
}

TEST(ServerTimeTest, ALeapDayFallsIntoALeapYear) {
  EXPECT_EQ(Modified("Feb 29 12:00", Utc(2026, 6, 15)), Utc(2024, 2, 29, 12));
  EXPECT_EQ(Modified("Feb 29 12:00", Utc(1903, 6, 15)), Utc(1896, 2, 29, 12));
}

TEST(ServerTimeTest, WithoutAZoneThisComputersOwnIsTaken) {
  const ParsedListing listing =
      ParseList("-rw-r--r-- 1 a b 12 2024-01-31 12:00 x\r\n", {.now = Utc(2024, 6, 15)});
  ASSERT_EQ(listing.items.size(), 1U);
  EXPECT_EQ(listing.items.front().modified.msecs,
            QDateTime(QDate(2024, 1, 31), QTime(12, 0), Qt::LocalTime).toMSecsSinceEpoch());
}

}  // namespace
}  // namespace trevane::ftp::test
