#include "engine/providers/ftp/ListedDate.h"

#include "engine/providers/ftp/MonthNames.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <algorithm>
#include <array>
#include <string_view>

namespace trevane::ftp {
namespace {

constexpr int kMsecsOfSecond = 1000;
constexpr int kMsecsOfMinute = 60 * kMsecsOfSecond;
constexpr qint64 kMsecsOfDay = qint64{24} * 60 * kMsecsOfMinute;
constexpr int kFirstYear = 1900;
constexpr int kLastYear = 2999;

/// Takes what a date is made of from the front of a text.
class Scanner {
 public:
  explicit Scanner(QByteArrayView text) noexcept : rest_(text) {}

  [[nodiscard]] bool IsAtEnd() const noexcept { return rest_.isEmpty(); }
  [[nodiscard]] QByteArrayView Rest() const noexcept { return rest_; }
  bool Take(char c) noexcept {
    if (rest_.isEmpty() || rest_.front() != c) {
      return false;
    }
    rest_ = rest_.sliced(1);
    return true;
  }
  bool Take(std::string_view text) noexcept {
    if (!rest_.startsWith(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())))) {
      return false;
    }
    rest_ = rest_.sliced(static_cast<qsizetype>(text.size()));
    return true;
  }
  /// One of these characters; 0 for none.
  char TakeOneOf(std::string_view chars) noexcept {
    if (rest_.isEmpty() || chars.find(rest_.front()) == std::string_view::npos) {
      return 0;
    }
    const char taken = rest_.front();
    rest_ = rest_.sliced(1);
    return taken;
  }
  /// So many digits, and no digit behind them.
  std::optional<int> TakeNumber(int fewest, int most) noexcept {
    int digits = 0;
    int number = 0;
    while (digits < rest_.size() && IsDigit(rest_[digits])) {
      if (digits == most) {
        return std::nullopt;
      }
      number = number * 10 + (rest_[digits] - '0');
      ++digits;
    }
    if (digits < fewest) {
      return std::nullopt;
    }
    digits_ = digits;
    rest_ = rest_.sliced(digits);
    return number;
  }
  [[nodiscard]] int DigitsOfNumber() const noexcept { return digits_; }
  QByteArrayView TakeLetters() noexcept {
    qsizetype size = 0;
    while (size < rest_.size() && (IsLetter(rest_[size]) || !IsAscii(rest_[size]))) {
      ++size;
    }
    const QByteArrayView letters = rest_.first(size);
    rest_ = rest_.sliced(size);
    return letters;
  }

 private:
  QByteArrayView rest_;
  int digits_ = 0;
};

struct ListedTime {
  int msecs = 0;
  DateStep step = DateStep::Minute;
  int words = 1;
};

int TakeFraction(Scanner& scanner) {
  int msecs = 0;
  int unit = kMsecsOfSecond / 10;
  while (const char digit = scanner.TakeOneOf("0123456789")) {
    msecs += unit * (digit - '0');
    unit /= 10;
  }
  return msecs;
}

bool TakeHalfOfDay(Scanner& scanner, int& hour) {
  constexpr int kHalf = 12;
  const char half = Lower(scanner.TakeOneOf("AaPp"));
  if (half == 0) {
    return true;
  }
  scanner.TakeOneOf("Mm");
  if (hour < 1 || hour > kHalf) {
    return false;
  }
  hour = hour % kHalf + (half == 'p' ? kHalf : 0);
  return true;
}

bool IsHalfOfDay(QByteArrayView word) {
  return IsSame(word, "AM") || IsSame(word, "PM");
}

