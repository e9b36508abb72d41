#include "engine/providers/ftp/FtpFolder.h"

#include <utility>

namespace trevane::ftp {

Folder::Folder(FileSystem& files, std::shared_ptr<Server> server, const QString& path)
    : PathFolder(files, path), server_(std::move(server)), watch_(*server_) {}

Folder::Folder(const Folder& above, const QString& name, const SeenItem& seen)
    : PathFolder(above, name, seen), server_(above.server_), watch_(*server_) {}

std::shared_ptr<HeldFolder> Folder::Enter(const QString& name) {
  return std::shared_ptr<HeldFolder>(new Folder(*this, name, RequireFolder(name)));
}

std::shared_ptr<HeldFolder> Folder::EnterSeen(const QString& name, const SeenItem& seen) {
  const bool isFolder = seen.entry.IsFolder() && !seen.entry.IsLink();
  // A listing from before the watch may show a link as a folder.
  if (!isFolder || !server_->WasSeenAsFolder(server_->At(PathOf(name)))) {
    return Enter(name);
  }
  return std::shared_ptr<HeldFolder>(new Folder(*this, name, seen));
}

}  // namespace trevane::ftp
