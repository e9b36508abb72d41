#pragma once

#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/linux/FileContent.h"
#include "engine/providers/local/linux/FileStatus.h"

namespace trevane::local {

/// Searches an open folder (for *at calls at least; `text` returns its path) for leftovers of killed
/// programs, each folder once an hour. Those that this program made for this user, and in which nothing was
/// touched for a day, are removed; all are added to the log. Never fails, since the caller's own operation
/// does not depend on it.
void SearchLeftovers(int folder, const TextOf& text, const Credentials& user, LeftoverLog& log) noexcept;

}  // namespace trevane::local
