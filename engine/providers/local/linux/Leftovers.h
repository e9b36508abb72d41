#pragma once

#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/linux/FileContent.h"
#include "engine/providers/local/linux/FileStatus.h"

namespace trevane::local {

/// Looks in an open folder (for *at calls at least; `text` gives its path in texts) for what a killed program
/// has left under a temporary name, each folder now and then. What is this user's and of this program's
/// making, and in which nothing was touched for a day, is taken away; all of it is noted. Never fails: it is
/// no part of what the folder is written to for.
void SearchLeftovers(int folder, const TextOf& text, const Credentials& user, LeftoverLog& log) noexcept;

}  // namespace trevane::local
