#pragma once

#include "engine/files/ProviderError.h"

#include <QString>

namespace trevane {

/// The forms of temporary names, from the clearest to the one that most devices take.
enum class TemporaryForm {
  /// ".trevane-", six characters, ".tmp".
  Long,
  /// Eight characters and ".TMP", all of them capital letters and digits.
  Short,
  /// The same eight characters and the extension of the target.
  OwnExtension
};

/// A fresh name for an item that is being built. Some of its characters are a checksum of the random ones
/// before them, so that only this program makes such names.
[[nodiscard]] QString MakeTemporaryName();
/// For a device that does not take every name. `target` is the name that the item gets in the end.
[[nodiscard]] QString MakeTemporaryName(TemporaryForm form, const QString& target);

/// The same for an item that is moved aside for a moment and has no other copy: IsTemporaryName accepts it
/// and IsOwnTemporaryName does not, so that it is never removed as an unfinished copy.
[[nodiscard]] QString MakeAsideName();
[[nodiscard]] QString MakeAsideName(TemporaryForm form, const QString& target);

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

/// Whether the name is that of an item that is being built, or was when its program was killed. The short
/// forms are recognized in either case of letters, since devices change it.
[[nodiscard]] bool IsTemporaryName(const QString& name);

/// Whether MakeTemporaryName made the name: an item under it also exists elsewhere. Names with the target's
/// own extension look too much like a user's and are never taken for such.
[[nodiscard]] bool IsOwnTemporaryName(const QString& name);

}  // namespace trevane
