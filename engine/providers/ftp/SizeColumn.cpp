#include "engine/providers/ftp/SizeColumn.h"

#include "engine/providers/ftp/ListWords.h"

#include <QByteArray>

#include <algorithm>

namespace trevane::ftp {
namespace {

constexpr qsizetype kGroup = 3;

bool IsOfDos(const ListLine& line) {
  return line.form == ListLine::Form::Dos && !line.isNoItem;
}

bool IsFile(const ListLine& line) {
  return IsOfDos(line) && line.item.kind == ListedItem::Kind::File;
}

/// Three digits, a blank and more behind it.
bool IsGroup(QByteArrayView text) {
  return text.size() > kGroup + 1 && IsNumber(text.first(kGroup)) && text[kGroup] == ' ';
}

/// Where the size ends when as many groups as can be belong to it; the end of its first word where no group
/// follows.
qsizetype LastEnd(const ListLine& line) {
  constexpr qint64 kFirstOfFour = 1000;
  qsizetype end = line.columnsEnd;
  const bool isFirstGroup =
      line.item.size > 0 && line.item.size < kFirstOfFour && line.columnsEnd - line.sizeBegin <= kGroup;
  while (isFirstGroup && end < line.line.size() && line.line[end] == ' ' &&
         IsGroup(line.line.sliced(end + 1))) {
    end += 1 + kGroup;
  }
  return end;
}

}  // namespace

void SizeColumn::Learn(const ListLine& line) {
  if (!IsOfDos(line)) {
    return;
  }
  const qsizetype end = line.columnsEnd;
  if (!IsFile(line)) {
    const QByteArrayView behind = line.line.sliced(end);
    const auto name = std::find_if_not(behind.begin(), behind.end(), IsBlank);
    const qsizetype before = end + (name - behind.begin()) - 1;
    folderEnd_ = std::min(folderEnd_.value_or(before), before);
    return;
  }
  if (LastEnd(line) > end) {
    return;
  }
  areEndsEqual_ = areEndsEqual_ && (!end_ || *end_ == end);
  end_ = end;
  hasLongWord_ = hasLongWord_ || line.item.size >= 1000;
}

std::optional<qsizetype> SizeColumn::EndFor(const ListLine& line) const {
  if (end_) {
    return areEndsEqual_ ? end_ : std::nullopt;
  }
  if (folderEnd_) {
    return folderEnd_;
  }
  // The two usual widths.
  const qsizetype last = LastEnd(line);
  for (const qsizetype width : {21, 18}) {
    const qsizetype end = line.dateEnd + width;
    if (end >= line.columnsEnd && end <= last) {
      return end;
    }
  }
  return std::nullopt;
}

bool SizeColumn::Settle(ListLine& line) const {
  if (!IsFile(line) || hasLongWord_) {
    return true;
  }
  const qsizetype last = LastEnd(line);
  if (last == line.columnsEnd) {
    return true;
  }
  const std::optional<qsizetype> end = EndFor(line);
  if (!end || *end < line.columnsEnd || *end > last || (*end - line.columnsEnd) % (kGroup + 1) != 0) {
    return false;
  }
  if (*end == line.columnsEnd) {
    return true;
  }
  QByteArray digits = line.line.sliced(line.sizeBegin, *end - line.sizeBegin).toByteArray();
  const std::optional<qint64> size = NumberIn(digits.replace(' ', ""));
  if (!size) {
    return false;
  }
  line.item.size = *size;
  line.columnsEnd = *end;
  return true;
}

}  // namespace trevane::ftp
