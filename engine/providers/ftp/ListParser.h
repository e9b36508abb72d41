#pragma once

#include "base/Variant.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace trevane::ftp {

/// How exactly a server tells a date; two dates of one file may differ by as much and prove nothing.
enum class DateStep { None, Day, Minute, Second, Millisecond };

/// One line of a listing, in the bytes of the server.
struct ListedItem {
  enum class Kind { File, Folder, Link, Device };

  QByteArray name;
  Kind kind = Kind::File;
  /// Bytes; -1 where the listing does not tell.
  qint64 size = -1;
  /// The text of a link; empty where the listing does not tell.
  QByteArray target = {};
  Date modified = {};
  DateStep step = DateStep::None;
  /// The permission bits of Unix, 0777; nothing where the listing tells none.
  std::optional<quint32> mode = {};
  /// The server says that this user can neither write nor delete it.
  bool isReadOnly = false;
  QByteArray owner = {};
  QByteArray group = {};
  /// The fact "unique"; empty where there is none.
  QByteArray unique = {};

  friend bool operator==(const ListedItem&, const ListedItem&) = default;
};

struct ParsedListing {
  /// In the order of the server, without the folder itself and the one above it.
  std::vector<ListedItem> items = {};
  /// Lines that stand for an item and could not be read.
  int unreadable = 0;
  /// The first of them, for people.
  QByteArray firstUnreadable = {};
  /// Beginning with it, as many as may be looked through for a name.
  QByteArrayList unreadableLines = {};

  /// Nothing could be read, although there was something: this is no empty folder, but an error.
  [[nodiscard]] bool IsUnreadable() const noexcept { return items.empty() && unreadable > 0; }
};

/// The clock of a server, for dates that a listing tells in its local time, and without a year.
struct ServerClock {
  /// Now, in milliseconds since 1970 UTC.
  qint64 now = 0;
  /// What the local time of its listings is ahead of UTC, in minutes; nothing while it was not learnt: its
  /// dates are taken for those of this computer's own zone then.
  std::optional<int> zone = {};
};

/// Reads what LIST answers: lines in one of the forms of Unix servers, of DOS servers and of some others,
/// with dates in any of the languages that are known here. `bytes` may be anything.
///
/// A date without a year is the newest one that is not more than a day ahead of the clock. In "01-02-24" the
/// month is the first, unless a line of the listing shows another order; in "01.02.24" the day. A name with
/// "/", CR or NUL in it is unreadable. The columns of a server may be padded: blanks before or behind a name
/// are its own only where other lines of the listing have fewer. Totals, headings and labels of volumes are
/// neither items nor unreadable, nor is one of a few exact texts that servers send for an empty folder, where
/// it stands alone. All other lines are unreadable.
[[nodiscard]] ParsedListing ParseList(QByteArrayView bytes, const ServerClock& clock);

/// Reads what MLSD answers, or the one line of MLST, where a path may stand for the name.
[[nodiscard]] ParsedListing ParseFacts(QByteArrayView bytes);

/// Reads what MLST answers, all its lines, also of the folder itself. Its name is empty: some servers give a
/// name there, some a path, some one of a link's target. Nothing where no line has facts.
[[nodiscard]] std::optional<ListedItem> ParseItemFacts(QByteArrayView text);

/// The time of "213 20240131120000[.123]", the answer of MDTM, with or without its code, always UTC; nothing
/// for any other text.
[[nodiscard]] std::optional<qint64> ParseTimeValue(QByteArrayView text);

/// What the zone of a server must be when LIST tells `listed` in its local time (as if it were UTC) for what
/// MDTM tells as `exact`: minutes ahead of UTC, a multiple of 15; nothing where no zone fits.
[[nodiscard]] std::optional<int> ZoneOf(const ListedItem& listed, qint64 exact);

}  // namespace trevane::ftp
