#pragma once

#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/linux/FileContent.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/NativePath.h"
#include "platform/linux/FileDescriptor.h"

#include <chrono>

namespace trevane {

namespace local {
/// The children of an open folder.
[[nodiscard]] Listing ListFolder(const FileDescriptor& opened, const Credentials& user, const TextOf& text);
void ListFolderInBatches(const FileDescriptor& opened, const Credentials& user, const TextOf& text,
                         const ListingReceiver& receive);
}  // namespace local

/// The state of a LocalFileSystem on this system.
struct LocalFileSystem::Native {
  local::Credentials user = local::Credentials::Current();
  LeftoverLog leftovers;
  local::PathResolver paths;

  /// Fails as FileSystem::List.
  [[nodiscard]] static local::FileDescriptor OpenForListing(const local::NativePath& path);

  /// The state of the mounts, asked anew after a second, since an operation needs it for each of its items.
  [[nodiscard]] local::MountStates& Mounts() {
    const auto now = std::chrono::steady_clock::now();
    if (now - mountsSince > std::chrono::seconds(1)) {
      mounts = {};
      mountsSince = now;
    }
    return mounts;
  }

 private:
  local::MountStates mounts;
  std::chrono::steady_clock::time_point mountsSince;
};

}  // namespace trevane
