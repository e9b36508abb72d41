#pragma once

#include "engine/files/PathFolder.h"
#include "engine/providers/ftp/FtpServer.h"

#include <memory>
#include <optional>

namespace trevane::ftp {

/// A held folder of a server: as long as it lives, links are told from folders.
class Folder final : public PathFolder {
 public:
  /// `files` is the file system of the server.
  Folder(FileSystem& files, std::shared_ptr<Server> server, const QString& path);

  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen) override;

 private:
  Folder(const Folder& above, const QString& name, const SeenItem& seen);

  std::shared_ptr<Server> server_;
  LinkWatch watch_;
};

}  // namespace trevane::ftp
