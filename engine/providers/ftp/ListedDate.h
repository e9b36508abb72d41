#pragma once

#include "base/Variant.h"
#include "engine/providers/ftp/ListParser.h"
#include "engine/providers/ftp/ListWords.h"

#include <QByteArrayView>

#include <optional>

namespace trevane::ftp {

/// Which number of "01-02-24" or "01/02/24" is which; the day is always the first of "01.02.24".
enum class NumberOrder { MonthFirst, DayFirst, YearFirst };

/// A date in the words of a listing, in the local time of the server.
struct ListedDate {
  /// Nothing where the listing tells none: the newest that fits.
  std::optional<int> year = {};
  /// 0 for a month in a language that is not known here: the date is absent then.
  int month = 0;
  int day = 0;
  int msecsOfDay = 0;
  DateStep step = DateStep::Day;
  /// What the date itself tells its time to be ahead of UTC, in minutes.
  std::optional<int> zone = {};
  /// How many words it takes.
  int words = 0;
};

/// Which months a date may have: those that are known here, or any word where one belongs.
enum class Months { Known, Any };

/// The date that begins with this word, with year or time or both; nothing where there is none.
[[nodiscard]] std::optional<ListedDate> ReadDate(const ListWords& words, int at, NumberOrder order,
                                                 Months months);
/// The order that "01-31-24" shows: nothing where both of its first numbers may be a month, or the word is no
/// such date.
[[nodiscard]] std::optional<NumberOrder> OrderShownBy(QByteArrayView word);
/// "20240131", "202401311200", "20240131120000" or with a fraction of a second, always UTC.
[[nodiscard]] Date ReadCompactTime(QByteArrayView text, DateStep& step);

/// Sets the item's date and its step. The date is absent where there is no such day.
void SetDate(ListedItem& item, const ListedDate& date, const ServerClock& clock);

}  // namespace trevane::ftp
