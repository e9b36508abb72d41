#include "engine/providers/ftp/ListParser.h"

#include "engine/providers/ftp/FactsLine.h"
#include "engine/providers/ftp/ListLine.h"
#include "engine/providers/ftp/ListMessages.h"
#include "engine/providers/ftp/ListWords.h"
#include "engine/providers/ftp/ListedDate.h"
#include "engine/providers/ftp/SizeColumn.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace trevane::ftp {
namespace {

constexpr qint64 kMsecsOfSecond = 1000;
constexpr qint64 kMsecsOfMinute = 60 * kMsecsOfSecond;

/// All lines, without their ends. CR alone ends lines where there is no LF.
std::vector<QByteArrayView> LinesOf(QByteArrayView bytes) {
  if (bytes.startsWith("\xEF\xBB\xBF")) {
    bytes = bytes.sliced(3);
  }
  const char end = bytes.contains('\n') ? '\n' : '\r';
  std::vector<QByteArrayView> lines;
  lines.reserve(static_cast<size_t>(std::count(bytes.begin(), bytes.end(), end)) + 1);
  while (!bytes.isEmpty()) {
    const qsizetype at = bytes.indexOf(end);
    QByteArrayView line = at < 0 ? bytes : bytes.first(at);
    bytes = at < 0 ? QByteArrayView() : bytes.sliced(at + 1);
    while (line.endsWith('\r') || line.endsWith('\0')) {
      line.chop(1);
    }
    lines.push_back(line);
  }
  return lines;
}

void CountUnreadable(ParsedListing& listing, QByteArrayView line) {
  constexpr qsizetype kMostShown = 200;
  constexpr qsizetype kMostKept = 1000;
  constexpr qsizetype kLongestKept = 1024;
  if (listing.unreadableLines.size() < kMostKept) {
    // A name is at the end.
    listing.unreadableLines += line.last(std::min(line.size(), kLongestKept)).toByteArray();
  }
  if (listing.unreadable == 0) {
    listing.firstUnreadable = line.first(std::min(line.size(), kMostShown)).toByteArray();
  }
  ++listing.unreadable;
}

bool IsFolderItself(QByteArrayView name) {
  return name == "." || name == "..";
}

bool IsSoundName(QByteArrayView name) {
  return !name.isEmpty() && std::none_of(name.begin(), name.end(), [](char c) {
    return c == '/' || c == '\0' || c == '\r' || c == '\n';
  });
}

/// Takes an item, or counts it; the folder itself and the one above it are left out.
void Add(ParsedListing& listing, ListedItem&& item, QByteArrayView line) {
  if (IsFolderItself(item.name)) {
    return;
  }
  if (!IsSoundName(item.name)) {
    CountUnreadable(listing, line);
    return;
  }
  listing.items.push_back(std::move(item));
}

NumberOrder OrderIn(const std::vector<QByteArrayView>& lines) {
  for (const QByteArrayView line : lines) {
    const ListWords words(line);
    for (const int at : {0, 1}) {
      if (const std::optional<NumberOrder> order = OrderShownBy(words.At(at))) {
        return *order;
      }
    }
  }
  return NumberOrder::MonthFirst;
}

std::optional<ListLine> ReadLine(const ListWords& words, const ListReading& reading) {
  if (auto line = ReadUnixLine(words, reading)) {
    return line;
  }
  if (auto line = ReadDosLine(words, reading)) {
    return line;
  }
  return ReadOtherLine(words, reading);
}

constexpr qsizetype kUnknown = std::numeric_limits<qsizetype>::max();

qsizetype BlanksAt(QByteArrayView text) {
  return std::find_if_not(text.begin(), text.end(), IsBlank) - text.begin();
}

qsizetype BlanksAtEnd(QByteArrayView text) {
  return std::find_if_not(text.rbegin(), text.rend(), IsBlank) - text.rbegin();
}

/// Where names begin and end behind the columns, as far as all lines of a form tell.
class NameColumn {
 public:
  void Learn(const ListLine& line) {
    const QByteArrayView behind = line.line.sliced(line.columnsEnd);
    const qsizetype blanks = BlanksAt(behind);
    if (blanks == behind.size()) {
      return;
    }
    const qsizetype column = line.columnsEnd + blanks;
    if (IsFolderOfDos(line)) {
      folderColumn_ = std::min(folderColumn_, column);
    } else if (++files_; blanks < blanks_) {
      blanks_ = blanks;
      column_ = column;
    } else if (blanks == blanks_ && column_ != column) {
      column_ = kUnknown;
    }
    ++lines_;
    if (BlanksAtEnd(behind) > 0) {
      ++padded_;
      widthIsOne_ = widthIsOne_ && (width_ == 0 || width_ == line.line.size());
      width_ = line.line.size();
    }
  }