/// "12:00", "12:00:30", "12:00:30.250", "12:00PM", "12:00 PM".
std::optional<ListedTime> ReadTime(const ListWords& words, int at) {
  Scanner scanner(words.At(at));
  ListedTime time;
  const std::optional<int> listedHour = scanner.TakeNumber(1, 2);
  if (!listedHour) {
    return std::nullopt;
  }
  const bool hasColon = scanner.Take(':');
  if (!hasColon && !scanner.Take('.')) {
    return std::nullopt;
  }
  const std::optional<int> minute = scanner.TakeNumber(2, 2);
  if (!minute) {
    return std::nullopt;
  }
  int second = 0;
  if (hasColon && scanner.Take(':')) {
    second = scanner.TakeNumber(2, 2).value_or(-1);
    time.step = DateStep::Second;
    if (scanner.TakeOneOf(".,") != 0) {
      time.msecs = TakeFraction(scanner);
      time.step = DateStep::Millisecond;
    }
  }
  int hour = *listedHour;
  if (scanner.IsAtEnd() && IsHalfOfDay(words.At(at + 1))) {
    scanner = Scanner(words.At(at + 1));
    ++time.words;
  }
  if (!TakeHalfOfDay(scanner, hour) || !scanner.IsAtEnd()) {
    return std::nullopt;
  }
  if (hour > 23 || *minute > 59 || second < 0 || second > 60) {
    return std::nullopt;
  }
  time.msecs += (hour * 60 + *minute) * kMsecsOfMinute + std::min(second, 59) * kMsecsOfSecond;
  return time;
}

void SetTime(ListedDate& date, const ListedTime& time) {
  date.msecsOfDay = time.msecs;
  date.step = time.step;
  date.words += time.words;
}

/// "+0100", "-05:30".
std::optional<int> ReadZone(QByteArrayView word) {
  Scanner scanner(word);
  const char sign = scanner.TakeOneOf("+-");
  if (sign == 0 || word.size() < 5) {
    return std::nullopt;
  }
  const std::optional<qint64> hours = NumberIn(scanner.Rest().first(2));
  scanner = Scanner(scanner.Rest().sliced(2));
  scanner.Take(':');
  const std::optional<int> minutes = scanner.TakeNumber(2, 2);
  if (!hours || *hours > 14 || !minutes || *minutes > 59 || !scanner.IsAtEnd()) {
    return std::nullopt;
  }
  const int zone = static_cast<int>(*hours) * 60 + *minutes;
  return sign == '-' ? -zone : zone;
}

std::optional<int> ReadYear(QByteArrayView word) {
  if (word.size() != 4) {
    return std::nullopt;
  }
  const std::optional<qint64> year = NumberIn(word);
  if (!year || *year < kFirstYear || *year > kLastYear) {
    return std::nullopt;
  }
  return static_cast<int>(*year);
}

int FullYear(int year, int digits) {
  if (digits > 2) {
    return year;
  }
  constexpr int kFirstOfLastCentury = 70;
  return year < kFirstOfLastCentury ? 2000 + year : kFirstYear + year;
}

std::optional<int> ReadDay(QByteArrayView word) {
  Scanner scanner(word);
  const std::optional<int> day = scanner.TakeNumber(1, 2);
  scanner.TakeOneOf(".,");
  if (!day || *day < 1 || *day > 31 || !scanner.IsAtEnd()) {
    return std::nullopt;
  }
  return day;
}

/// What may stand where a month does: letters, or bytes of a language.
bool IsWord(QByteArrayView word) {
  return word.size() >= 2 &&
         std::all_of(word.begin(), word.end(), [](char c) { return IsLetter(c) || !IsAscii(c) || c == '.'; });
}

/// A time with or without a year behind it, or a year. Where the day stands before the month a time may
/// follow the year; elsewhere it is the beginning of a name.
bool TakeTimeOrYear(const ListWords& words, int at, bool isDayFirst, ListedDate& date) {
  if (const std::optional<ListedTime> time = ReadTime(words, at)) {
    SetTime(date, *time);
    // "12:00:30 2024": a time with seconds and no year would tell less than one without.
    if (const std::optional<int> year = ReadYear(words.At(at + time->words));
        year && time->step != DateStep::Minute) {
      date.year = year;
      ++date.words;
    }
    return true;
  }
  date.year = ReadYear(words.At(at));
  if (!date.year) {
    return false;
  }
  ++date.words;
  // "31 JAN 2024 12:00:30".
  if (const std::optional<ListedTime> time = ReadTime(words, at + 1);
      time && isDayFirst && words.At(at + 1).contains(':') && at + 1 + time->words < words.Count()) {
    SetTime(date, *time);
  }
  return true;
}

