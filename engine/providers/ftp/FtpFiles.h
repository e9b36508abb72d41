#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/ftp/FtpServer.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane::ftp {

class RawServer;

/// The file system of OpenFtpFileSystem.
class Files final : public FileSystem {
 public:
  Files(std::unique_ptr<FtpConnector> connector, const FtpSettings& settings,
        std::shared_ptr<CallControl> control, std::shared_ptr<AbandonedItems> abandoned);

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
  void ForgetLearnt() override { server_->ForgetLearnt(); }
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
  void CreateFolder(const QString& path) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> Hold(const QString& folder) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  void RemoveAlone(const QString& path) override;
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override;
  [[nodiscard]] QString PathFromText(const QString& text) override;
  [[nodiscard]] QStringList Details(const QString& path) override;
  [[nodiscard]] qint64 Idle(qint64 milliseconds) noexcept override { return server_->Idle(milliseconds); }

 private:
  [[nodiscard]] Place PlaceOfItem(const QString& path, qint32 refusalOfTop) const;
  [[nodiscard]] ListedItem Require(const Place& place);

  [[nodiscard]] bool IsCaseChange(const Place& from, const Place& to, const ListedItem& existing);
  void ReplaceFolder(const Place& from, const Place& to);
  /// `size` is that of the file. The name for the old one is of a form that the device takes.
  void ReplaceFile(RawServer& raw, const Place& from, const Place& to, qint64 size);

  std::shared_ptr<Server> server_;
};

}  // namespace trevane::ftp
