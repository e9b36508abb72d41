#pragma once

#include <QString>

#include <functional>

namespace trevane {

/// Told the name of each item within a folder before a long call does its work on it. False ends the call:
/// it undoes or leaves what it would after a failure, and fails with error::kCancelled.
using ItemObserver = std::function<bool(const QString& name)>;

}  // namespace trevane
