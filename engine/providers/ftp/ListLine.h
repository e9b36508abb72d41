#pragma once

#include "engine/providers/ftp/ListParser.h"
#include "engine/providers/ftp/ListedDate.h"

#include <QByteArrayView>
#include <QtGlobal>

#include <optional>

namespace trevane::ftp {

/// One line of a listing. Where a name begins behind the columns is told by all lines of a form together.
struct ListLine {
  enum class Form {
    /// The name is known already.
    Named,
    /// Columns, blanks, and a name up to the end.
    Unix,
    Dos,
    /// Size, date, time, name, and "<DIR>" behind folders.
    SizeFirst,
  };

  ListedItem item = {};
  Form form = Form::Named;
  QByteArrayView line = {};
  /// Where the date ends and the size begins, in the form of DOS.
  qsizetype dateEnd = 0;
  qsizetype sizeBegin = 0;
  /// Where the last column ends.
  qsizetype columnsEnd = 0;
  /// It has all columns of an item, but stands for none: the label of a volume.
  bool isNoItem = false;
};

/// What lines are read with.
struct ListReading {
  ServerClock clock = {};
  NumberOrder order = NumberOrder::MonthFirst;
};

/// Each reads one form; nothing for a line of another.
[[nodiscard]] std::optional<ListLine> ReadUnixLine(const ListWords& words, const ListReading& reading);
[[nodiscard]] std::optional<ListLine> ReadDosLine(const ListWords& words, const ListReading& reading);
[[nodiscard]] std::optional<ListLine> ReadOtherLine(const ListWords& words, const ListReading& reading);

}  // namespace trevane::ftp
