#pragma once

#include "engine/files/NameLadder.h"
#include "engine/model/FileEntry.h"
#include "engine/model/Leftover.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "engine/providers/ftp/FtpCapabilities.h"
#include "engine/providers/ftp/FtpConnector.h"
#include "engine/providers/ftp/FtpNameRules.h"
#include "engine/providers/ftp/FtpOwnFolders.h"
#include "engine/providers/ftp/FtpSettings.h"
#include "engine/providers/ftp/ListParser.h"
#include "engine/providers/network/ServerNames.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {
class CallControl;
}

namespace trevane::ftp {

/// An item by its path.
struct Place {
  /// For texts; empty for the top.
  QString text;
  /// As the server has it, and of its folder.
  QByteArray path;
  QByteArray folder;
  /// The last name; empty for the top.
  QString name;
  /// The last name as the server has it.
  QByteArray ownName;

  [[nodiscard]] bool IsTop() const noexcept { return name.isEmpty(); }
};

/// A transfer that keeps the line busy. Another call makes it leave the line first.
class Transfer {
 public:
  Transfer() = default;
  virtual ~Transfer() = default;
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  /// Another call needs the line: ends the transfer, so that it can go on without the line. Its own failure
  /// is kept for its next call.
  virtual void MakeWay() noexcept = 0;
  /// The line is gone.
  virtual void Lose() noexcept = 0;
};

/// The server of one file system: its line, which is made anew after an idle one was closed or a cancelled
/// call has broken it, and what is known of the server. One thread's alone.
class Server {
 public:
  /// What others could not remove is removed here, as far as it can be.
  Server(std::unique_ptr<FtpConnector> connector, const FtpSettings& settings,
         std::shared_ptr<CallControl> control, std::shared_ptr<AbandonedItems> abandoned);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// The line, free for a call: a transfer that is under way leaves it.
  [[nodiscard]] FtpDialogue& Line();
  void Occupy(Transfer& transfer) noexcept { transfer_ = &transfer; }
  /// Of a transfer that has left the line or ended.
  void Vacate(const Transfer& transfer) noexcept;

  [[nodiscard]] const ServerNames& Names() const noexcept { return names_; }
  [[nodiscard]] FtpConnector& Connector() noexcept { return *connector_; }
  [[nodiscard]] Capabilities& Can() noexcept { return can_; }
  /// Listings show names that begin with a dot.
  [[nodiscard]] bool ShowsHidden() const noexcept {
    return can_.mlsd == Seen::Works || can_.listAll == Seen::Works;
  }
  /// The server takes several commands in one segment; asked where that is not known. What that does to the
  /// line is no failure: the next call has another one.
  [[nodiscard]] bool TakesTogether();
  [[nodiscard]] NameRules& Rules() noexcept { return rules_; }
  /// Fails for a name that the device is known to refuse, before anything is sent.
  void RequireFits(const Place& place) const;
  /// Fails with error::kInvalidName, before anything is sent, for a path of the server with control
  /// characters: such a file cannot be read or written. `text` names it.
  static void RequireTransferable(const QByteArray& path, const QString& text);
  /// What was learnt of the names that servers take, for all of them.
  [[nodiscard]] static LearntNaming& Naming();
  /// The key of this one there.
  [[nodiscard]] QString Key() const;

  /// Fails with error::kInvalidName.
  [[nodiscard]] Place At(const QString& path);
  [[nodiscard]] Place Above(const Place& place);
  /// The path of an item of a folder.
  [[nodiscard]] QByteArray PathIn(const QByteArray& folder, const QByteArray& name) const;
  /// The path below the top for one of the server ("/home/joe"); nothing for one that is not below it.
  [[nodiscard]] std::optional<QString> TextOf(const QByteArray& path) const;

