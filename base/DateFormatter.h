#pragma once

#include "base/Variant.h"

#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <array>
#include <optional>
#include <vector>

namespace trevane {

/// Dates as text: the short date and the long time of the locale (without its word for the time zone), in
/// local time. Made for a hundred thousand dates in a row: the form is read once, the text of a day and the
/// distance to UTC are remembered.
class DateFormatter {
 public:
  /// The system's locale and time zone, unless others are given.
  explicit DateFormatter(const QLocale& locale = QLocale::system(),
                         const std::optional<QTimeZone>& zone = std::nullopt);

  /// Nothing for an absent date. Parts of a second are dropped.
  [[nodiscard]] QString Format(Date date) const;

 private:
  enum class Field { Literal, Hour24, Hour12, Minute, Second, Noon };
  struct Token {
    Field field = Field::Literal;
    bool padded = false;
    QString text;
    /// Second text of Noon.
    QString afternoon;
  };
  struct Day {
    qint64 number = kNoNumber;
    QString text;
  };
  struct Offset {
    qint64 block = kNoNumber;
    qint32 seconds = 0;
  };

  static constexpr qint64 kNoNumber = std::numeric_limits<qint64>::min();
  static constexpr size_t kDays = 4096;
  static constexpr size_t kOffsetDays = 4096;
  static constexpr size_t kOffsetBlocks = 128;
  /// The distance to UTC changes on a day, and is looked up in its quarters of an hour.
  static constexpr qint32 kMixed = std::numeric_limits<qint32>::min();

  [[nodiscard]] static QString WithoutZone(const QString& pattern);
  [[nodiscard]] bool ReadTimePattern(const QString& pattern);
  /// Writes at most longestTime_ code units and returns the end.
  [[nodiscard]] char16_t* WriteTime(int secondOfDay, char16_t* out) const;
  [[nodiscard]] char16_t* WriteNumber(int number, bool padded, char16_t* out) const;
  [[nodiscard]] const QString& DayText(qint64 day) const;
  [[nodiscard]] qint32 OffsetAt(qint64 seconds) const;
  [[nodiscard]] qint32 ExactOffset(qint64 seconds) const;
  [[nodiscard]] qint32 CommonOffset(qint64 first, qint64 length) const;

  QLocale locale_;
  std::optional<QTimeZone> zone_;
  QString timePattern_;
  char16_t zero_ = u'0';
  std::vector<Token> tokens_;
  qsizetype longestTime_ = 0;
  /// The tokens give the same text as the locale; otherwise the locale is asked each time.
  bool fast_ = false;
  mutable std::vector<Day> days_;
  mutable std::vector<Offset> offsetDays_;
  mutable std::vector<Offset> offsetBlocks_;
};

/// One date as the system's locale has it; nothing for an absent date.
[[nodiscard]] QString FormatDate(Date date);

}  // namespace trevane
