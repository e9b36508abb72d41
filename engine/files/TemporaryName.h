#pragma once

#include "engine/files/ProviderError.h"

#include <QString>

namespace trevane {

/// A fresh name for an item that is being built: ".trevane-", six characters, ".tmp". The last two of the six
/// are a checksum of the random ones before them, so that only this program makes such names.
[[nodiscard]] QString MakeTemporaryName();

/// The same for an item that is moved aside for a moment and has no other copy: IsTemporaryName accepts it
/// and IsOwnTemporaryName does not, so that it is never removed as an unfinished copy.
[[nodiscard]] QString MakeAsideName();

/// Calls `make` with fresh temporary names until it returns true, and returns that name. `make` returns false
/// when the name is taken and throws for every other failure.
template <class Make>
QString MakeUnderTemporaryName(const Make& make) {
  constexpr int kTries = 100;
  for (int i = 0;; ++i) {
    const QString name = MakeTemporaryName();
    if (make(name)) {
      return name;
    }
    if (i == kTries) {
      Fail(error::kExists, name);
    }
  }
}

/// Whether the name is that of an item that is being built, or was when its program was killed.
[[nodiscard]] bool IsTemporaryName(const QString& name);

/// Whether MakeTemporaryName made the name: an item under it also exists elsewhere.
[[nodiscard]] bool IsOwnTemporaryName(const QString& name);

}  // namespace trevane
