#pragma once

#include "engine/files/RawFiles.h"
#include "engine/files/StagedPlace.h"
#include "engine/providers/memory/MemoryFileSystem.h"

#include <memory>

namespace trevane::test {

/// A file system as a provider of a simple server has it: staged sinks over the server's primitives, and what
/// every file system can do by itself. The server keeps its items in memory. It refuses temporary names where
/// it has none, and tells neither identities nor traits.
class RawFileSystem final : public FileSystem {
 public:
  RawFileSystem(std::shared_ptr<MemoryFileSystem> memory, const RawCapabilities& can);
  ~RawFileSystem() override;
  RawFileSystem(const RawFileSystem&) = delete;
  RawFileSystem& operator=(const RawFileSystem&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override;
  [[nodiscard]] Listing List(const QString& folder) override { return memory_->List(folder); }
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override { return memory_->Find(path); }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override {
    return memory_->OpenSource(path, offset);
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  void CreateFolder(const QString& path) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void RemoveAlone(const QString& path) override { memory_->RemoveAlone(path); }

 private:
  class Server;

  [[nodiscard]] StagedPlace Place();
  /// Fails as a sink must before anything is stored.
  void RequireWritable(const QString& path, SinkRequest::Mode mode);

  std::shared_ptr<MemoryFileSystem> memory_;
  std::unique_ptr<Server> server_;
  LearntNaming learnt_;
};

}  // namespace trevane::test
