#pragma once

#include <QtGlobal>

#include <functional>

namespace trevane {

/// Called while the content of a file is copied, at least every 16 MiB, with the bytes that are done and all
/// of them. False ends the copy: it leaves nothing of the file and fails with error::kCancelled. May be
/// empty.
using CopyProgress = std::function<bool(qint64 bytes, qint64 size)>;

}  // namespace trevane
