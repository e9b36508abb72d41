#pragma once

#include "engine/files/ProviderError.h"

#include <QString>

namespace trevane {

/// A fresh name for something that is being built: ".trevane-", six characters, ".tmp". The last two of the
/// six follow from the random ones before them, so that only this program makes such names.
[[nodiscard]] QString MakeTemporaryName();

/// The same for something that stands aside for a moment and is nowhere else: IsTemporaryName knows it, and
/// IsOwnTemporaryName does not, so that nobody takes it for half a copy.
[[nodiscard]] QString MakeAsideName();

/// Calls `make` with fresh temporary names until it has made something: it answers false when something has
/// that name already, and reports every other failure itself. Answers the name.
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

/// The name of something that is being built, or was when its program was killed.
[[nodiscard]] bool IsTemporaryName(const QString& name);

/// A name that MakeTemporaryName made: under it there is nothing that is not elsewhere, too.
[[nodiscard]] bool IsOwnTemporaryName(const QString& name);

}  // namespace trevane
