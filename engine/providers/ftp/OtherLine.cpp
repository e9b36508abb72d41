#include "engine/providers/ftp/ListLine.h"

#include <algorithm>

namespace trevane::ftp {
namespace {

/// "+i8388621.48594,m825718503,r,s280,<tab>name" (EPLF).
std::optional<ListLine> ReadFactsBeforeTab(QByteArrayView text) {
  const qsizetype tab = text.indexOf('\t');
  if (!text.startsWith('+') || tab < 0) {
    return std::nullopt;
  }
  ListLine line;
  ListedItem& item = line.item;
  bool isKind = false;
  qsizetype at = 1;
  while (at < tab) {
    qsizetype end = text.indexOf(',', at);
    end = end < 0 || end > tab ? tab : end;
    const QByteArrayView fact = text.sliced(at, end - at);
    const QByteArrayView value = fact.isEmpty() ? fact : fact.sliced(1);
    const char key = fact.isEmpty() ? ' ' : fact.front();
    if (key == '/' || key == 'r') {
      isKind = true;
      item.kind = key == '/' ? ListedItem::Kind::Folder : item.kind;
    } else if (key == 's') {
      item.size = NumberIn(value).value_or(-1);
    } else if (key == 'i') {
      item.unique = value.toByteArray();
    } else if (const auto seconds = NumberIn(value); key == 'm' && seconds && value.size() <= 12) {
      item.modified = {*seconds * 1000};
      item.step = DateStep::Second;
    }
    at = end + 1;
  }
  item.name = text.sliced(tab + 1).toByteArray();
  if (!isKind) {
    item.kind = ListedItem::Kind::Device;
  }
  return line;
}

/// "QSYS  77824 31/01/24 15:09:55 *DIR   name/", "QSYS *MEM NAME.MBR": the order of the date is not told.
std::optional<ListLine> ReadStarredType(const ListWords& words) {
  constexpr int kLongest = 4;
  int at = 1;
  while (at <= kLongest && !words.At(at).startsWith('*')) {
    ++at;
  }
  const QByteArrayView type = words.At(at);
  const bool hasColumns =
      at == kLongest && NumberIn(words.At(1)) && words.At(2).contains('/') && words.At(3).contains(':');
  if (type.size() < 3 || !(hasColumns || at == 1) || at + 1 >= words.Count() ||
      !std::all_of(type.begin() + 1, type.end(), [](char c) { return c >= 'A' && c <= 'Z'; })) {
    return std::nullopt;
  }
  ListLine line;
  const bool isFolder = IsSame(type, "*DIR") || IsSame(type, "*FLR") || IsSame(type, "*LIB");
  line.item.kind = isFolder ? ListedItem::Kind::Folder : ListedItem::Kind::File;
  line.item.owner = words.At(0).toByteArray();
  if (hasColumns && !isFolder) {
    line.item.size = NumberIn(words.At(1)).value_or(-1);
  }
  QByteArrayView name = WithoutOuterBlanks(words.Line().sliced(words.Begin(at + 1)));
  if (isFolder && name.size() > 1 && name.endsWith('/')) {
    name.chop(1);
  }
  line.item.name = name.toByteArray();
  return line;
}

/// "NAME.EXT;1   12/24   31-JAN-2024 12:00:00.00  [USER,GROUP]  (RWED,RWED,RE,)": sizes are blocks.
std::optional<ListLine> ReadVersionedName(const ListWords& words, const ListReading& reading) {
  const QByteArrayView word = words.At(0);
  const qsizetype semicolon = word.indexOf(';');
  if (semicolon < 1 || !IsNumber(word.sliced(semicolon + 1))) {
    return std::nullopt;
  }
  for (int at = 1; at <= 3; ++at) {
    if (const auto date = ReadDate(words, at, reading.order, Months::Known); date && date->year) {
      ListLine line;
      SetDate(line.item, *date, reading.clock);
      QByteArrayView name = word;
      if (const QByteArrayView stem = word.first(semicolon);
          stem.size() > 4 && IsSame(stem.last(4), ".DIR")) {
        line.item.kind = ListedItem::Kind::Folder;
        name = stem.chopped(4);
      }
      line.item.name = name.toByteArray();
      return line;
    }
  }
  return std::nullopt;
}

/// "0.0  24/01/31 1200  d-ewrewr  5A0  160 NAME": the year is the first.
std::optional<ListLine> ReadOwnerFirst(const ListWords& words, const ListReading& reading) {
  const QByteArrayView owner = words.At(0);
  const qsizetype dot = owner.indexOf('.');
  constexpr int kNameAt = 6;
  constexpr qsizetype kAttributes = 8;
  const QByteArrayView time = words.At(2);
  const QByteArrayView attributes = words.At(3);
  if (dot < 1 || !IsNumber(owner.first(dot)) || !IsNumber(owner.sliced(dot + 1)) || time.size() != 4 ||
      !IsNumber(time) || attributes.size() != kAttributes || words.Count() <= kNameAt) {
    return std::nullopt;
  }
  if (!std::all_of(attributes.begin(), attributes.end(), [](char c) {
        return c == 'd' || c == 's' || c == 'e' || c == 'w' || c == 'r' || c == '-';
      })) {
    return std::nullopt;
  }
  std::optional<ListedDate> date = ReadDate(words, 1, NumberOrder::YearFirst, Months::Known);
  const auto minutes = NumberIn(time.first(2)).value_or(24) * 60 + NumberIn(time.last(2)).value_or(0);
  if (!date || minutes >= 24 * 60) {
    return std::nullopt;
  }
  date->msecsOfDay = static_cast<int>(minutes) * 60 * 1000;
  date->step = DateStep::Minute;
  ListLine line;
  SetDate(line.item, *date, reading.clock);
  const bool isFolder = attributes.front() == 'd';
  line.item.kind = isFolder ? ListedItem::Kind::Folder : ListedItem::Kind::File;
  if (!isFolder) {
    line.item.size = NumberIn(words.At(kNameAt - 1)).value_or(-1);
  }
  line.item.owner = owner.toByteArray();
  line.item.name = WithoutOuterBlanks(words.Line().sliced(words.Begin(kNameAt))).toByteArray();
  return line;
}

}  // namespace

std::optional<ListLine> ReadOtherLine(const ListWords& words, const ListReading& reading) {
  if (auto line = ReadFactsBeforeTab(words.Line())) {
    return line;
  }
  if (auto line = ReadVersionedName(words, reading)) {
    return line;
  }
  if (auto line = ReadOwnerFirst(words, reading)) {
    return line;
  }
  return ReadStarredType(words);
}

}  // namespace trevane::ftp
