#pragma once

#include "engine/files/FileSystem.h"

#include <functional>
#include <memory>

namespace trevane {

class ShellIcons;
class Volumes;

/// The files of this machine; the top holds the drives of Volumes. A path whose first name is no drive
/// ("home\x") starts at the first drive; the case of drive letters is ignored.
///
/// New content is built under a temporary name (TemporaryName.h) in the destination folder and then renamed.
/// A new folder is copied as a whole under such a name, too: it gets its own name when everything in it has
/// arrived, and is removed when the copy fails. A merge into an existing folder is not undone: each file in
/// it is old or new as a whole. Leftovers of killed programs are recognized by their names: folders that are
/// written to are searched for them, and those older than a day are removed.
///
/// Copy, Rename and Remove act on a symbolic link itself; List, Read and Write follow it. A file that is
/// copied onto a link replaces the link and is not written through it. Remove, and a move to another volume,
/// refuse mount points (kWin32Error + 170) and leave their contents alone. Write and Copy replace only the
/// given name of a file with several hard links.
///
/// Write keeps the permissions of the file that it replaces, except for set-user-ID and set-group-ID.
class LocalFileSystem final : public FileSystem {
 public:
  /// Opens a file with its program; throws RunTimeError when it cannot.
  using Opener = std::function<void(const QString& nativePath)>;

  /// `volumes` and `icons` must outlive this; `icons` may be null. Without an opener Execute is not
  /// supported.
  explicit LocalFileSystem(Volumes& volumes, Opener opener = {}, ShellIcons* icons = nullptr);
  ~LocalFileSystem() override;
  LocalFileSystem(const LocalFileSystem&) = delete;
  LocalFileSystem& operator=(const LocalFileSystem&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override;
  [[nodiscard]] Listing List(const QString& folder) override;
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] FileEntry Stat(const QString& path) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override;
  void CreateLink(const QString& path, const QString& target) override;
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
  /// For a folder the whole volume is flushed.
  void Flush(const QString& path) override;
  void CreateFile(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void CreateClosedFolder(const QString& path) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> Hold(const QString& folder) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  void RemoveAlone(const QString& path) override;
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override;
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  /// As typedpath::Understand.
  [[nodiscard]] QString PathFromText(const QString& text) override;
  [[nodiscard]] QString TypeName(const FileEntry& entry) override { return TypeNameOf(icons_, entry); }
  /// The type that `icons` have for the name; `icons` may be null. No file system is asked.
  [[nodiscard]] static QString TypeNameOf(ShellIcons* icons, const FileEntry& entry);

 private:
  struct Native;
  class Folder;

  [[nodiscard]] static FileEntry DriveEntry(const QString& name);
  /// The contents of the top.
  [[nodiscard]] Listing Drives() const;

  Volumes& volumes_;
  Opener opener_;
  ShellIcons* icons_;
  std::unique_ptr<Native> native_;
};

}  // namespace trevane