  /// The items of a folder, asked now. Fails as FileSystem::List.
  [[nodiscard]] ParsedListing ReadFolder(const Place& folder);
  /// The same, as it was at most a minute ago: for what is checked in another way, too.
  [[nodiscard]] ParsedListing ReadRecently(const Place& folder);
  /// The item as it is now, a link as a link; nothing when it is surely missing.
  [[nodiscard]] std::optional<ListedItem> Look(const Place& place);
  /// The same for who follows a path name by name: a folder or a link is found by one command without a
  /// listing, where the server allows that.
  [[nodiscard]] std::optional<ListedItem> LookOnTheWay(const Place& place);
  /// The size of a file in bytes, as SIZE tells it; nothing where the server does not.
  [[nodiscard]] std::optional<qint64> SizeOf(const Place& place);
  /// As the last listing told it, where that was of its folder; -1 else. Nothing is asked.
  [[nodiscard]] qint64 ListedSize(const Place& place) const;
  /// Whether a path leads to a folder, links followed.
  [[nodiscard]] bool IsFolder(const Place& place);
  /// The entry of a listed item; where a link leads is told as far as it was learnt.
  [[nodiscard]] FileEntry EntryOf(const ListedItem& item, const QString& name,
                                  const QByteArray& folder) const;
  /// As EntryOf; where a link leads is asked.
  [[nodiscard]] FileEntry EntryAt(const Place& place, const ListedItem& item);

  /// Fails for a refusal where text and code tell too little: what stands there decides.
  [[noreturn]] void FailLooking(const Reply& reply, const Place& place);

  /// Until EndLinkWatch folders that are links are told from others, also where the server's own facts show
  /// what links lead to: the lines of a folder that holds others are read beside its facts. `removes`: links
  /// that lead nowhere, and that facts leave out, are shown, too.
  void BeginLinkWatch(bool removes) noexcept;
  void EndLinkWatch(bool removes) noexcept;
  /// A folder that was just made, and no link therefore.
  void NoteMade(const Place& folder) { ownFolders_.AddMade(folder.path); }
  void NoteRemoved(const Place& place) { ownFolders_.Remove(place.path); }
  void NoteRenamed(const Place& from, const Place& to) { ownFolders_.Move(from.path, to.path); }
  /// During this watch the item was seen to be a folder and no link.
  [[nodiscard]] bool WasSeenAsFolder(const Place& place) const { return ownFolders_.Knows(place.path); }
  /// Whether a folder that looks empty holds links that lead nowhere.
  [[nodiscard]] bool HoldsHiddenLinks(const Place& folder);

  void BeginPutBack() noexcept;
  void EndPutBack() noexcept;

  /// Takes away what a cancelled call had to leave, as soon as there is a line.
  void LeaveBehind(const QString& path) { abandoned_->Add(path); }
  [[nodiscard]] std::vector<Leftover> TakeLeftovers();

  void ForgetLearnt();
  /// As FileSystem::Idle.
  [[nodiscard]] qint64 Idle(qint64 milliseconds) noexcept;

 private:
  struct LinkTarget {
    bool isFolder = false;
    bool leadsNowhere = false;
  };

  void Connect();
  /// There is one, and it is not broken.
  [[nodiscard]] bool HasLine() const noexcept { return line_ && !line_->IsBroken(); }
  void FindTop(const QString& drive);
  void RemoveAbandoned() noexcept;

  /// Where FEAT offers UTF-8 and a name needs it, once a connection.
  void TellUtf8();
  /// Whether names of the listing show that the server must be told. Learns where they show that it need not.
  [[nodiscard]] bool LacksUtf8(const ParsedListing& listing);