/// "Jan 31 12:00", "31 Jan 2024".
std::optional<ListedDate> ReadNamedDate(const ListWords& words, int at, Months months) {
  ListedDate date;
  date.words = 2;
  for (const int monthAt : {at, at + 1}) {
    const QByteArrayView word = words.At(monthAt);
    date.month = MonthOf(word);
    const bool isMonth = date.month != 0 || (months == Months::Any && IsWord(word));
    const std::optional<int> day = ReadDay(words.At(at + at + 1 - monthAt));
    if (isMonth && day) {
      date.day = *day;
      if (TakeTimeOrYear(words, at + 2, monthAt != at, date)) {
        return date;
      }
    }
  }
  return std::nullopt;
}

/// "31-Jan-2024 12:00", "JAN-31-2024  12:00:30".
std::optional<ListedDate> ReadHyphenedDate(const ListWords& words, int at) {
  Scanner scanner(words.At(at));
  ListedDate date;
  std::optional<int> day = scanner.TakeNumber(1, 2);
  if (day && !scanner.Take('-')) {
    return std::nullopt;
  }
  date.month = MonthOf(scanner.TakeLetters());
  if (date.month == 0 || !scanner.Take('-')) {
    return std::nullopt;
  }
  if (!day) {
    day = scanner.TakeNumber(1, 2);
    if (!scanner.Take('-')) {
      return std::nullopt;
    }
  }
  const std::optional<int> year = scanner.TakeNumber(2, 4);
  if (!day || !year || scanner.DigitsOfNumber() == 3 || !scanner.IsAtEnd()) {
    return std::nullopt;
  }
  date.day = *day;
  date.year = FullYear(*year, scanner.DigitsOfNumber());
  date.words = 1;
  if (const std::optional<ListedTime> time = ReadTime(words, at + 1)) {
    SetTime(date, *time);
  }
  return date;
}

struct NumberedDate {
  std::array<int, 3> numbers{};
  std::array<int, 3> digits{};
  char separator = 0;
  /// Behind the numbers.
  QByteArrayView rest = {};
};

/// "01-31-24", "2024/01/31", "31.01.2024".
std::optional<NumberedDate> ReadNumbers(QByteArrayView word) {
  Scanner scanner(word);
  NumberedDate date;
  for (size_t i = 0; i < date.numbers.size(); ++i) {
    const std::optional<int> number = scanner.TakeNumber(1, 4);
    if (!number) {
      return std::nullopt;
    }
    date.numbers[i] = *number;
    date.digits[i] = scanner.DigitsOfNumber();
    if (i == 0) {
      date.separator = scanner.TakeOneOf("-/.");
    }
    if (i == 1 && date.separator != 0) {
      scanner.Take(date.separator);
    }
  }
  const bool isSound =
      date.separator != 0 && date.digits[1] <= 2 &&
      (date.digits[0] == 4 ? date.digits[2] <= 2 : date.digits[0] <= 2 && date.digits[2] % 2 == 0);
  if (!isSound ||
      word.size() - scanner.Rest().size() != date.digits[0] + date.digits[1] + date.digits[2] + 2) {
    return std::nullopt;
  }
  date.rest = scanner.Rest();
  return date;
}

NumberOrder OrderOf(const NumberedDate& date, NumberOrder order) {
  if (date.digits[0] == 4) {
    return NumberOrder::YearFirst;
  }
  if (date.separator == '.') {
    return NumberOrder::DayFirst;
  }
  constexpr int kMonths = 12;
  if (order == NumberOrder::MonthFirst && date.numbers[0] > kMonths) {
    return NumberOrder::DayFirst;
  }
  if (order == NumberOrder::DayFirst && date.numbers[1] > kMonths) {
    return NumberOrder::MonthFirst;
  }
  return order;
}

