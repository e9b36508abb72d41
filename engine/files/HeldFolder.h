#pragma once

#include "engine/files/FileSystem.h"
#include "engine/model/SeenItem.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// A folder that is worked in for a while. Names are looked up in this very folder: when another folder or a
/// link takes its place, every change fails with providererror::kChanged. A link is never followed where
/// something is written or removed. Where the file system can work in an open folder, the cost of a call does
/// not depend on the depth. Names must be valid. Failures are those of the members of FileSystem with the
/// same names. The file system must outlive it.
class HeldFolder {
 public:
  HeldFolder() = default;
  virtual ~HeldFolder() = default;
  HeldFolder(const HeldFolder&) = delete;
  HeldFolder& operator=(const HeldFolder&) = delete;

  /// The path by which it was found, for texts.
  [[nodiscard]] virtual QString Path() const = 0;

  /// The identity of the folder as far as it was learnt when it was held: nothing is asked for it. The
  /// default knows none.
  [[nodiscard]] virtual std::optional<FileIdentity> KnownIdentity() const { return std::nullopt; }

  /// The folder `name` in this one, which it keeps alive. A link to a folder is refused like a file.
  [[nodiscard]] virtual std::shared_ptr<HeldFolder> Enter(const QString& name) = 0;
  /// The same for one that was just seen as a folder: where a path is all that is known of it, it is not
  /// looked for once more. The default looks.
  [[nodiscard]] virtual std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen);

  [[nodiscard]] virtual Listing List() = 0;
  /// The item as it is now, not as in an earlier listing; nothing when it is missing.
  [[nodiscard]] virtual std::optional<SeenItem> Find(const QString& name) = 0;
  /// Follows a link. The folder must outlive the source, and a sink.
  [[nodiscard]] virtual std::unique_ptr<ContentSource> OpenSource(const QString& name, qint64 offset = 0) = 0;
  /// A new file; with `seen`, new content for a file that was seen: fails with providererror::kChanged when
  /// another item has its name by then; a changed content is no failure.
  [[nodiscard]] virtual std::unique_ptr<ContentSink> OpenSink(const QString& name, const SinkRequest& request,
                                                              const std::optional<SeenItem>& seen) = 0;
  /// Dates that differ by less than this, in milliseconds, prove nothing. The default knows exact ones.
  [[nodiscard]] virtual qint64 DateStep() const { return 0; }
  /// As the members of FileSystem, within this folder.
  [[nodiscard]] virtual std::vector<ReadResult> ReadMany(const QStringList& names);
  [[nodiscard]] virtual std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files);
  /// What a sink's Commit and WriteMany tell was asked of a disk of this computer, by the name of the file
  /// and after it had that name: asking once more would tell nothing else. Never of a folder behind a server,
  /// which may reckon its answer from what was sent. The default promises nothing.
  [[nodiscard]] virtual bool SeesArrivals() { return false; }
  [[nodiscard]] virtual std::optional<QString> ReadLink(const QString& name);
  virtual void CreateLink(const QString& name, const QString& target);
  virtual void ListInBatches(const ListingReceiver& receive);
  /// Follows a link.
  [[nodiscard]] virtual FileTraits Traits(const QString& name) = 0;

  virtual void SetTraits(const QString& name, const FileTraits& traits) = 0;
  /// The same for an item that was seen: fails with providererror::kChanged when another item has its name by
  /// then, or a link. The default looks first.
  virtual void SetTraitsOf(const SeenItem& seen, const FileTraits& traits);
  /// As FileSystem::CreateFolder, or as CreateClosedFolder.
  virtual void CreateFolder(const QString& name, bool closed) = 0;
  /// The same, and the folder as it is seen afterwards; nothing when it is missing all the same. The default
  /// looks for it.
  [[nodiscard]] virtual std::optional<SeenItem> MakeFolder(const QString& name, bool closed);
  /// Deletes an item that was seen. Fails with providererror::kChanged when it has changed since.
  virtual void RemoveAlone(const QString& name, const SeenItem& seen) = 0;
  /// The same for many files and links. One look at the folder, anew, may serve all. It stops at the first
  /// failure. The default removes one after the other.
  virtual void RemoveMany(const std::vector<SeenItem>& items);
  virtual void Flush(const QString& name) = 0;

 protected:
  /// Fails with error::kExists unless new content can take the place of the item. A link would be written
  /// through.
  static void RequireReplaceable(const FileEntry& there, const QString& path);
  /// A sink for a file of a batch; of one that is to be replaced what is there is looked at first.
  [[nodiscard]] std::unique_ptr<ContentSink> OpenInBatch(const NewContent& file);
};

}  // namespace trevane
