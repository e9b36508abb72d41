#pragma once

#include "base/Variant.h"
#include "engine/model/Content.h"
#include "engine/model/FileEntry.h"
#include "engine/model/FileTraits.h"
#include "engine/model/ItemObserver.h"
#include "engine/model/Leftover.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

class IxoFiles;

/// One file or one folder.
class IxoFile : public std::enable_shared_from_this<IxoFile> {
 public:
  virtual ~IxoFile() = default;

  /// The whole content of a file, as a byte array.
  [[nodiscard]] virtual Variant Value() = 0;
  /// Replaces the whole content of a file: the old content is intact when this fails.
  virtual void PutValue(const Variant& value) = 0;

  /// As PutValue for a file that was just created. The file gets `traits` as far as its file system has such;
  /// with permissions among them nobody else can open it before it is complete. The default ignores traits.
  virtual void PutNewValue(const Variant& value, const FileTraits& traits) {
    Q_UNUSED(traits);
    PutValue(value);
  }

  /// The content of a file from `offset` on, in bytes. The default takes it from Value.
  [[nodiscard]] virtual std::unique_ptr<ContentSource> OpenSource(qint64 offset = 0);

  /// New content for this file, or for one that CreateNewFile gave and that is not there yet; which of the
  /// two it is, is known here: `request.mode` is not looked at. It keeps alive what it needs of the file, as
  /// a source does. The default collects it for PutValue or PutNewValue.
  [[nodiscard]] virtual std::unique_ptr<ContentSink> OpenSink(const SinkRequest& request);

