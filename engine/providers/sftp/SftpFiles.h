#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/sftp/SftpServer.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane::sftp {

/// The file system of OpenSftpFileSystem.
class Files final : public FileSystem {
 public:
  Files(std::unique_ptr<SftpConnector> connector, const SftpSettings& settings,
        std::shared_ptr<CallControl> control);

  [[nodiscard]] FileSystemCapabilities Capabilities() const override;

  [[nodiscard]] Listing List(const QString& folder) override;
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& paths) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override;
  void CreateLink(const QString& path, const QString& target) override;
  void ForgetLearnt() override { server_->ForgetCanonical(); }
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
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  [[nodiscard]] QString PathFromText(const QString& text) override;
  [[nodiscard]] QStringList Details(const QString& path) override;
  [[nodiscard]] qint64 Idle(qint64 milliseconds) noexcept override { return server_->Idle(milliseconds); }

 private:
  void MakeFolder(const QString& path, quint32 mode);
  /// Something is built at the path.
  void NoteBuilt(const Place& place);
  /// Takes away what an ended copy has left, also when it was cancelled.
  void RemoveBuilt() noexcept;

  [[nodiscard]] bool IsEmptyFolder(const Place& folder);
  /// Whether two names that differ in case are one item: the folder holds only one of them.
  [[nodiscard]] bool IsCaseChange(const Place& from, const Place& to);
  [[noreturn]] void FailRename(const StatusAnswer& answer, const Place& from, const Place& to);
  void ReplaceFolder(const Place& from, const Place& to);
  void ReplaceFile(const Place& from, const Place& to, const Attributes& source);

  std::shared_ptr<Server> server_;
  bool isCopying_ = false;
  /// What a copy builds under temporary names.
  QStringList built_;
};

}  // namespace trevane::sftp
