#include "engine/files/PathFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/Leftovers.h"
#include "engine/providers/local/windows/LocalNative.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "engine/providers/local/windows/WindowsPath.h"

#include <utility>

namespace trevane {

using local::FailAt;
using local::FileHandle;
using local::ResolvePath;
using local::WindowsPath;

/// A folder that nobody can rename, delete or replace while it is open, so that its path stays valid.
class LocalFileSystem::Folder final : public PathFolder {
 public:
  Folder(LocalFileSystem& files, const QString& path) : PathFolder(files, path), local_(files) { Pin(false); }

  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override {
    return std::shared_ptr<HeldFolder>(new Folder(*this, name, RequireFolder(name)));
  }

  /// Asks the item itself: for a file that is being written the listing of its folder is out of date.
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override {
    const QString path = PathOf(name);
    const WindowsPath native = ResolvePath(local_.volumes_, path);
    if (native.IsTopOrDrive()) {
      return PathFolder::Find(name);
    }
    std::optional<FileEntry> entry = local_.Find(path);
    if (!entry) {
      return std::nullopt;
    }
    SeenItem seen;
    seen.entry = *std::move(entry);
    if (!seen.entry.IsLink()) {
      local::ItemStatus status;
      if (local::StatusAt(native.whole, status) == 0) {
        seen.entry = local::MakeEntry(seen.entry.name, native.whole, status);
      }
    }
    seen.identity = local_.Identity(path);
    local::ItemStatus own;
    seen.isMountPoint = seen.entry.IsLink() && local::StatusAt(native.whole, own) == 0 &&
                        local::IsMountPoint(native.whole, own);
    return seen;
  }

  void CreateFolder(const QString& name, bool closed) override {
    if (const WindowsPath native = ResolvePath(local_.volumes_, Path()); !native.IsTop()) {
      local::SearchLeftovers(native.whole, native.text, local_.native_->leftovers);
    }
    PathFolder::CreateFolder(name, closed);
  }

 private:
  Folder(const Folder& above, const QString& name, const SeenItem& seen)
      : PathFolder(above, name, seen), local_(above.local_) {
    Pin(true);
  }

  void Pin(bool entered) {
    const WindowsPath native = ResolvePath(local_.volumes_, Path());
    if (native.IsTop()) {
      return;
    }
    const DWORD code = local::HoldFolder(native.whole, handle_);
    // A folder that may not be listed, a link that the user chose, and a folder that is opened exclusively
    // cannot be held: only the check before each change is left.
    if (code != 0 && code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION &&
        (code != ERROR_DIRECTORY || entered)) {
      FailAt(code, native);
    }
  }

  LocalFileSystem& local_;
  FileHandle handle_;
};

std::shared_ptr<HeldFolder> LocalFileSystem::Hold(const QString& folder) {
  return std::make_shared<Folder>(*this, folder);
}

void LocalFileSystem::CreateClosedFolder(const QString& path) {
  // A folder has its inherited permissions from the beginning.
  CreateFolder(path);
}

}  // namespace trevane
