#pragma once

#include "platform/SecretStore.h"

#include <functional>
#include <memory>

namespace trevane {

/// The store of the user who runs the program: on Linux the desktop's (Secret Service or KWallet), on Windows
/// the Credential Manager. It never has the desktop ask to be unlocked: a locked store is one that is not
/// there.
///
/// A store that does not answer is waited for in an event loop, for kLongestSecretWait milliseconds at most
/// and only until `isCancelled`, which may be null.
[[nodiscard]] std::unique_ptr<SecretStore> MakeSecretStore(std::function<bool()> isCancelled);

inline constexpr int kLongestSecretWait = 5000;

}  // namespace trevane
