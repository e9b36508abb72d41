#pragma once

#include "engine/providers/local/LeftoverLog.h"

#include <QString>

namespace trevane::local {

/// Searches a folder (`text` is its path in texts) for leftovers of killed programs, each folder once an
/// hour. Those that this program made, and in which nothing was touched for a day, are removed; all are added
/// to the log. Never fails, since the caller's own operation does not depend on it.
void SearchLeftovers(const QString& folder, const QString& text, LeftoverLog& log) noexcept;

}  // namespace trevane::local