  [[nodiscard]] QByteArrayView NameOf(const ListLine& line) const {
    const QByteArrayView behind = line.line.sliced(line.columnsEnd);
    const qsizetype blanks = BlanksAt(behind);
    if (blanks == behind.size()) {
      return BlankNameOf(line, behind);
    }
    if (blanks == 0) {
      return {};
    }
    QByteArrayView name =
        behind.sliced(IsFolderOfDos(line) ? FolderStart(line, blanks) : Start(line, blanks));
    if (IsPadded() || line.form == ListLine::Form::SizeFirst) {
      name.chop(BlanksAtEnd(name));
    }
    return name;
  }

 private:
  /// What stands behind the blanks that separate is a name of blanks, as Unix has them.
  [[nodiscard]] QByteArrayView BlankNameOf(const ListLine& line, QByteArrayView behind) const {
    const qsizetype usual = blanks_ == kUnknown ? 1 : blanks_;
    const bool mayBeName = line.form == ListLine::Form::Unix && (lines_ == 0 || !IsPadded());
    return mayBeName && behind.size() > usual ? behind.sliced(usual) : QByteArrayView();
  }
  [[nodiscard]] bool IsPadded() const { return padded_ == lines_ || (padded_ > 1 && widthIsOne_); }
  static bool IsFolderOfDos(const ListLine& line) {
    return line.form == ListLine::Form::Dos && line.item.kind != ListedItem::Kind::File;
  }
  /// In the column of all others, where they have one and the line has nothing but blanks up to it: a year
  /// may be shorter than a time. Else behind so many blanks as all lines have at least.
  [[nodiscard]] qsizetype Start(const ListLine& line, qsizetype blanks) const {
    const qsizetype usual = std::min(blanks, blanks_);
    const bool isInColumn = column_ != kUnknown && line.columnsEnd + blanks >= column_;
    return isInColumn ? std::max(usual, column_ - line.columnsEnd) : usual;
  }
  /// Folders have no size: their names begin where those of several files do, else ten blanks behind "<DIR>".
  [[nodiscard]] qsizetype FolderStart(const ListLine& line, qsizetype blanks) const {
    constexpr qsizetype kUsual = 10;
    if (files_ > 1 && column_ != kUnknown && column_ <= folderColumn_ && column_ > line.columnsEnd) {
      return column_ - line.columnsEnd;
    }
    return std::min({blanks, std::max(folderColumn_ - line.columnsEnd, qsizetype{1}), kUsual});
  }

  qsizetype blanks_ = kUnknown;
  /// Where names begin that stand behind so many blanks; kUnknown where it differs.
  qsizetype column_ = kUnknown;
  qsizetype folderColumn_ = kUnknown;
  qsizetype width_ = 0;
  bool widthIsOne_ = true;
  int lines_ = 0;
  int files_ = 0;
  int padded_ = 0;
};

/// "name -> target": the size of a link is that of its text, which tells where a name has an arrow, too.
void SplitLink(QByteArrayView text, ListedItem& item) {
  constexpr QByteArrayView kArrow(" -> ");
  qsizetype at = text.indexOf(kArrow);
  if (item.size > 0 && item.size < text.size() - kArrow.size()) {
    const qsizetype told = text.size() - item.size - kArrow.size();
    at = text.sliced(told).startsWith(kArrow) ? told : at;
  }
  if (at <= 0) {
    item.name = text.toByteArray();
    return;
  }
  item.name = text.first(at).toByteArray();
  item.target = text.sliced(at + kArrow.size()).toByteArray();
}

/// "name [target]".
void SplitJunction(QByteArrayView text, ListedItem& item) {
  const qsizetype at = text.indexOf(QByteArrayView(" ["));
  if (at <= 0 || !text.endsWith(']')) {
    item.name = text.toByteArray();
    return;
  }
  item.name = text.first(at).toByteArray();
  item.target = text.sliced(at + 2, text.size() - at - 3).toByteArray();
}

void SetName(QByteArrayView name, ListLine& line) {
  if (line.item.kind == ListedItem::Kind::Link && line.form == ListLine::Form::Unix) {
    SplitLink(name, line.item);
    return;
  }
  if (line.item.kind == ListedItem::Kind::Link && line.form == ListLine::Form::Dos) {
    SplitJunction(name, line.item);
    return;
  }
  if (line.item.kind == ListedItem::Kind::Folder) {
    // What a folder's line tells is the size of its own records.
    line.item.size = -1;
    if (name.size() > 1 && name.endsWith('/')) {
      name.chop(1);
    }
  }
  line.item.name = name.toByteArray();
}

std::vector<ListLine> ReadLines(const std::vector<QByteArrayView>& lines, const ServerClock& clock,
                                ParsedListing& listing) {
  const ListReading reading{clock, OrderIn(lines)};
  std::vector<ListLine> read;
  read.reserve(lines.size());
  QByteArrayView emptyText;
  for (const QByteArrayView text : lines) {
    const ListWords words(text);
    if (std::optional<ListLine> line = ReadLine(words, reading)) {
      line->line = line->line.isNull() ? text : line->line;
      read.push_back(std::move(*line));
    } else if (!IsHeading(words)) {
      if (emptyText.isEmpty() && TellsEmpty(text)) {
        emptyText = text;
      } else {
        CountUnreadable(listing, text);
      }
    }
  }
  if (!emptyText.isEmpty() && (!read.empty() || listing.unreadable > 0)) {
    CountUnreadable(listing, emptyText);
  }
  return read;
}

QByteArrayView LastOf(QByteArrayView path) {
  return path.sliced(path.lastIndexOf('/') + 1);
}

}  // namespace

