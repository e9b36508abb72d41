#pragma once

#include "engine/files/FileSystem.h"

#include <functional>
#include <memory>

namespace trevane {

class ShellIcons;
class Volumes;

/// The files of this machine; the top holds the drives of Volumes. A path whose first name is no drive
/// ("home\x") starts at the first drive; letters of drives are taken in any case.
///
/// New content is built under a name that IsTemporaryName (TemporaryName.h) knows, beside the place it is
/// meant for, and renamed into place. A copied folder that was not there before is built whole under such a
/// name, too: it shows under its own name only when everything in it has arrived, and is taken away again
/// when the copy fails. A folder merged into an existing one is not undone: each file in it is old or new as
/// a whole. What a killed program leaves behind is thus known by its name: it is looked for where Write,
/// WriteNew and Copy write to, and goes when it is older than a day.
///
/// A symbolic link is an item of its own for Copy, Rename and Remove; List, Read and Write go through it. A
/// link that stands where a file is copied to is replaced, not written through. Folders that are mount points
/// are refused by Remove and by a move to another volume (kWin32Error + 170), their contents are not touched.
/// Hard links are files like any other: Write and Copy replace the one name they are given.
///
/// A file whose content Write replaces keeps who may do what with it, but no bit that lets it run as somebody
/// else.
class LocalFileSystem final : public FileSystem {
 public:
  /// Opens a file of the operating system with the program for it; throws RunTimeError when it cannot.
  using Opener = std::function<void(const QString& nativePath)>;

  /// `volumes` and `icons` must outlive this; `icons` may be null. Without an opener Execute is not
  /// supported.
  explicit LocalFileSystem(Volumes& volumes, Opener opener = {}, ShellIcons* icons = nullptr);
  ~LocalFileSystem() override;
  LocalFileSystem(const LocalFileSystem&) = delete;
  LocalFileSystem& operator=(const LocalFileSystem&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override;
  [[nodiscard]] Listing List(const QString& folder) override;
  [[nodiscard]] FileEntry Stat(const QString& path) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] QByteArray Read(const QString& path) override;
  void Write(const QString& path, const QByteArray& content) override;
  std::optional<FileStamp> WriteNew(const QString& path, const QByteArray& content,
                                    const FileTraits& traits) override;
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
  /// Of a folder the whole volume that holds it.
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
  /// A path as typedpath::Understand reads it.
  [[nodiscard]] QString PathFromText(const QString& text) override;
  [[nodiscard]] QString TypeName(const FileEntry& entry) override;

 private:
  struct Native;
  class Folder;

  [[nodiscard]] static FileEntry DriveEntry(const QString& name);
  /// What the top holds.
  [[nodiscard]] Listing Drives() const;

  Volumes& volumes_;
  Opener opener_;
  ShellIcons* icons_;
  std::unique_ptr<Native> native_;
};

}  // namespace trevane