/// "2024-01-31 12:00:00.000 +0100", "01-31-24  12:00PM", "31.01.2024", "2024-01-31T12:00".
std::optional<ListedDate> ReadNumberedDate(const ListWords& words, int at, NumberOrder listed) {
  const std::optional<NumberedDate> numbers = ReadNumbers(words.At(at));
  if (!numbers) {
    return std::nullopt;
  }
  ListedDate date;
  date.words = 1;
  const NumberOrder order = OrderOf(*numbers, listed);
  const size_t yearAt = order == NumberOrder::YearFirst ? 0 : 2;
  const size_t monthAt = order == NumberOrder::MonthFirst ? 0 : 1;
  date.year = FullYear(numbers->numbers[yearAt], numbers->digits[yearAt]);
  date.month = numbers->numbers[monthAt];
  date.day = numbers->numbers[3 - yearAt - monthAt];
  if (date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31) {
    return std::nullopt;
  }
  if (!numbers->rest.isEmpty()) {
    const ListWords inner(numbers->rest.sliced(1));
    const std::optional<ListedTime> time = ReadTime(inner, 0);
    if (numbers->rest.front() != 'T' || !time || inner.Count() != 1) {
      return std::nullopt;
    }
    SetTime(date, *time);
    date.words = 1;
    return date;
  }
  if (const std::optional<ListedTime> time = ReadTime(words, at + 1)) {
    SetTime(date, *time);
    if (const std::optional<int> zone = ReadZone(words.At(at + date.words));
        zone && time->step != DateStep::Minute) {
      date.zone = zone;
      ++date.words;
    }
  }
  return date;
}

/// "01-31 12:00", "31.01. 12:00".
std::optional<ListedDate> ReadShortDate(const ListWords& words, int at) {
  Scanner scanner(words.At(at));
  const std::optional<int> first = scanner.TakeNumber(2, 2);
  const char separator = scanner.TakeOneOf("-.");
  const std::optional<int> second = scanner.TakeNumber(2, 2);
  if (separator == '.') {
    scanner.Take('.');
  }
  if (!first || separator == 0 || !second || !scanner.IsAtEnd()) {
    return std::nullopt;
  }
  const std::optional<ListedTime> time = ReadTime(words, at + 1);
  ListedDate date;
  date.words = 1;
  date.month = separator == '.' ? *second : *first;
  date.day = separator == '.' ? *first : *second;
  if (!time || date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31) {
    return std::nullopt;
  }
  SetTime(date, *time);
  return date;
}

enum class Mark { None, Year, Month, Day };

/// The character that Chinese, Japanese and Korean put behind a number, in their usual encodings.
Mark TakeMark(Scanner& scanner) {
  struct Row {
    Mark mark;
    std::string_view bytes;
  };
  // UTF-8, Shift-JIS, EUC-JP, GBK, Big5; UTF-8 and EUC-KR.
  static constexpr std::array<Row, 21> kRows{{
      {Mark::Year, "\xE5\xB9\xB4"},  {Mark::Year, "\x94N"},         {Mark::Year, "\xC7\xAF"},
      {Mark::Year, "\xC4\xEA"},      {Mark::Year, "\xA6~"},         {Mark::Year, "\xEB\x85\x84"},
      {Mark::Year, "\xB3\xE2"},      {Mark::Month, "\xE6\x9C\x88"}, {Mark::Month, "\x8C\x8E"},
      {Mark::Month, "\xB7\xEE"},     {Mark::Month, "\xD4\xC2"},     {Mark::Month, "\xA4\xEB"},
      {Mark::Month, "\xEC\x9B\x94"}, {Mark::Month, "\xBF\xF9"},     {Mark::Day, "\xE6\x97\xA5"},
      {Mark::Day, "\x93\xFA"},       {Mark::Day, "\xC6\xFC"},       {Mark::Day, "\xC8\xD5"},
      {Mark::Day, "\xA4\xE9"},       {Mark::Day, "\xEC\x9D\xBC"},   {Mark::Day, "\xC0\xCF"},
  }};
  for (const Row& row : kRows) {
    if (scanner.Take(row.bytes)) {
      return row.mark;
    }
  }
  return Mark::None;
}