  /// Contents of children, and new or replaced children, in batches as FileSystem has them. Nothing is left
  /// of a new child that failed. The defaults open one child after the other and begin none after a failure.
  [[nodiscard]] virtual std::vector<ReadResult> ReadMany(const QStringList& names);
  [[nodiscard]] virtual std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files);

  /// The text of a symbolic link; nothing where it is none or cannot be read.
  [[nodiscard]] virtual std::optional<QString> LinkText() { return std::nullopt; }
  /// Makes a link among the children. The default fails with error::kNotSupported.
  virtual void CreateLink(const QString& name, const QString& text);

  /// What is known of this controller's files must be asked anew from here on.
  virtual void ForgetLearnt() {}

  /// The traits that a copy of this item keeps, a link followed; empty where the file system has none.
  [[nodiscard]] virtual FileTraits Traits() { return {}; }

  /// Those of a child that was listed; with its date, which the entry holds. Where the file system has no
  /// more than its listings tell, nothing is asked. The default opens the child.
  [[nodiscard]] virtual FileTraits TraitsOf(const FileEntry& child);

  /// Dates that differ by less than this, in milliseconds, prove nothing; 0 where they are exact.
  [[nodiscard]] virtual qint64 DateStep() { return 0; }

  /// New content can stand beside the old under a name of its own. The default takes it for granted.
  [[nodiscard]] virtual bool HasTemporaryNames() { return true; }
  /// A file can stand here under a fresh name, even where it gets no other one later.
  [[nodiscard]] virtual bool TakesFreshNames() { return HasTemporaryNames(); }

  /// The line to this item's controller was lost by an earlier call: a further one would have to make a new
  /// line. The default knows of no lines.
  [[nodiscard]] virtual bool HasLostLine() noexcept { return false; }

  /// SetTraits can change something here. The default takes it for granted.
  [[nodiscard]] virtual bool KeepsTraits() { return true; }

  /// Folders can be made here. The default takes it for granted.
  [[nodiscard]] virtual bool CanHoldFolders() { return true; }

  /// Gives traits to an existing file or folder, as far as its file system has such.
  virtual void SetTraits(const FileTraits& traits) { Q_UNUSED(traits); }

  /// Removes a file that this object created, with or without content. An item that another program has put
  /// in its place meanwhile is left alone, where the two can be told apart. The default deletes.
  virtual void TakeBack() { Delete(QString()); }

  /// File attribute bits: 1 read-only, 2 hidden, 4 system, 16 folder, 32 archive, 0x400 link. The encoding is
  /// that of the "File Attribute Constants" of the Windows API.
  [[nodiscard]] virtual qint32 Attribute() = 0;

  /// Dates, or Missing where the file system does not know one.
  [[nodiscard]] virtual Variant DateCreated() = 0;
  [[nodiscard]] virtual Variant DateLastAccessed() = 0;
  [[nodiscard]] virtual Variant DateLastModified() = 0;

  /// The names of the folder's children, as an array of texts. `option` is always empty.
  [[nodiscard]] virtual Variant FileNames(const QString& option) = 0;

  /// The folder's children with all that is known of them, listed anew. A child that vanished meanwhile is
  /// left out; any other failure is raised. The default asks FileNames, and then one object of Files for each
  /// name.
  [[nodiscard]] virtual Listing List();

  /// As List, in batches as they come. The receiver calls nothing of the engine. The default gives one batch.
  virtual void ListInBatches(const ListingReceiver& receive);

  /// The folder's children as objects.
  [[nodiscard]] virtual std::shared_ptr<IxoFiles> Files() = 0;

  /// Identifies the object within its parent's IxoFiles, as IxoFiles::Remove takes it.
  [[nodiscard]] virtual qint32 Index() = 0;

  /// The own name, without any folder.
  [[nodiscard]] virtual QString Name() = 0;

  /// The folder that holds the file, ending with the separator: Path followed by Name is the full path.
  [[nodiscard]] virtual QString Path() = 0;

  /// Size in bytes, saturated at 2147483647.
  [[nodiscard]] virtual qint32 Size() = 0;
  /// Size in bytes, whole; -1 when the file system does not know.
  [[nodiscard]] virtual qint64 Size64() = 0;

  /// A text that two objects share when they are one item, also when they are reached through different
  /// controllers of one IdentityScope; nothing when the file system cannot tell. A link is itself.
  [[nodiscard]] virtual std::optional<QString> Identity() { return std::nullopt; }

  /// The identities of the folder that this leads to, a link followed, and of each folder that holds it, from
  /// the inside out; empty when the file system cannot tell.
  [[nodiscard]] virtual QStringList FolderIdentities() { return {}; }

  /// What the identities of this item may be compared with: where two items have the same text, which is not
  /// empty, equal identities are one item and different ones are two. Between others an equal identity is a
  /// hint, and a different one tells nothing. Costs no call.
  [[nodiscard]] virtual QString IdentityScope() { return {}; }

  /// A description of the file's type.
  [[nodiscard]] virtual QString Type() = 0;

  /// What else is known of the item, for people, a line each. May cost a round trip.
  [[nodiscard]] virtual QStringList Details() { return {}; }

  /// Opens the child `name`, or creates it with "@Create=1" (file) or "@Create=2" (folder). The option is a
  /// comma-separated list; "Path=" names the folder that holds the child. May yield nothing.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) = 0;

  /// As OpenFile with "@Create=1" for a file that is known not to be there. Nothing is looked for: putting
  /// its content fails with error::kExists when anything has that name by then. The default looks.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> CreateNewFile(const QString& name) {
    return OpenFile(name, QStringLiteral("@Create=1"));
  }

  /// As OpenFile with "@Create=2" for a folder that is to be new, but until SetTraits nobody else may look
  /// into it, where its file system can tell people apart.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> CreateClosedFolder(const QString& name) {
    return OpenFile(name, QStringLiteral("@Create=2"));
  }

  /// Until LetGo, this item and the items opened through it are looked for in the very folders that they were
  /// found in. Items that take their place meanwhile are neither written nor replaced nor deleted, links
  /// below are not followed, and depth does not add to the cost. The default does nothing.
  virtual void Hold() {}
  virtual void LetGo() noexcept {}

  /// A link whose target is known not to exist.
  [[nodiscard]] virtual bool LeadsNowhere() { return false; }

  /// The names that the last FileNames or List left out because nothing could be opened by them.
  [[nodiscard]] virtual QStringList RefusedNames() { return {}; }

  /// True only when the folder is known to hold no child of that name; the child may be missing when this is
  /// false, too. It costs less than the error that OpenFile raises.
  [[nodiscard]] virtual bool IsKnownAbsent(const QString& name) {
    Q_UNUSED(name);
    return false;
  }

  /// The child of that name for one look-up, null where it is known to be missing. Nothing where only
  /// OpenFile tells, which is the default.
  [[nodiscard]] virtual std::optional<std::shared_ptr<IxoFile>> LookFor(const QString& name) {
    Q_UNUSED(name);
    return std::nullopt;
  }

  /// A new folder among the children, closed as by CreateClosedFolder or not, that was looked for after it
  /// was made; fails with error::kExists when anything has that name. Null where only OpenFile makes one,
  /// which is the default: nothing has been done then.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> MakeFolder(const QString& name, bool closed) {
    Q_UNUSED(name);
    Q_UNUSED(closed);
    return nullptr;
  }

  /// The child as it was just listed. Where ListingTellsAll it is not looked for once more; the default
  /// looks.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> OpenListed(const FileEntry& child) {
    return OpenFile(child.name, QString());
  }

  /// Whether one listing tells all that is known of the children: nothing more identifies them.
  [[nodiscard]] virtual bool ListingTellsAll() { return false; }

  /// Whether what this folder tells of a child that was written into it was asked of a disk of this computer
  /// after the child had its name, so that asking once more would tell nothing else. The default promises
  /// nothing.
  [[nodiscard]] virtual bool SeesArrivals() { return false; }

  /// Deletes files and links of this folder that are still as they were seen. They are asked for anew, by one
  /// listing where there are many; it stops at the first failure. Only where ListingTellsAll; the default
  /// fails.
  virtual void DeleteSeen(const Listing& children);

  /// Returns when the item, and all that was written below it, would survive a power failure of its machine,
  /// as far as its controller can promise that.
  virtual void Flush() {}

  /// Copies to `destination`, a full path on the same controller. "OverWrite=True" allows an existing item to
  /// be replaced, "OverWrite=False" makes it fail with error::kExists. The observer sees each item within a
  /// folder; a controller that does its work elsewhere may not call it.
  virtual void Copy(const QString& destination, const QString& option, const ItemObserver& observer = {}) = 0;

  /// Deletes the file, or the folder with its contents. `option` is always empty. The observer is called as
  /// by Copy.
  virtual void Delete(const QString& option, const ItemObserver& observer = {}) = 0;

  /// Deletes this one item: a file, a link or an empty folder. Fails with error::kDirectoryNotEmpty for a
  /// folder that holds anything.
  virtual void DeleteAlone() = 0;

  /// The files that killed programs have left in those folders of this controller that were written to since
  /// the last call on any of its objects.
  [[nodiscard]] virtual std::vector<Leftover> TakeLeftovers() { return {}; }

  /// Run opens files on their controller, or with a program of this computer. Without, they have to be
  /// fetched first. The default takes it for granted.
  [[nodiscard]] virtual bool CanRun() { return true; }

  /// Performs a command of the provider's. An empty command does what Run does.
  virtual Variant Execute(const QString& command, const Variant& parameter) = 0;

  /// Moves or renames to `destination`; the option is read as by Copy.
  virtual void Move(const QString& destination, const QString& option) = 0;

  /// Starts or opens the file on its controller. `option` is always empty.
  virtual Variant Run(const QString& option) = 0;
};

}  // namespace trevane
