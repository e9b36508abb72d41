#pragma once

#include "engine/files/FileSystem.h"
#include "engine/remote/RemoteConnection.h"

#include <memory>

namespace trevane {

/// A file system that can be slow, stall or die, on a thread of its own: each call runs there while the
/// window's thread waits and stays alive.
///
/// A call that the user ended fails with error::kCancelled, one whose controller was silent for 10 s with
/// error::kTimeOut. After both a call that changes something may still happen. No destructor waits, neither
/// its own nor that of what it gave out.
class RemoteFileSystem final : public FileSystem {
 public:
  /// Connects and waits for that; fails as any call.
  RemoteFileSystem(RemoteContext& context, RemoteConnection::Opening opening);
  /// For a connection that was made already.
  RemoteFileSystem(std::shared_ptr<RemoteConnection> connection, const FileSystemCapabilities& capabilities)
      : connection_(std::move(connection)), capabilities_(capabilities) {}
  RemoteFileSystem(const RemoteFileSystem&) = delete;
  RemoteFileSystem& operator=(const RemoteFileSystem&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return capabilities_; }
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
    Q_UNUSED(path);
    return connection_->HasLostLine();
  }
  void ForgetLearnt() override;
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
  /// None while there is no connection: nothing was written then.
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override;
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  [[nodiscard]] QStringList Details(const QString& path) override;
  [[nodiscard]] QString PathFromText(const QString& text) override;
  /// No call: see RemoteConnection::Opening.
  [[nodiscard]] QString TypeName(const FileEntry& entry) override;

 private:
  template <class Work>
  auto Ask(const RemoteConnection::Purpose& purpose, const Work& work);
  template <class Work>
  auto Change(const RemoteConnection::Purpose& purpose, const Work& work);

  const std::shared_ptr<RemoteConnection> connection_;
  FileSystemCapabilities capabilities_;
};

}  // namespace trevane
