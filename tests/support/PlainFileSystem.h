#pragma once

#include "engine/files/FileSystem.h"

#include <memory>
#include <optional>
#include <utility>

namespace trevane::test {

struct PlainOptions {
  bool identities = false;
  bool temporaryNames = true;
  /// As FileSystemCapabilities has it; nothing for that of the inner one, whose dates stay as they are.
  std::optional<qint64> dateStep = {};
};

/// Wraps a file system and offers only what every one must have, so that all else is what FileSystem does by
/// itself.
class PlainFileSystem final : public FileSystem {
 public:
  explicit PlainFileSystem(std::shared_ptr<FileSystem> inner, const PlainOptions& options = {})
      : inner_(std::move(inner)), options_(options) {}

  [[nodiscard]] FileSystemCapabilities Capabilities() const override {
    FileSystemCapabilities capabilities = inner_->Capabilities();
    capabilities.identity = options_.identities;
    capabilities.temporaryNames = options_.temporaryNames;
    capabilities.dateStep = options_.dateStep.value_or(capabilities.dateStep);
    capabilities.execute = false;
    return capabilities;
  }
  [[nodiscard]] Listing List(const QString& folder) override { return inner_->List(folder); }
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override { return inner_->Find(path); }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override {
    return inner_->OpenSource(path, offset);
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override {
    return inner_->OpenSink(path, request);
  }
  void CreateFolder(const QString& path) override { inner_->CreateFolder(path); }
  void Rename(const QString& from, const QString& to, bool overwrite) override {
    inner_->Rename(from, to, overwrite);
  }
  void RemoveAlone(const QString& path) override { inner_->RemoveAlone(path); }

  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override {
    return options_.identities ? inner_->Identity(path) : std::nullopt;
  }
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override {
    return options_.identities ? inner_->FolderIdentities(folder) : std::vector<FileIdentity>();
  }

 private:
  std::shared_ptr<FileSystem> inner_;
  PlainOptions options_;
};

}  // namespace trevane::test
