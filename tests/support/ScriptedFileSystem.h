#pragma once

#include "tests/support/ScriptedServer.h"

#include <memory>

namespace trevane::test {

/// One connection to a scripted server. Trees are copied and removed item by item, as over a protocol that
/// has no calls for them.
class ScriptedFileSystem final : public FileSystem, public std::enable_shared_from_this<ScriptedFileSystem> {
 public:
  ScriptedFileSystem(std::shared_ptr<ScriptedServer> server, std::shared_ptr<ScriptedServer::Line> line)
      : server_(std::move(server)), line_(std::move(line)) {}
  ~ScriptedFileSystem() override;
  ScriptedFileSystem(const ScriptedFileSystem&) = delete;
  ScriptedFileSystem& operator=(const ScriptedFileSystem&) = delete;

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
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
  void CreateFile(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  void RemoveAlone(const QString& path) override;
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  [[nodiscard]] QStringList Details(const QString& path) override;

 private:
  void RoundTrip(const QString& call, const std::function<void(FileSystem& behind)>& work);
  void RequireFolders(const QString& path) const;

  const std::shared_ptr<ScriptedServer> server_;
  const std::shared_ptr<ScriptedServer::Line> line_;
};

}  // namespace trevane::test
