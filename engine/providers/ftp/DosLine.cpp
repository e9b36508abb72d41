#include "engine/providers/ftp/ListLine.h"

#include <QByteArray>

#include <array>

namespace trevane::ftp {
namespace {

/// Without the characters that separate thousands: "1,234", "1.234", "1'234", a blank that breaks no line.
std::optional<qint64> SizeIn(QByteArrayView word) {
  constexpr std::array<QByteArrayView, 9> kSeparators{
      ",", ".", "'", "\xC2\xA0", "\xA0", "\xFF", "\xE2\x80\xAF", "\xE2\x80\x89", "\xE2\x80\x99"};
  if (word.isEmpty() || !IsDigit(word.front())) {
    return std::nullopt;
  }
  for (const QByteArrayView separator : kSeparators) {
    if (!word.contains(separator)) {
      continue;
    }
    QByteArray digits;
    digits.reserve(word.size());
    qsizetype group = 0;
    bool isFirst = true;
    for (QByteArrayView rest = word; !rest.isEmpty();) {
      if (rest.startsWith(separator)) {
        if (group < 1 || group > 3 || (!isFirst && group != 3)) {
          return std::nullopt;
        }
        group = 0;
        isFirst = false;
        rest = rest.sliced(separator.size());
      } else {
        digits += rest.front();
        ++group;
        rest = rest.sliced(1);
      }
    }
    return group == 3 ? NumberIn(digits) : std::nullopt;
  }
  return NumberIn(word);
}

struct Tag {
  QByteArrayView text;
  ListedItem::Kind kind;
};

constexpr std::array<Tag, 6> kTags{{
    {"<DIR>", ListedItem::Kind::Folder},
    {"<REP>", ListedItem::Kind::Folder},
    {"<JUNCTION>", ListedItem::Kind::Link},
    {"<SYMLINKD>", ListedItem::Kind::Link},
    {"<SYMLINK>", ListedItem::Kind::Link},
    {"<VERBINDUNG>", ListedItem::Kind::Link},
}};

/// The date, or nothing where no time stands with it.
std::optional<ListedDate> ReadStart(const ListWords& words, const ListReading& reading) {
  const QByteArrayView first = words.At(0);
  if (first.isEmpty() || !IsDigit(first.front())) {
    return std::nullopt;
  }
  const std::optional<ListedDate> date = ReadDate(words, 0, reading.order, Months::Known);
  return date && date->year ? date : std::nullopt;
}

/// "    1234    JAN-31-2024  12:00:00   NAME.TXT", "     512  JAN-31-2024  12:00:00   NAME     <DIR>".
std::optional<ListLine> ReadSizeFirst(const ListWords& words, const ListReading& reading) {
  const std::optional<qint64> size = NumberIn(words.At(0));
  const QByteArrayView second = words.At(1);
  if (!size || second.isEmpty() || !(second.contains('-') || second.contains('/'))) {
    return std::nullopt;
  }
  const std::optional<ListedDate> date = ReadDate(words, 1, reading.order, Months::Known);
  if (!date || !date->year || date->step == DateStep::Day || 1 + date->words >= words.Count()) {
    return std::nullopt;
  }
  ListLine line{.form = ListLine::Form::SizeFirst, .line = words.Line()};
  line.columnsEnd = words.End(date->words);
  line.item.size = *size;
  SetDate(line.item, *date, reading.clock);
  const QByteArrayView text = WithoutOuterBlanks(words.Line());
  constexpr QByteArrayView kFolder("<DIR>");
  if (text.size() > kFolder.size() && IsSame(text.last(kFolder.size()), kFolder) &&
      IsBlank(text[text.size() - kFolder.size() - 1])) {
    line.item.kind = ListedItem::Kind::Folder;
    line.item.size = -1;
    line.line = words.Line().first(text.data() + text.size() - kFolder.size() - words.Line().data());
  }
  return line;
}

}  // namespace

std::optional<ListLine> ReadDosLine(const ListWords& words, const ListReading& reading) {
  const std::optional<ListedDate> date = ReadStart(words, reading);
  if (!date) {
    return ReadSizeFirst(words, reading);
  }
  ListLine line{.form = ListLine::Form::Dos, .line = words.Line()};
  const QByteArrayView word = words.At(date->words);
  line.columnsEnd = word.isEmpty() ? 0 : words.End(date->words);
  SetDate(line.item, *date, reading.clock);
  if (IsSame(word, "<VOL>") || IsSame(word, "<LABEL>")) {
    line.isNoItem = true;
    return line;
  }
  for (const Tag& tag : kTags) {
    if (IsSame(word, tag.text)) {
      line.item.kind = tag.kind;
      return line;
    }
  }
  const std::optional<qint64> size = SizeIn(word);
  if (!size) {
    return std::nullopt;
  }
  line.item.size = *size;
  line.dateEnd = words.End(date->words - 1);
  line.sizeBegin = words.Begin(date->words);
  return line;
}

}  // namespace trevane::ftp
