#include "base/DateFormatter.h"

#include <QDateTime>

#include <algorithm>

namespace trevane {
namespace {

constexpr qint64 kSecondsOfDay = 86400;
constexpr qint64 kSecondsOfBlock = 900;
/// 1970-01-01 as a Julian day.
constexpr qint64 kEpochDay = 2440588;
/// Beyond some 290,000 years no file system reaches, and sums would overflow.
constexpr qint64 kFarthest = 9'000'000'000'000'000;

constexpr qint64 FloorDiv(qint64 a, qint64 b) noexcept {
  return a / b - (a % b < 0 ? 1 : 0);
}

size_t SlotOf(qint64 number, size_t slots) noexcept {
  return static_cast<size_t>(static_cast<quint64>(number) % slots);
}

}  // namespace

DateFormatter::DateFormatter(const QLocale& locale, const std::optional<QTimeZone>& zone)
    : locale_(locale),
      zone_(zone),
      timePattern_(WithoutZone(locale.timeFormat(QLocale::LongFormat))),
      days_(kDays),
      offsetDays_(kOffsetDays),
      offsetBlocks_(kOffsetBlocks) {
  const QString zero = locale_.zeroDigit();
  fast_ = zero.size() == 1 && ReadTimePattern(timePattern_);
  if (fast_) {
    zero_ = zero[0].unicode();
    for (const Token& token : tokens_) {
      longestTime_ += qMax<qsizetype>(2, qMax(token.text.size(), token.afternoon.size()));
    }
    // Some locales have forms that are not read here; a few times of the day show it.
    for (const QTime time : {QTime(0, 0, 0), QTime(1, 2, 3), QTime(11, 59, 59), QTime(12, 0, 0),
                             QTime(13, 45, 6), QTime(23, 30, 10)}) {
      QString text(longestTime_, Qt::Uninitialized);
      auto* const begin = reinterpret_cast<char16_t*>(text.data());
      text.truncate(WriteTime(QTime(0, 0).secsTo(time), begin) - begin);
      fast_ = fast_ && text == locale_.toString(time, timePattern_);
    }
  }
}

QString DateFormatter::WithoutZone(const QString& pattern) {
  QString kept;
  bool quoted = false;
  for (qsizetype i = 0; i < pattern.size(); ++i) {
    const QChar c = pattern[i];
    if (c == u'\'') {
      quoted = !quoted;
    }
    if (quoted || c != u't') {
      kept += c;
      continue;
    }
    while (i + 1 < pattern.size() && pattern[i + 1] == u't') {
      ++i;
    }
    // The brackets around it are removed, too.
    if (kept.endsWith(u'(') && i + 1 < pattern.size() && pattern[i + 1] == u')') {
      kept.chop(1);
      ++i;
    }
  }
  return kept.trimmed();
}

bool DateFormatter::ReadTimePattern(const QString& pattern) {
  const bool noon = [&] {
    bool quoted = false;
    for (const QChar c : pattern) {
      quoted = quoted != (c == u'\'');
      if (!quoted && (c == u'a' || c == u'A')) {
        return true;
      }
    }
    return false;
  }();
  const auto literal = [this](QChar c) {
    if (tokens_.empty() || tokens_.back().field != Field::Literal) {
      tokens_.push_back({});
    }
    tokens_.back().text += c;
  };
  for (qsizetype i = 0; i < pattern.size();) {
    const char16_t c = pattern[i].unicode();
    qsizetype run = 1;
    while (i + run < pattern.size() && pattern[i + run] == QChar(c)) {
      ++run;
    }
    const bool padded = run >= 2;
    switch (c) {
      case u'\'': {
        if (padded) {
          literal(u'\'');
          i += 2;
          continue;
        }
        qsizetype end = pattern.indexOf(u'\'', i + 1);
        if (end < 0) {
          end = pattern.size();
        }
        for (qsizetype k = i + 1; k < end; ++k) {
          literal(pattern[k]);
        }
        i = end + 1;
        continue;
      }
      case u'h':
      case u'H':
        tokens_.push_back({c == u'h' && noon ? Field::Hour12 : Field::Hour24, padded, {}, {}});
        i += qMin<qsizetype>(run, 2);
        continue;
      case u'm':
      case u's':
        tokens_.push_back({c == u'm' ? Field::Minute : Field::Second, padded, {}, {}});
        i += qMin<qsizetype>(run, 2);
        continue;
      case u'a':
      case u'A': {
        const bool two = i + 1 < pattern.size() && pattern[i + 1].toLower() == u'p';
        const QString form = pattern.mid(i, two ? 2 : 1);
        tokens_.push_back(
            {Field::Noon, false, locale_.toString(QTime(1, 0), form), locale_.toString(QTime(13, 0), form)});
        i += form.size();
        continue;
      }
      case u'z':
      case u't':
        return false;
      default:
        literal(QChar(c));
        ++i;
    }
  }
  return true;
}

char16_t* DateFormatter::WriteNumber(int number, bool padded, char16_t* out) const {
  if (padded || number >= 10) {
    *out++ = static_cast<char16_t>(zero_ + number / 10);
  }
  *out++ = static_cast<char16_t>(zero_ + number % 10);
  return out;
}

char16_t* DateFormatter::WriteTime(int secondOfDay, char16_t* out) const {
  const auto write = [](const QString& text, char16_t* to) {
    return std::copy_n(QStringView(text).utf16(), text.size(), to);
  };
  const int hour = secondOfDay / 3600;
  for (const Token& token : tokens_) {
    switch (token.field) {
      case Field::Literal:
        out = write(token.text, out);
        break;
      case Field::Hour24:
        out = WriteNumber(hour, token.padded, out);
        break;
      case Field::Hour12:
        out = WriteNumber(hour % 12 == 0 ? 12 : hour % 12, token.padded, out);
        break;
      case Field::Minute:
        out = WriteNumber(secondOfDay / 60 % 60, token.padded, out);
        break;
      case Field::Second:
        out = WriteNumber(secondOfDay % 60, token.padded, out);
        break;
      case Field::Noon:
        out = write(hour < 12 ? token.text : token.afternoon, out);
        break;
    }
  }
  return out;
}

const QString& DateFormatter::DayText(qint64 day) const {
  Day& cached = days_[SlotOf(day, kDays)];
  if (cached.number != day) {
    cached.number = day;
    cached.text = locale_.toString(QDate::fromJulianDay(day + kEpochDay), QLocale::ShortFormat);
  }
  return cached.text;
}

qint32 DateFormatter::ExactOffset(qint64 seconds) const {
  const qint64 msecs = seconds * 1000;
  return zone_ ? zone_->offsetFromUtc(QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC))
               : QDateTime::fromMSecsSinceEpoch(msecs).offsetFromUtc();
}

