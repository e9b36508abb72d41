#include "engine/items/DateText.h"

#include <QDateTime>
#include <QLocale>

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(DateTextTest, AnAbsentDateIsAnEmptyText) {
  EXPECT_EQ(DateText(Date{}), QString());
}

TEST(DateTextTest, HasTheShortDateAndTheSecondsInLocalTime) {
  const QDateTime moment(QDate(2024, 3, 5), QTime(13, 7, 59));
  const QString text = DateText(Date{moment.toMSecsSinceEpoch()});
  EXPECT_TRUE(text.startsWith(QLocale::system().toString(moment.date(), QLocale::ShortFormat)))
      << text.toStdString();
  EXPECT_TRUE(text.contains(QStringLiteral("07:59"))) << text.toStdString();
  EXPECT_EQ(text, text.trimmed());
}

TEST(DateTextTest, FormatsDatesBeforeTheEpoch) {
  EXPECT_NE(DateText(Date{-1000}), DateText(Date{0}));
  EXPECT_FALSE(DateText(Date{-1000}).isEmpty());
}

}  // namespace
}  // namespace trevane
