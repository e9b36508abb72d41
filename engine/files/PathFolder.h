#pragma once

#include "engine/files/HeldFolder.h"

#include <QHash>

namespace trevane {

/// A held folder for file systems that know only paths: before each change it checks that the path still
/// leads to the same folder. Another program may change the folder after this check; a file system that can
/// prevent that has a HeldFolder of its own.
class PathFolder : public HeldFolder {
 public:
  /// `path` is followed where it is a link. Fails as FileSystem::List where it leads to no folder.
  PathFolder(FileSystem& files, const QString& path);

  [[nodiscard]] QString Path() const override { return path_; }
  [[nodiscard]] std::optional<FileIdentity> KnownIdentity() const override { return identity_; }
  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen) override;
  [[nodiscard]] Listing List() override;
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override;
  [[nodiscard]] FileTraits Traits(const QString& name) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& name, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& name, const SinkRequest& request,
                                                      const std::optional<SeenItem>& seen) override;
  [[nodiscard]] qint64 DateStep() const override { return files_.Capabilities().dateStep; }
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& names) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& name) override;
  void CreateLink(const QString& name, const QString& target) override;
  void ListInBatches(const ListingReceiver& receive) override;
  void SetTraits(const QString& name, const FileTraits& traits) override;
  void CreateFolder(const QString& name, bool closed) override;
  void RemoveAlone(const QString& name, const SeenItem& seen) override;
  void RemoveMany(const std::vector<SeenItem>& items) override;
  void Flush(const QString& name) override;

 protected:
  /// The folder `name` in `above`.
  PathFolder(const PathFolder& above, const QString& name, const SeenItem& seen);

  [[nodiscard]] FileSystem& Files() const { return files_; }
  [[nodiscard]] QString PathOf(const QString& name) const;
  /// For Enter. Fails unless the item is a folder and no link.
  [[nodiscard]] SeenItem RequireFolder(const QString& name);
  /// Before each change: fails with providererror::kChanged when another item has taken the folder's place.
  void RequireInPlace();
  /// An entered folder is never the target of a link.
  [[nodiscard]] bool IsEntered() const noexcept { return entered_; }

 private:
  /// Whether identities tell an item from another one that has taken its place.
  [[nodiscard]] bool HasIdentities() const;
  /// What has the names of the files that are to be replaced, by name.
  [[nodiscard]] QHash<QString, FileEntry> LookAtReplaced(const std::vector<NewContent>& files);
  /// Fails unless the file is the one that was seen.
  void RequireSeen(const QString& name, const SeenItem& seen);

  FileSystem& files_;
  QString path_;
  /// An entered folder is never the target of a link.
  bool entered_ = false;
  std::optional<FileIdentity> identity_;
};

}  // namespace trevane
