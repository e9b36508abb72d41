#pragma once

#include "engine/providers/local/LeftoverLog.h"

#include <QString>

namespace trevane::local {

/// Looks in a folder (`text` is its path in texts) for what a killed program has left under a temporary name,
/// each folder now and then. What is of this program's making, and in which nothing was touched for a day, is
/// taken away; all of it is noted. Never fails: it is no part of what the folder is written to for.
void SearchLeftovers(const QString& folder, const QString& text, LeftoverLog& log) noexcept;

}  // namespace trevane::local
