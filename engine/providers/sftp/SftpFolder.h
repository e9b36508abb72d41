#pragma once

#include "engine/files/PathFolder.h"
#include "engine/providers/sftp/SftpServer.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane::sftp {

/// A held folder of a server, which asks for several things at once.
class Folder final : public PathFolder {
 public:
  /// `files` is the file system of the server.
  Folder(FileSystem& files, std::shared_ptr<Server> server, const QString& path);

  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen) override;
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override;
  [[nodiscard]] std::optional<SeenItem> MakeFolder(const QString& name, bool closed) override;
  void SetTraitsOf(const SeenItem& seen, const FileTraits& traits) override;
  void RemoveAlone(const QString& name, const SeenItem& seen) override;
  void RemoveMany(const std::vector<SeenItem>& items) override;

 private:
  Folder(const Folder& above, const QString& name, const SeenItem& seen);

  /// As RequireInPlace, with the request under way; none where nothing is to be asked.
  [[nodiscard]] Request AskInPlace();
  void TakeInPlace(Request& request);

  std::shared_ptr<Server> server_;
};

}  // namespace trevane::sftp
