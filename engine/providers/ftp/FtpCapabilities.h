#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <optional>

namespace trevane::ftp {

/// Whether a server was seen to do something.
enum class Seen { Unknown, Works, Refused };

/// What a server was seen to do. It is learnt anew when the controller is opened, not with each line.
struct Capabilities {
  Seen mlsd = Seen::Refused;
  Seen mlst = Seen::Refused;
  Seen size = Seen::Unknown;
  Seen mdtm = Seen::Unknown;
  Seen mfmt = Seen::Refused;
  /// MDTM with a date in front of the name sets it. Others look for a file of that name, and are asked once.
  Seen mdtmSets = Seen::Refused;
  Seen chmod = Seen::Unknown;
  Seen rest = Seen::Unknown;
  Seen rename = Seen::Unknown;
  /// An item was seen to have another name after a rename: some servers answer so, and do nothing.
  bool sawRename = false;
  /// Rename puts a file in the place of another one; Refused: it has refused.
  Seen renameReplaces = Seen::Unknown;
  /// It was seen to tell of such a refusal that the name is taken: another reason may pass, and a name need
  /// not be looked at only then.
  bool refusesTaken = false;
  Seen noop = Seen::Unknown;
  /// Several commands in one segment; old ones drop what follows the first.
  Seen together = Seen::Unknown;
  /// LIST answers with a path in the command as it does without.
  Seen listPath = Seen::Unknown;
  /// LIST with "-a" shows hidden names, too.
  Seen listAll = Seen::Unknown;
  /// STAT with a folder shows its items, in the lines of LIST; Refused: it does not, or did not show one, and
  /// is not asked again.
  Seen statusLists = Seen::Unknown;
  /// Names that differ only in case are different items; Refused: they are one.
  Seen caseSensitive = Seen::Unknown;
  /// Facts show links as links, or there are none; Refused: they show what links lead to.
  Seen factLinks = Seen::Unknown;
  /// Names are UTF-8 without being asked for. Unknown: FEAT offers it, but some such servers must be told.
  Seen utf8 = Seen::Refused;
  /// Listings tell permission bits.
  bool modes = false;
  /// The zone was asked for.
  bool askedZone = false;
  /// What the local time of listings is ahead of UTC, in minutes. Nothing: not known, or that of this
  /// computer's own zone, with its summers.
  std::optional<int> zone = {};
  /// Whether the zone changes with the season was asked, or cannot be.
  bool askedSeason = false;

  /// What the answer to FEAT promises. A server without one is tried.
  void Offered(const QByteArrayList& features);
};

/// Learns from a reply to a command: a server that does not know it is not asked again.
void Learn(Seen& what, bool isDone, bool isUnknownCommand) noexcept;

}  // namespace trevane::ftp
