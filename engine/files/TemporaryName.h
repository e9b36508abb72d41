#pragma once

#include <QString>

namespace trevane {

/// A fresh name for something that is being built: ".trevane-", six characters, ".tmp". The last two of the
/// six follow from the random ones before them, so that only this program makes such names.
[[nodiscard]] QString MakeTemporaryName();

/// The same for something that stands aside for a moment and is nowhere else: IsTemporaryName knows it, and
/// IsOwnTemporaryName does not, so that nobody takes it for half a copy.
[[nodiscard]] QString MakeAsideName();

/// The name of something that is being built, or was when its program was killed.
[[nodiscard]] bool IsTemporaryName(const QString& name);

/// A name that MakeTemporaryName made: under it there is nothing that is not elsewhere, too.
[[nodiscard]] bool IsOwnTemporaryName(const QString& name);

}  // namespace trevane