qint32 DateFormatter::CommonOffset(qint64 first, qint64 length) const {
  const qint32 begin = ExactOffset(first);
  return begin == ExactOffset(first + length - 1) ? begin : kMixed;
}

qint32 DateFormatter::OffsetAt(qint64 seconds) const {
  const qint64 day = FloorDiv(seconds, kSecondsOfDay);
  Offset& ofDay = offsetDays_[SlotOf(day, kOffsetDays)];
  if (ofDay.block != day) {
    ofDay = {day, CommonOffset(day * kSecondsOfDay, kSecondsOfDay)};
  }
  if (ofDay.seconds != kMixed) {
    return ofDay.seconds;
  }
  const qint64 block = FloorDiv(seconds, kSecondsOfBlock);
  Offset& ofBlock = offsetBlocks_[SlotOf(block, kOffsetBlocks)];
  if (ofBlock.block != block) {
    ofBlock = {block, CommonOffset(block * kSecondsOfBlock, kSecondsOfBlock)};
  }
  // Clocks were set at odd seconds when local mean time was given up.
  return ofBlock.seconds != kMixed ? ofBlock.seconds : ExactOffset(seconds);
}

QString DateFormatter::Format(Date date) const {
  if (!date.IsPresent() || date.msecs > kFarthest || date.msecs < -kFarthest) {
    return {};
  }
  const qint64 seconds = FloorDiv(date.msecs, 1000);
  const qint64 local = seconds + OffsetAt(seconds);
  const qint64 day = FloorDiv(local, kSecondsOfDay);
  const auto secondOfDay = static_cast<int>(local - day * kSecondsOfDay);
  const QString& dayText = DayText(day);
  if (!fast_) {
    return dayText + u' ' + locale_.toString(QTime(0, 0).addSecs(secondOfDay), timePattern_);
  }
  QString text(dayText.size() + 1 + longestTime_, Qt::Uninitialized);
  auto* const begin = reinterpret_cast<char16_t*>(text.data());
  char16_t* out = std::copy_n(QStringView(dayText).utf16(), dayText.size(), begin);
  *out++ = u' ';
  out = WriteTime(secondOfDay, out);
  text.truncate(out - begin);
  return text;
}

QString FormatDate(Date date) {
  return date.IsPresent() ? DateFormatter().Format(date) : QString();
}

}  // namespace trevane