ParsedListing ParseList(QByteArrayView bytes, const ServerClock& clock) {
  ParsedListing listing;
  std::vector<ListLine> lines = ReadLines(LinesOf(bytes), clock, listing);
  SizeColumn sizes;
  for (const ListLine& line : lines) {
    sizes.Learn(line);
  }
  const auto unsettled = std::remove_if(lines.begin(), lines.end(), [&](ListLine& line) {
    const bool isSettled = sizes.Settle(line);
    if (!isSettled) {
      CountUnreadable(listing, line.line);
    }
    return !isSettled;
  });
  lines.erase(unsettled, lines.end());
  NameColumn unixNames;
  NameColumn dosNames;
  NameColumn sizeFirstNames;
  const auto namesOf = [&](ListLine::Form form) -> NameColumn& {
    if (form == ListLine::Form::Unix) {
      return unixNames;
    }
    return form == ListLine::Form::Dos ? dosNames : sizeFirstNames;
  };
  for (const ListLine& line : lines) {
    if (line.form != ListLine::Form::Named) {
      namesOf(line.form).Learn(line);
    }
  }
  listing.items.reserve(lines.size());
  for (ListLine& line : lines) {
    if (line.isNoItem) {
      continue;
    }
    if (line.form != ListLine::Form::Named) {
      SetName(namesOf(line.form).NameOf(line), line);
    }
    Add(listing, std::move(line.item), line.line);
  }
  return listing;
}

ParsedListing ParseFacts(QByteArrayView bytes) {
  ParsedListing listing;
  const std::vector<QByteArrayView> lines = LinesOf(bytes);
  listing.items.reserve(lines.size());
  for (const QByteArrayView text : lines) {
    // Only MLST puts a blank in front.
    const qsizetype blanks = BlanksAt(text);
    if (blanks == text.size()) {
      continue;
    }
    std::optional<FactsLine> line = ReadFactsLine(text.sliced(blanks));
    if (!line) {
      CountUnreadable(listing, text);
    } else if (!line->isFolderItself) {
      const bool isPath = lines.size() == 1 && line->name.startsWith('/');
      line->item.name = (isPath ? LastOf(line->name) : line->name).toByteArray();
      Add(listing, std::move(line->item), text);
    }
  }
  return listing;
}

std::optional<ListedItem> ParseItemFacts(QByteArrayView text) {
  for (const QByteArrayView line : LinesOf(text)) {
    if (std::optional<FactsLine> facts = ReadFactsLine(line.sliced(BlanksAt(line)))) {
      return std::move(facts->item);
    }
  }
  return std::nullopt;
}

std::optional<qint64> ParseTimeValue(QByteArrayView text) {
  constexpr QByteArrayView kCode("213 ");
  QByteArrayView value = WithoutOuterBlanks(text.startsWith(kCode) ? text.sliced(kCode.size()) : text);
  while (value.endsWith('\r') || value.endsWith('\n')) {
    value.chop(1);
  }
  DateStep step = DateStep::None;
  const Date date = ReadCompactTime(value, step);
  const bool isExact = step == DateStep::Second || step == DateStep::Millisecond;
  return isExact ? std::optional(date.msecs) : std::nullopt;
}

std::optional<int> ZoneOf(const ListedItem& listed, qint64 exact) {
  if (!listed.modified.IsPresent() || listed.step == DateStep::None || listed.step == DateStep::Day) {
    return std::nullopt;
  }
  constexpr qint64 kStep = 15 * kMsecsOfMinute;
  constexpr qint64 kLeast = -12 * 60 * kMsecsOfMinute;
  constexpr qint64 kMost = 14 * 60 * kMsecsOfMinute;
  // A listing cuts the seconds off or rounds them; file systems keep even seconds only.
  const qint64 doubt = listed.step == DateStep::Minute ? kMsecsOfMinute : 2 * kMsecsOfSecond;
  if (listed.modified.msecs < exact + kLeast - doubt || listed.modified.msecs > exact + kMost + doubt) {
    return std::nullopt;
  }
  const qint64 ahead = listed.modified.msecs - exact;
  const qint64 zone = (ahead - kLeast + kStep / 2) / kStep * kStep + kLeast;
  if (std::abs(ahead - zone) > doubt || zone < kLeast || zone > kMost) {
    return std::nullopt;
  }
  return static_cast<int>(zone / kMsecsOfMinute);
}

}  // namespace trevane::ftp
