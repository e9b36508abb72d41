#pragma once

#include "engine/files/RawFiles.h"
#include "engine/files/StagedPlace.h"
#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"

#include <QString>

#include <memory>
#include <utility>

namespace trevane::sftp {

/// The primitives of the server for contents that are put in place as a mode tells.
class RawServer final : public RawFiles {
 public:
  /// Failures of writing name the path `shown`, whatever name the content has meanwhile.
  RawServer(Server& server, SinkRequest::Mode mode, QString shown = {})
      : server_(server), mode_(mode), shown_(std::move(shown)) {}

  [[nodiscard]] RawCapabilities Capabilities() const override;
  [[nodiscard]] std::optional<SeenItem> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path) override;
  [[nodiscard]] std::unique_ptr<RawWriter> Store(const QString& path, Creation creation,
                                                 bool isPrivate) override;
  void Rename(const QString& from, const QString& to) override;
  void Remove(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void BeginPutBack() noexcept override;
  void EndPutBack() noexcept override;
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;

  /// For staged contents; it must not outlive this.
  [[nodiscard]] StagedPlace StagedHere();

 private:
  class Writer;

  /// By a second name for the file; false where the server or the disk has none.
  [[nodiscard]] bool RenameByLink(const Place& from, const Place& to);

  Server& server_;
  const SinkRequest::Mode mode_;
  const QString shown_;
};

/// As FileSystem::OpenSink.
[[nodiscard]] std::unique_ptr<ContentSink> OpenSinkAt(const std::shared_ptr<Server>& server,
                                                      const QString& path, const SinkRequest& request);

/// Fails where content may not be put in the place of that item.
void RequireReplaceable(const Attributes& item, const QString& text);

/// What stands there, as a look at the server tells now.
[[nodiscard]] std::optional<SeenItem> SeenAt(Server& server, const Place& place);

}  // namespace trevane::sftp
