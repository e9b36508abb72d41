#pragma once

#include "engine/remote/RemoteFileSystem.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// A slow file system, or why it could not be opened.
struct OpenedRemote {
  std::shared_ptr<RemoteFileSystem> files;
  std::optional<RunTimeError> failure;
};

/// Connects several controllers, at most 8 at once, and waits for all of them as for one call; a result for
/// each, in their order. Cancelling ends all that are not connected yet.
[[nodiscard]] std::vector<OpenedRemote> OpenSideBySide(
    RemoteContext& context, const std::vector<RemoteConnection::Opening>& openings);

}  // namespace trevane
