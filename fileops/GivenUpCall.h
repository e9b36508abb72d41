#pragma once

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"

namespace trevane {

/// A call that changes something and ended like this may have done its work, or may still do it: nobody has
/// heard how it ended.
[[nodiscard]] constexpr bool MayStillHappen(qint32 result) noexcept {
  constexpr qint32 kConnectionLost = error::kWin32Error + 64;
  return result == error::kCancelled || result == error::kTimeOut || result == kConnectionLost;
}

/// After such a call in the folder at `address`: it is worth showing it anew. Where it does not answer at all
/// that would only be the next failure.
[[nodiscard]] inline bool IsToBeShownAnew(qint32 result, const FileAccess& files, const QString& address) {
  return result == error::kCancelled || (MayStillHappen(result) && files.FileAt(address).Result() == 0);
}

}  // namespace trevane
