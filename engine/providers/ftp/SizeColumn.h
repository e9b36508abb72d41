#pragma once

#include "engine/providers/ftp/ListLine.h"

#include <QtGlobal>

#include <optional>

namespace trevane::ftp {

/// Where the sizes of DOS lines end, as far as all lines tell. In "12 345 a.txt" the thousands may be
/// separated by a blank, or the name begins with "345": the column decides.
class SizeColumn {
 public:
  void Learn(const ListLine& line);
  /// Takes a size with blanks in it for what it is. False where nothing tells which of two sizes it is.
  [[nodiscard]] bool Settle(ListLine& line) const;

 private:
  [[nodiscard]] std::optional<qsizetype> EndFor(const ListLine& line) const;

  /// Where the sizes end that can be read in one way only.
  std::optional<qsizetype> end_;
  /// In front of the names of folders.
  std::optional<qsizetype> folderEnd_;
  bool areEndsEqual_ = true;
  /// There is one of more than three digits, and no blank in it.
  bool hasLongWord_ = false;
};

}  // namespace trevane::ftp
