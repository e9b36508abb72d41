#pragma once

#include "base/RunTimeError.h"
#include "base/Variant.h"
#include "engine/model/Content.h"
#include "engine/model/FileEntry.h"
#include "engine/model/FileTraits.h"
#include "engine/model/ItemObserver.h"
#include "engine/model/Leftover.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// Optional capabilities; callers have a fallback.
struct FileSystemCapabilities {
  /// The top holds drives ("C:") instead of being a folder itself; nothing can be created or removed there.
  bool topHoldsDrives = false;
  /// The shares of other machines can be opened, too: a path may begin with "\\server\share" instead of a
  /// drive. They appear in no listing.
  bool shares = false;
  /// Names that differ only in case are different items.
  bool caseSensitive = false;
  bool identity = false;
  /// An identity is made of the path alone: asking for it costs nothing. Within one connection it tells
  /// places apart, but not an item from another one that has taken its place. Between two connections it is
  /// only a hint: one place can have two identities, and two places one.
  bool identityOfPath = false;
  /// File systems with the same text give one item the same identity, whatever addresses and providers lead
  /// to it. Empty where identities are those of the provider alone.
  QString identitySpace = {};
  bool execute = false;
  /// Folders can be made. Without, everything stands at the top.
  bool folders = true;
  /// Items have permissions or marks that only Traits tells. Without, it is not asked for each file of a
  /// copy.
  bool traits = true;
  /// New content can be built beside the old one, under another name. Without, a file is written under its
  /// own name, and ContentSink::TemporaryName tells nothing.
  bool temporaryNames = true;
  /// Without temporaryNames: files can be made under fresh names all the same, but get no other name then.
  bool freshNames = false;
  /// ReadMany and WriteMany have many files under way at once: a batch takes hardly longer than one file.
  bool overlaps = false;
  /// Dates that differ by less than this, in milliseconds, prove nothing; 0 where they are exact.
  qint64 dateStep = 0;
  /// What the user must know of this connection all the time, in one sentence, for instance that it is less
  /// safe than usual. Mostly empty.
  QString notice = {};
};

class HeldFolder;

