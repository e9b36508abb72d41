#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "engine/providers/ftp/FtpConnector.h"
#include "engine/providers/ftp/FtpReply.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QStringList>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace trevane::test {

struct FakeFtpItem {
  enum class Kind { File, Folder, Link };
  Kind kind = Kind::File;
  QByteArray content = {};
  /// Milliseconds since 1970 UTC.
  qint64 modified = 1700000000000;
  quint32 mode = 0644;
  QByteArray target = {};
  /// Told in place of the size of the content.
  std::optional<qint64> shownSize = {};
  /// Makes the content each time it is read.
  std::function<QByteArray()> make = {};
  /// The fact "unique"; it stays with the item when it is renamed.
  int id = NextId();

  [[nodiscard]] static int NextId();
};

/// How the server in memory differs from a good one.
struct FakeFtpVices {
  /// Commands that it does not know.
  QByteArrayList missing = {};
  QByteArrayList features = {"MLST type*;size*;modify*;UNIX.mode*;", "SIZE", "MDTM", "MFMT", "REST STREAM"};
  /// Facts show what links lead to, and leave out those that lead nowhere: all of them, or those of MLST
  /// alone.
  enum class Follows { Nothing, Everywhere, InOneItem };
  Follows factsFollow = Follows::Nothing;
  bool tellsUnique = false;
  bool tellsModes = true;
  /// Lines leave out links that lead to the folder itself or above it.
  bool linesLeaveOutDots = false;
  QByteArray start = "/";
  bool renameReplaces = true;
  /// After so many renames they are told as done, and nothing is; -1: never.
  int trueRenames = -1;
  /// The same of each rename onto what exists.
  bool replacesInWordsOnly = false;
  bool caseInsensitive = false;
  /// LIST and MLSD of a missing folder answer nothing, and 226.
  bool listsMissingAsEmpty = false;
  /// An empty folder is 550 in a listing.
  bool refusesEmptyFolders = false;
  bool listInDosForm = false;
  /// LIST with a path answers nothing.
  bool listsNothingByPath = false;
  /// "-a" is taken for a name.
  bool takesOptionForName = false;
  /// What the dates of LIST are ahead of UTC, in minutes.
  int zone = 0;
  /// They are those of this computer's own zone, in summer and winter.
  bool zoneIsOwn = false;
  /// Lines behind each listing.
  QByteArrayList garbage = {};
  /// Names longer than that are refused; 0: no limit.
  int longestName = 0;
  bool refusesDotNames = false;
  bool refusesNewNames = false;
  bool refusesToOverwrite = false;
  /// Of each upload so many bytes are left out at its end, and 226 is told.
  int loses = 0;
  /// Bytes that still fit; -1: no limit.
  qint64 room = -1;
  /// Each download ends so many bytes early, with 226.
  int sendsLess = 0;
  /// Several commands in one segment.
  bool takesTogether = false;
  /// After RNFR it takes nothing but RNTO.
  bool insistsOnRename = false;
  /// What it says of a missing item in answer to MLST; empty: that there is none.
  QByteArray missingFacts = {};
  /// What becomes of the answer to STAT with a path, which shows what LIST shows; empty: it is not known.
  std::function<ftp::Reply(const ftp::Reply& reply)> status = {};
};

/// One thing that happens at one call.
struct FakeFtpFault {
  enum class Kind {
    /// The line is lost before the call does anything.
    LoseBefore,
    /// The call is carried out, and the line is lost.
    LoseAfter,
    /// The running call is cancelled before this one does anything.
    Cancel,
    /// The call is refused.
    Refuse,
    /// The call is carried out and answered, and the line ends behind the answer.
    EndAfter
  };
  Kind kind = Kind::LoseBefore;
  QByteArray reply = "451 Failed";
};

/// A server in memory, for dialogues without a network.
class FakeFtpServer {
 public:
  FakeFtpServer();

  FakeFtpVices vices;
  std::map<QByteArray, FakeFtpItem> items;
  /// All commands, and "RETR /a" and the like.
  QByteArrayList log;
  /// Those that came together.
  QList<QByteArrayList> segments;
  /// Calls so far, and the one at which `fault` happens; -1 for none.
  int calls = 0;
  int faultAt = -1;
  FakeFtpFault fault;
  /// Another program, at work before a command is carried out.
  std::function<void(const QByteArray& command)> before = {};
  /// Between putting back no cancel is heard.
  int putBacks = 0;
  bool asksUser = false;
  /// The line ends behind the answer of the running call, or of the next one.
  bool endsLine = false;
  /// Connections so far.
  int connected = 0;
  /// Connecting fails.
  bool isGone = false;

  void AddFile(const QByteArray& path, const QByteArray& content);
  void AddFolder(const QByteArray& path);
  void AddLink(const QByteArray& path, const QByteArray& target);
  /// "/a/b=content" and "/a/", sorted, temporary ones as "/a/<temporary>=content".
  [[nodiscard]] QStringList Tree() const;
  [[nodiscard]] QByteArray ContentOf(const QByteArray& path) const;
  /// How often a command was sent.
  [[nodiscard]] int Count(const QByteArray& command) const;

  /// The stored path, links in front followed; nothing when it is missing.
  [[nodiscard]] std::optional<QByteArray> Resolve(const QByteArray& path, bool followLast) const;
  [[nodiscard]] bool RefusesName(const QByteArray& path) const;

  /// `abandoned` as OpenFtpFileSystem takes it.
  [[nodiscard]] std::shared_ptr<FileSystem> Open(
      const FtpSettings& settings = {.host = QStringLiteral("fake")},
      const std::shared_ptr<ftp::AbandonedItems>& abandoned = nullptr);
};

/// For the names of tests.
[[nodiscard]] std::string NameOf(FakeFtpFault::Kind kind);

}  // namespace trevane::test
