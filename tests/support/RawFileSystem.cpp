#include "tests/support/RawFileSystem.h"

#include "engine/files/ProviderError.h"
#include "engine/files/StagedPlacement.h"
#include "engine/files/StagedSink.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"

#include <utility>

namespace trevane::test {

/// The primitives. Contents are written under their names, piece by piece.
class RawFileSystem::Server final : public RawFiles {
 public:
  Server(MemoryFileSystem& memory, const RawCapabilities& can) : memory_(memory), can_(can) {}

  [[nodiscard]] RawCapabilities Capabilities() const override { return can_; }

  [[nodiscard]] std::optional<SeenItem> Find(const QString& path) override {
    std::optional<FileEntry> entry = memory_.Find(path);
    if (!entry) {
      return std::nullopt;
    }
    return SeenItem{*std::move(entry), std::nullopt};
  }

  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path) override {
    return memory_.OpenSource(path);
  }

  [[nodiscard]] std::unique_ptr<RawWriter> Store(const QString& path, Creation creation,
                                                 bool /*isPrivate*/) override {
    RequireName(path);
    if (creation == Creation::New && can_.exclusiveCreate && memory_.Find(path)) {
      Fail(error::kExists, path);
    }
    WriteFile(memory_, path, {});
    return std::make_unique<Writer>(memory_, path);
  }

  void Rename(const QString& from, const QString& to) override {
    if (!can_.canRename) {
      Fail(error::kNotSupported, from);
    }
    RequireName(to);
    memory_.Rename(from, to, can_.renameReplaces);
  }

  void Remove(const QString& path) override { memory_.RemoveAlone(path); }
  void CreateFolder(const QString& path) override {
    RequireName(path);
    memory_.CreateFolder(path);
  }
  void SetTraits(const QString& path, const FileTraits& traits) override { memory_.SetTraits(path, traits); }

 private:
  class Writer final : public RawWriter {
   public:
    Writer(MemoryFileSystem& memory, QString path) : memory_(memory), path_(std::move(path)) {}
    void Write(const QByteArray& piece) override {
      content_ += piece;
      WriteFile(memory_, path_, content_);
    }
    void Close() override {}

   private:
    MemoryFileSystem& memory_;
    QString path_;
    QByteArray content_;
  };

  void RequireName(const QString& path) const {
    if (!can_.temporaryNames && IsOwnTemporaryName(path.sliced(path.lastIndexOf(u'\\') + 1))) {
      Fail(error::kInvalidName, path);
    }
  }

  MemoryFileSystem& memory_;
  RawCapabilities can_;
};

RawFileSystem::RawFileSystem(std::shared_ptr<MemoryFileSystem> memory, const RawCapabilities& can)
    : memory_(std::move(memory)), server_(std::make_unique<Server>(*memory_, can)) {}

RawFileSystem::~RawFileSystem() = default;

FileSystemCapabilities RawFileSystem::Capabilities() const {
  FileSystemCapabilities capabilities = memory_->Capabilities();
  capabilities.identity = false;
  capabilities.execute = false;
  capabilities.traits = false;
  capabilities.temporaryNames = server_->Capabilities().temporaryNames;
  return capabilities;
}

StagedPlace RawFileSystem::Place() {
  return {.files = *server_, .learnt = learnt_, .server = QStringLiteral("server")};
}

void RawFileSystem::RequireWritable(const QString& path, SinkRequest::Mode mode) {
  const std::optional<FileEntry> existing = memory_->Find(path);
  if (existing && mode == SinkRequest::Mode::New) {
    Fail(error::kExists, path);
  }
  if (existing && existing->IsFolder()) {
    Fail(error::kAccessDenied, path);
  }
}

std::unique_ptr<ContentSink> RawFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  RequireWritable(path, request.mode);
  return std::make_unique<StagedSink>(Place(), path, request);
}

std::vector<WriteResult> RawFileSystem::WriteMany(const std::vector<NewContent>& files) {
  return WriteManyStaged(Place(), files);
}

void RawFileSystem::CreateFolder(const QString& path) {
  CreateFolderStaged(*server_, path);
}

void RawFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  const std::optional<FileEntry> source = memory_->Find(from);
  const std::optional<FileEntry> target = memory_->Find(to);
  const bool replacesFile = source && target && overwrite && from != to && !source->IsFolder() &&
                            !target->IsFolder() && !server_->Capabilities().renameReplaces;
  if (!replacesFile) {
    memory_->Rename(from, to, overwrite);
    return;
  }
  StagedPlacement(Place(), NameRung::Long, source->size).Put(from, to, SinkRequest::Mode::Replace);
}

}  // namespace trevane::test