/// Access to one file system, by paths and bytes only.
///
/// A path consists of names separated by "\", with nothing in front (except for a share: see
/// FileSystemCapabilities); the empty path is the top. A name is never empty, "." or "..", and holds no "/",
/// "\" or NUL: such names are refused with error::kInvalidName. A listing holds none but those that a server
/// sends all the same, so that they can be counted: who uses listings checks them with IsValidItemName before
/// a path is made of them. "." and ".." of a folder itself are left out. Every failure is a RunTimeError
/// whose text names the path. An item that could not be looked up is never reported as error::kNotFound.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  [[nodiscard]] virtual FileSystemCapabilities Capabilities() const = 0;

  /// The children of a folder with all that is known of them, in the order of the file system. A child that
  /// vanished while the folder was read is left out. Fails with error::kNotFound when the folder is missing,
  /// with kWin32Error + 267 (directory name invalid) when it is no folder.
  [[nodiscard]] virtual Listing List(const QString& folder) = 0;

  /// As List, in batches as they are read, the first one soon. The receiver calls nothing of this file
  /// system. The default gives what List does in one batch.
  virtual void ListInBatches(const QString& folder, const ListingReceiver& receive);

  /// The entry of one item, as List gives it. Fails with error::kNotFound when it is missing.
  /// The default asks Find.
  [[nodiscard]] virtual FileEntry Stat(const QString& path);

  /// As Stat, but nothing for an item that is missing, so that looking for an item that is often missing
  /// raises no error.
  [[nodiscard]] virtual std::optional<FileEntry> Find(const QString& path) = 0;

  /// The content of a file from `offset` on, in bytes; none where that is behind the end. Folders and devices
  /// are refused without being opened.
  [[nodiscard]] virtual std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) = 0;

  /// New content for a file. It replaces the old in one step, where the file system can; of a new file nobody
  /// else can read more before it is complete than its permissions allow. Before Flush a power failure may
  /// remove a new file.
  [[nodiscard]] virtual std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                              const SinkRequest& request) = 0;

  /// Contents of whole files, at most content::kMostFiles of at most content::kMostBytes together; a result
  /// for each. A file system may overlap them. Files that have grown beyond these limits by now are not read
  /// to their ends: see ReadResult::isTooLarge. The default reads them one after the other and begins none
  /// after a failure.
  [[nodiscard]] virtual std::vector<ReadResult> ReadMany(const QStringList& paths);

  /// Writes whole files, with the same limits, each as a sink of its own would; a result for each. One
  /// listing may serve all of them when they are asked for after they have their names. The default writes
  /// them one after the other and begins none after a failure.
  [[nodiscard]] virtual std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files);

  /// The text of a symbolic link, as it stands there; nothing where the item is none or the file system has
  /// none, which is the default.
  [[nodiscard]] virtual std::optional<QString> ReadLink(const QString& path);

  /// Makes a symbolic link with that text. Fails with error::kExists when anything has that name, with
  /// error::kNotSupported where the file system has none, which is the default.
  virtual void CreateLink(const QString& path, const QString& target);

  /// The connection that leads to `path` was lost by an earlier call, so that the next one would have to make
  /// a new one. Nothing is asked. The default has no connections.
  [[nodiscard]] virtual bool HasLostLine(const QString& path) const;

  /// What was learnt by List and Find must be asked anew from here on. The default keeps nothing.
  virtual void ForgetLearnt();

  /// The traits that a copy of a file or folder keeps; a link is followed. The default has none.
  [[nodiscard]] virtual FileTraits Traits(const QString& path);

  /// Sets traits of an existing file or folder, as far as this file system supports them. A link is refused.
  /// The default does nothing.
  virtual void SetTraits(const QString& path, const FileTraits& traits);

  /// Returns when `path`, and all below it that was written through this file system, would outlast a power
  /// failure. The default does nothing.
  virtual void Flush(const QString& path);

  /// Creates an empty file. Fails with error::kExists when anything has that name. The default opens a sink.
  virtual void CreateFile(const QString& path);

  /// Creates a folder whose parent exists. Fails with error::kExists when anything has that name.
  virtual void CreateFolder(const QString& path) = 0;

  /// As CreateFolder, but until SetTraits nobody else can list it, where the file system has users. The
  /// default calls CreateFolder.
  virtual void CreateClosedFolder(const QString& path);

  /// Holds a folder for a copy or a removal that works in it and below; links that lead there are followed.
  /// The default checks the path before each change.
  [[nodiscard]] virtual std::shared_ptr<HeldFolder> Hold(const QString& folder);

  /// Copies a file, a folder with everything below it, or a link as a link. Without `overwrite` an existing
  /// destination is error::kExists and is left alone. With it a file replaces a file in one step and a folder
  /// is merged into a folder; a clash of kinds is refused. Copying an item onto itself or a folder below
  /// itself fails before anything is written. The observer sees each item within a folder; a file system that
  /// copies elsewhere may not call it. The default reads and writes each file.
  virtual void Copy(const QString& from, const QString& to, bool overwrite,
                    const ItemObserver& observer = {});

  /// Gives an item another name or another folder in one step; `overwrite` means the same as for Copy, but a
  /// folder never replaces or merges with one that is not empty. A change of letter case only is no clash.
  /// Fails with providererror::kNotSameDevice where a new place can only be reached by copying: see MoveItem.
  virtual void Rename(const QString& from, const QString& to, bool overwrite) = 0;

  /// Deletes a file, a folder with everything below it, or a link (never what it points to). A top or a drive
  /// is refused with error::kAccessDenied. The observer is called as by Copy. The default
  /// removes one item after the other.
  virtual void Remove(const QString& path, const ItemObserver& observer = {});

  /// Deletes a file, a link or an empty folder; a folder that holds anything is error::kDirectoryNotEmpty.
  virtual void RemoveAlone(const QString& path) = 0;

  /// The leftovers of killed programs, under temporary names, in folders that were written to since the last
  /// call. Each is reported once. The default searches for none.
  [[nodiscard]] virtual std::vector<Leftover> TakeLeftovers();

  /// Performs a command on an item; the empty command opens the file with its program. The default refuses
  /// with error::kNotSupported.
  virtual Variant Execute(const QString& path, const QString& command, const Variant& parameter);

  /// The identity of an item, nothing when the file system has none. Of a link its own, not that of its
  /// target.
  [[nodiscard]] virtual std::optional<FileIdentity> Identity(const QString& path);

  /// The identities of a folder, links followed, and of each folder above it, innermost first; empty when the
  /// file system has none. The default follows the path.
  [[nodiscard]] virtual std::vector<FileIdentity> FolderIdentities(const QString& folder);

  /// The path for the root of a controller as a person typed it. The default returns the text unchanged.
  [[nodiscard]] virtual QString PathFromText(const QString& text);

  /// What else is known of an item, for people, a line each ("Owner: joe"); of the empty path what is known
  /// of the connection. The default knows nothing.
  [[nodiscard]] virtual QStringList Details(const QString& path);

  /// Called between calls by the thread that the calls run on, when for `milliseconds` there was none:
  /// a connection can be kept alive, or closed until the next call. Returns after how many milliseconds
  /// without a call it is to be called again, 0 for never in this pause; it asks the user nothing and throws
  /// nothing. The first call of a pause comes with 0 soon after its beginning. The default returns 0.
  [[nodiscard]] virtual qint64 Idle(qint64 milliseconds) noexcept;

  /// A description of the type of an item, for instance "Folder" or "PDF document".
  [[nodiscard]] virtual QString TypeName(const FileEntry& entry);
  [[nodiscard]] static QString DefaultTypeName(const FileEntry& entry);
};

}  // namespace trevane
