#pragma once

#include "engine/files/FileSystem.h"

#include <functional>
#include <memory>

namespace trevane {

/// Another file system below one of its folders or drives, as a file system of its own whose top is that
/// folder. No path leads out of it; a symbolic link in it may. The texts of failures name the paths of this
/// file system.
class RootedFileSystem : public FileSystem {
 public:
  /// `root` is a path of `inner`; `shownRoot` stands for it in texts.
  RootedFileSystem(std::shared_ptr<FileSystem> inner, QString root, QString shownRoot);

  [[nodiscard]] FileSystemCapabilities Capabilities() const override;
  [[nodiscard]] Listing List(const QString& folder) override;
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] FileEntry Stat(const QString& path) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& paths) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override;
  void CreateLink(const QString& path, const QString& target) override;
  [[nodiscard]] bool HasLostLine(const QString& path) const override {
    return inner_->HasLostLine(Inner(path));
  }
  void ForgetLearnt() override { inner_->ForgetLearnt(); }
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
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
  /// Those of the folders above the root, too: other file systems may show them.
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  [[nodiscard]] QStringList Details(const QString& path) override;
  [[nodiscard]] QString TypeName(const FileEntry& entry) override { return inner_->TypeName(entry); }

 private:
  class Folder;
  class Source;
  class Sink;

  /// Translates the texts of failures; the objects that are handed out share it.
  class Texts {
   public:
    Texts(QString root, QString shownRoot) : root_(std::move(root)), shownRoot_(std::move(shownRoot)) {}

    /// A path of `inner` as one of this file system.
    [[nodiscard]] QString PathOf(const QString& inner) const;
    [[nodiscard]] RunTimeError Failure(const RunTimeError& failure) const;

    template <class Work>
    decltype(auto) Run(const Work& work) const {
      try {
        return work();
      } catch (const RunTimeError& failure) {
        throw Failure(failure);
      }
    }

   private:
    QString root_;
    QString shownRoot_;
  };

  [[nodiscard]] QString Inner(const QString& path) const;

  std::shared_ptr<FileSystem> inner_;
  QString root_;
  std::shared_ptr<const Texts> texts_;
};

}  // namespace trevane
