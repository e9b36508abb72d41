#pragma once

#include <QString>

#include <functional>

namespace trevane {

/// Called by a long operation with the name of each item within a folder before it works on that item. False
/// ends the operation: it undoes or leaves what it would after a failure, and fails with error::kCancelled.
using ItemObserver = std::function<bool(const QString& name)>;

}  // namespace trevane
