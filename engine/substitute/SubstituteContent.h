#pragma once

#include "engine/model/Content.h"
#include "engine/substitute/ContentPrint.h"
#include "engine/substitute/FileSystemSession.h"

#include <memory>
#include <utility>

namespace trevane {

class SubstituteFile;

/// A source that keeps alive what it reads through.
class SubstituteSource final : public ContentSource {
 public:
  SubstituteSource(std::shared_ptr<FileSystemSession> session, FolderReference folder,
                   std::unique_ptr<ContentSource> source)
      : session_(std::move(session)), folder_(std::move(folder)), source_(std::move(source)) {}

  [[nodiscard]] QByteArray Read(qint64 most) override { return source_->Read(most); }
  [[nodiscard]] std::optional<FileTraits> Traits() override { return source_->Traits(); }
  [[nodiscard]] bool HadWrongSize() const override { return source_->HadWrongSize(); }

 private:
  std::shared_ptr<FileSystemSession> session_;
  FolderReference folder_;
  std::unique_ptr<ContentSource> source_;
};

/// A sink that tells its file how it ended. It keeps the file alive, and with it what it writes through.
class SubstituteSink final : public ContentSink {
 public:
  SubstituteSink(std::shared_ptr<SubstituteFile> file, std::shared_ptr<FileSystemSession> session,
                 FolderReference folder, std::unique_ptr<ContentSink> sink)
      : file_(std::move(file)),
        session_(std::move(session)),
        folder_(std::move(folder)),
        sink_(std::move(sink)) {}

  void Write(const QByteArray& piece) override;
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return sink_->TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override;

 private:
  std::shared_ptr<SubstituteFile> file_;
  std::shared_ptr<FileSystemSession> session_;
  /// The file may leave its held folder earlier.
  FolderReference folder_;
  std::unique_ptr<ContentSink> sink_;
  ContentPrint print_;
};

}  // namespace trevane
