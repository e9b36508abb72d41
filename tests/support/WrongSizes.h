#pragma once

#include "engine/files/FileSystem.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <utility>

namespace trevane::test {

/// Shows each file with twice its size, and its sources know that.
class WrongSizes final : public FileSystem {
 public:
  explicit WrongSizes(std::shared_ptr<FileSystem> inner) : inner_(std::move(inner)) {}

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return inner_->Capabilities(); }
  [[nodiscard]] Listing List(const QString& folder) override {
    Listing listing = inner_->List(folder);
    for (FileEntry& entry : listing) {
      entry.size *= 2;
    }
    return listing;
  }
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override {
    std::optional<FileEntry> entry = inner_->Find(path);
    if (entry) {
      entry->size *= 2;
    }
    return entry;
  }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override {
    return std::make_unique<Source>(inner_->OpenSource(path, offset));
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

 private:
  class Source final : public ContentSource {
   public:
    explicit Source(std::unique_ptr<ContentSource> inner) : inner_(std::move(inner)) {}
    [[nodiscard]] QByteArray Read(qint64 most) override {
      QByteArray piece = inner_->Read(most);
      isAtEnd_ = piece.isEmpty();
      return piece;
    }
    [[nodiscard]] bool HadWrongSize() const override { return isAtEnd_; }

   private:
    std::unique_ptr<ContentSource> inner_;
    bool isAtEnd_ = false;
  };

  std::shared_ptr<FileSystem> inner_;
};

}  // namespace trevane::test