  [[nodiscard]] ParsedListing ReadListing(FtpDialogue& line, const Place& folder);
  [[nodiscard]] ParsedListing ReadFacts(FtpDialogue& line, const Place& folder);
  /// Shows links among the folders of a listing as links, where they matter.
  void MarkLinks(FtpDialogue& line, const Place& folder, ParsedListing& listing);
  void MarkByLines(const Place& folder, const ParsedListing& lines, ParsedListing& listing);
  /// Whether the lines of the folder have to be read, too.
  [[nodiscard]] bool MayHideLinks(const Place& folder, const ParsedListing& listing);
  /// What the facts of one item call a folder is no link, or it does not matter.
  [[nodiscard]] bool IsOwnFolder(const Place& place, const ListedItem& item);
  [[nodiscard]] bool ShowsHiddenLines() const noexcept { return can_.listAll == Seen::Works; }
  [[nodiscard]] ParsedListing ReadLines(FtpDialogue& line, const Place& folder);
  [[nodiscard]] QByteArray ReadLinesOnce(FtpDialogue& line, const Place& folder, bool isInside,
                                         bool withHidden);
  [[nodiscard]] ParsedListing ParseLines(const QByteArray& bytes) const;
  /// Tries "-a"; `bytes` are those of the listing without, and with hidden names where it gives them.
  void LearnHidden(FtpDialogue& line, const Place& folder, bool isInside, QByteArray& bytes);
  void LearnZone(FtpDialogue& line, const Place& folder, const QByteArray& bytes);
  /// Looks at a file of the other season, where this computer's own zone could be the server's. True where
  /// it is: its dates have been read with one offset for all seasons.
  [[nodiscard]] bool LearnSeason(FtpDialogue& line, const Place& folder, const ParsedListing& listing);
  /// The date that MDTM tells; nothing where it does not.
  [[nodiscard]] std::optional<qint64> DateOf(FtpDialogue& line, const QByteArray& path);
  void Note(const ParsedListing& listing);
  [[nodiscard]] ServerClock Clock() const;
  /// Goes there, so that it surely is a folder.
  void Enter(FtpDialogue& line, const Place& folder);
  /// Fails with what is known after a refused listing.
  [[noreturn]] void FailListing(FtpDialogue& line, const Reply& reply, const Place& folder);
  [[noreturn]] void FailFolder(const Reply& reply, const Place& folder);
  [[nodiscard]] std::optional<ListedItem> LookInListing(const Place& place);
  /// Whether STAT of the folder may spare a listing.
  [[nodiscard]] bool MayAskStatus(const Place& place) const;
  /// The item as the answer to STAT of its folder shows it; nothing where that does not show it for sure.
  [[nodiscard]] std::optional<ListedItem> ItemOfStatus(const Reply& reply, const Place& place);
  /// Whether a listed name that differs in case is the one that is asked for.
  [[nodiscard]] bool IsOneItem(const Place& place, const QByteArray& listed);
  /// What the server tells of an item that no listing shows.
  [[nodiscard]] std::optional<ListedItem> LookUnlisted(const Place& place, const ParsedListing& listing);
  /// Whether a file is there and is no secret, where nothing else tells.
  [[nodiscard]] bool CanBeRead(const Place& place);
  [[nodiscard]] bool Answers(const QByteArray& path);

  std::unique_ptr<FtpConnector> connector_;
  QString host_;
  ServerNames names_;
  std::shared_ptr<CallControl> control_;
  std::unique_ptr<FtpDialogue> line_;
  Transfer* transfer_ = nullptr;
  QString serverKey_;
  Capabilities can_;
  NameRules rules_;
  /// The folder of the server that is the top.
  QByteArray top_;
  char separator_ = '/';
  const bool isUtf8_;
  /// A name is more than ASCII.
  bool needsUtf8_ = false;
  /// Over this line.
  bool toldUtf8_ = false;
  int putBacks_ = 0;
  int linkWatches_ = 0;
  /// Of them those that remove.
  int removals_ = 0;
  OwnFolders ownFolders_;
  /// Where links were seen to lead, by path.
  QHash<QByteArray, LinkTarget> links_;
  /// The last listing, by the path of its folder, and when it was read.
  QByteArray recentFolder_;
  ParsedListing recent_;
  QElapsedTimer recentAt_;
  /// Temporary items that are to be removed as soon as it can be.
  const std::shared_ptr<AbandonedItems> abandoned_;
  std::vector<Leftover> leftovers_;
};

/// While one of these lives links are told from folders: what is copied or removed is never what a link leads
/// to.
class LinkWatch {
 public:
  explicit LinkWatch(Server& server, bool removes = false) noexcept : server_(server), removes_(removes) {
    server_.BeginLinkWatch(removes_);
  }
  ~LinkWatch() { server_.EndLinkWatch(removes_); }
  LinkWatch(const LinkWatch&) = delete;
  LinkWatch& operator=(const LinkWatch&) = delete;

 private:
  Server& server_;
  const bool removes_;
};

}  // namespace trevane::ftp