/// "1月 31日 12:00", "1月31日 2024年", "2024年 1月31日 12:00", in the order year, month, day, time.
std::optional<ListedDate> ReadMarkedDate(const ListWords& words, int at) {
  // Dates of all other forms have no byte above ASCII behind their first digits.
  const QByteArrayView first = words.At(at);
  if (first.isEmpty() || !IsDigit(first.front()) || std::all_of(first.begin(), first.end(), IsAscii)) {
    return std::nullopt;
  }
  ListedDate date;
  while (date.day == 0 && at + date.words < words.Count()) {
    Scanner scanner(words.At(at + date.words));
    while (!scanner.IsAtEnd()) {
      const std::optional<int> number = scanner.TakeNumber(1, 4);
      const Mark mark = TakeMark(scanner);
      if (!number) {
        return std::nullopt;
      }
      if (mark == Mark::Year && date.month == 0) {
        date.year = *number;
      } else if (mark == Mark::Month && date.month == 0 && *number >= 1 && *number <= 12) {
        date.month = *number;
      } else if ((mark == Mark::Day || (mark == Mark::None && scanner.IsAtEnd())) && date.month != 0 &&
                 date.day == 0 && *number >= 1 && *number <= 31) {
        date.day = *number;
      } else {
        return std::nullopt;
      }
    }
    ++date.words;
  }
  const int next = at + date.words;
  if (const std::optional<ListedTime> time = ReadTime(words, next)) {
    SetTime(date, *time);
    return date;
  }
  Scanner scanner(words.At(next));
  const std::optional<int> year = scanner.TakeNumber(4, 4);
  const Mark mark = TakeMark(scanner);
  if (!date.year && year && *year >= kFirstYear && scanner.IsAtEnd() &&
      (mark == Mark::Year || mark == Mark::None)) {
    date.year = year;
    ++date.words;
  }
  if (date.day == 0 || !date.year) {
    return std::nullopt;
  }
  return date;
}

qint64 InUtc(const QDate& day, const ListedDate& date, const ServerClock& clock) {
  const std::optional<int> zone = date.zone ? date.zone : clock.zone;
  if (zone) {
    return (day.toJulianDay() - QDate(1970, 1, 1).toJulianDay()) * kMsecsOfDay + date.msecsOfDay -
           qint64{*zone} * kMsecsOfMinute;
  }
  return QDateTime(day, QTime::fromMSecsSinceStartOfDay(date.msecsOfDay)).toMSecsSinceEpoch();
}

/// The newest one that is not more than a day ahead of the server's clock.
Date WithoutYear(const ListedDate& date, const ServerClock& clock) {
  // Leap years are at most eight years from each other.
  constexpr int kYears = 9;
  const int first = QDateTime::fromMSecsSinceEpoch(clock.now, Qt::UTC).date().year() + 1;
  for (int year = first; year > first - kYears; --year) {
    const QDate day(year, date.month, date.day);
    // Another zone is asked for what may fit only: that takes longer than all else.
    if (day.isValid() && InUtc(day, date, {.zone = 0}) <= clock.now + 2 * kMsecsOfDay) {
      const qint64 msecs = InUtc(day, date, clock);
      if (msecs <= clock.now + kMsecsOfDay) {
        return {msecs};
      }
    }
  }
  return {};
}

}  // namespace

