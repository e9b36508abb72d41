#include "engine/providers/ftp/ListLine.h"
#include "engine/providers/ftp/MonthNames.h"

#include <algorithm>
#include <string_view>

namespace trevane::ftp {
namespace {

constexpr qsizetype kModeSize = 10;

bool ConsistsOf(QByteArrayView text, std::string_view chars) {
  return std::all_of(text.begin(), text.end(),
                     [chars](char c) { return chars.find(c) != std::string_view::npos; });
}

struct Mode {
  char type = '-';
  std::optional<quint32> bits = {};
  /// How many words it takes.
  int words = 1;
};

quint32 BitsOf(QByteArrayView letters) {
  quint32 bits = 0;
  for (const char letter : letters) {
    // A capital set-id or sticky letter stands where the right to execute is missing.
    const bool isSet = letter == 'r' || letter == 'w' || letter == 'x' || letter == 's' || letter == 't';
    bits = bits << 1 | (isSet ? 1U : 0U);
  }
  return bits;
}

/// "drwxr-xr-x", with "+", "." or "@" and digits of the next column behind it; "d-ewrewr"; "d [RWCEAFMS]".
std::optional<Mode> ReadMode(const ListWords& words) {
  constexpr std::string_view kTypes = "-dlbcpsDnmvV";
  const QByteArrayView word = words.At(0);
  if (word.isEmpty() || kTypes.find(word.front()) == std::string_view::npos) {
    return std::nullopt;
  }
  Mode mode{.type = word.front()};
  QByteArrayView rights = word.sliced(1);
  if (rights.isEmpty()) {
    rights = words.At(1);
    mode.words = 2;
  }
  if (rights.startsWith('[') && rights.endsWith(']')) {
    return mode;
  }
  if (mode.words == 2) {
    return std::nullopt;
  }
  constexpr std::string_view kLetters = "rwxsStTlL-";
  if (word.size() >= kModeSize && ConsistsOf(word.sliced(1, kModeSize - 1), kLetters)) {
    QByteArrayView behind = word.sliced(kModeSize);
    if (!behind.isEmpty() && std::string_view("+.@").find(behind.front()) != std::string_view::npos) {
      behind = behind.sliced(1);
    }
    if (behind.isEmpty() || IsNumber(behind)) {
      mode.bits = BitsOf(word.sliced(1, kModeSize - 1));
      return mode;
    }
    return std::nullopt;
  }
  const bool isShort = (word.size() == 4 || word.size() == 7) && ConsistsOf(rights, "rwx-");
  const bool isOther = word.size() == 8 && ConsistsOf(rights, "sewr-");
  return isShort || isOther ? std::optional(mode) : std::nullopt;
}

std::optional<ListedItem::Kind> KindOf(char type) {
  switch (type) {
    case '-':
    case 'n':
      return ListedItem::Kind::File;
    case 'd':
      return ListedItem::Kind::Folder;
    case 'l':
      return ListedItem::Kind::Link;
    case 'v':
    case 'V':
      return std::nullopt;
    default:
      return ListedItem::Kind::Device;
  }
}

/// A whole number, one that has become negative on its way, or a rounded one ("1.2K").
bool IsSize(QByteArrayView word) {
  if (word.size() > 1 && word.front() == '-') {
    return IsNumber(word.sliced(1));
  }
  if (!word.isEmpty() && std::string_view("KMGTkB").find(word.back()) != std::string_view::npos) {
    word.chop(1);
    return !word.isEmpty() && IsDigit(word.front()) && ConsistsOf(word, "0123456789.,");
  }
  return IsNumber(word);
}

/// Where the date begins, and the date.
struct DateAt {
  int at = 0;
  ListedDate date;
};

std::optional<DateAt> FindDate(const ListWords& words, int first, const ListReading& reading) {
  // The one behind a size first: users and groups have all kinds of names.
  for (const Months months : {Months::Known, Months::Any}) {
    for (int at = first + 1; at < words.Count(); ++at) {
      if (IsSize(words.At(at - 1))) {
        if (const auto date = ReadDate(words, at, reading.order, months)) {
          return DateAt{at, *date};
        }
      }
    }
    for (int at = first; months == Months::Known && at < words.Count(); ++at) {
      if (const auto date = ReadDate(words, at, reading.order, months)) {
        return DateAt{at, *date};
      }
    }
  }
  return std::nullopt;
}

/// The text from one word to another, with the blanks between them.
QByteArray TextOf(const ListWords& words, int from, int to) {
  if (from >= to) {
    return {};
  }
  return words.Line().sliced(words.Begin(from), words.End(to - 1) - words.Begin(from)).toByteArray();
}

/// The columns between mode and date: links, owner, group, size.
void ReadColumns(const ListWords& words, int first, int dateAt, ListedItem& item) {
  int from = first;
  int to = dateAt;
  const bool isDevice = item.kind == ListedItem::Kind::Device;
  if (to > from && IsSize(words.At(to - 1))) {
    --to;
    // One number alone is 1 where it counts links; what else it counts is not known.
    if (!isDevice && (to > from || words.At(to) != "1")) {
      item.size = NumberIn(words.At(to)).value_or(-1);
    }
    if (to > from && words.At(to - 1).endsWith(',')) {
      // Numbers of a device.
      --to;
      item.size = -1;
    }
  } else if (to > from && isDevice && words.At(to - 1).contains(',')) {
    --to;
  }
  if (to > from && IsNumber(words.At(from))) {
    ++from;
  }
  if (to > from) {
    item.owner = words.At(from).toByteArray();
    item.group = TextOf(words, from + 1, to);
  }
}

/// "-rw-rw-rw- 1 user group 1234 name": without a date only a name without blanks can be told.
bool ReadWithoutDate(const ListWords& words, int first, ListLine& line) {
  constexpr int kColumns = 4;
  const int nameAt = first + kColumns;
  if (words.Count() != nameAt + 1 || !IsNumber(words.At(first)) || !IsNumber(words.At(nameAt - 1)) ||
      IsNumber(words.At(first + 1)) || MonthOf(words.At(nameAt)) != 0 ||
      ConsistsOf(words.At(nameAt), "0123456789-./:")) {
    return false;
  }
  ReadColumns(words, first, nameAt, line.item);
  line.columnsEnd = words.End(nameAt - 1);
  return true;
}

}  // namespace

std::optional<ListLine> ReadUnixLine(const ListWords& words, const ListReading& reading) {
  const std::optional<Mode> mode = ReadMode(words);
  if (!mode) {
    return std::nullopt;
  }
  ListLine line{.form = ListLine::Form::Unix, .line = words.Line()};
  const std::optional<ListedItem::Kind> kind = KindOf(mode->type);
  line.isNoItem = !kind;
  line.item.kind = kind.value_or(ListedItem::Kind::File);
  line.item.mode = mode->bits;
  const std::optional<DateAt> found = FindDate(words, mode->words, reading);
  if (!found) {
    return ReadWithoutDate(words, mode->words, line) ? std::optional(line) : std::nullopt;
  }
  ReadColumns(words, mode->words, found->at, line.item);
  SetDate(line.item, found->date, reading.clock);
  line.columnsEnd = words.End(found->at + found->date.words - 1);
  return line;
}

}  // namespace trevane::ftp