std::optional<ListedDate> ReadDate(const ListWords& words, int at, NumberOrder order, Months months) {
  if (const std::optional<ListedDate> date = ReadNamedDate(words, at, months)) {
    return date;
  }
  const QByteArrayView word = words.At(at);
  if (word.isEmpty()) {
    return std::nullopt;
  }
  if (!IsDigit(word.front())) {
    return ReadHyphenedDate(words, at);
  }
  if (const std::optional<ListedDate> date = ReadNumberedDate(words, at, order)) {
    return date;
  }
  if (const std::optional<ListedDate> date = ReadShortDate(words, at)) {
    return date;
  }
  if (const std::optional<ListedDate> date = ReadHyphenedDate(words, at)) {
    return date;
  }
  return ReadMarkedDate(words, at);
}

std::optional<NumberOrder> OrderShownBy(QByteArrayView word) {
  constexpr int kMonths = 12;
  constexpr int kDays = 31;
  const std::optional<NumberedDate> date = ReadNumbers(word);
  if (!date || date->digits[0] == 4 || date->separator == '.') {
    return std::nullopt;
  }
  if (date->numbers[0] > kDays || date->numbers[0] == 0) {
    return NumberOrder::YearFirst;
  }
  if (date->numbers[0] > kMonths) {
    return NumberOrder::DayFirst;
  }
  return date->numbers[1] > kMonths ? std::optional(NumberOrder::MonthFirst) : std::nullopt;
}

Date ReadCompactTime(QByteArrayView text, DateStep& step) {
  step = DateStep::None;
  QByteArrayView digits = text;
  QByteArrayView fraction;
  if (const qsizetype dot = text.indexOf('.'); dot >= 0) {
    digits = text.first(dot);
    fraction = text.sliced(dot + 1);
    if (!IsNumber(fraction)) {
      return {};
    }
  }
  if (!IsNumber(digits) || (!fraction.isEmpty() && digits.size() < 14)) {
    return {};
  }
  int yearDigits = 4;
  int lessYears = 0;
  if (digits.size() == 15 && digits.startsWith("191")) {
    // "19" and the years since 1900: 2024 is written 19124.
    digits = digits.sliced(2);
    yearDigits = 3;
    lessYears = -kFirstYear;
  }
  const qsizetype behindYear = digits.size() - yearDigits;
  if (behindYear != 4 && behindYear != 8 && behindYear != 10) {
    return {};
  }
  const auto number = [&digits](qsizetype at, qsizetype size) {
    return at + size <= digits.size() ? static_cast<int>(NumberIn(digits.sliced(at, size)).value_or(0)) : 0;
  };
  ListedDate date;
  const QDate day(number(0, yearDigits) - lessYears, number(yearDigits, 2), number(yearDigits + 2, 2));
  const int hour = number(yearDigits + 4, 2);
  const int minute = number(yearDigits + 6, 2);
  const int second = number(yearDigits + 8, 2);
  if (!day.isValid() || day.year() < 1 || hour > 23 || minute > 59 || second > 60) {
    return {};
  }
  date.msecsOfDay = (hour * 60 + minute) * kMsecsOfMinute + std::min(second, 59) * kMsecsOfSecond;
  date.zone = 0;
  step = behindYear == 4 ? DateStep::Day : behindYear == 8 ? DateStep::Minute : DateStep::Second;
  if (!fraction.isEmpty()) {
    Scanner scanner(fraction);
    date.msecsOfDay += TakeFraction(scanner);
    step = DateStep::Millisecond;
  }
  return {InUtc(day, date, {})};
}

void SetDate(ListedItem& item, const ListedDate& date, const ServerClock& clock) {
  if (date.month == 0) {
    return;
  }
  if (!date.year) {
    item.modified = WithoutYear(date, clock);
  } else if (const QDate day(*date.year, date.month, date.day); day.isValid()) {
    item.modified = {InUtc(day, date, clock)};
  }
  if (item.modified.IsPresent()) {
    item.step = date.step;
  }
}

}  // namespace trevane::ftp
