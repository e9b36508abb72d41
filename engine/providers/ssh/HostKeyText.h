#pragma once

#include "engine/providers/ssh/SshHandles.h"

#include <QByteArray>
#include <QString>

namespace trevane {

/// "SHA256:..." as other programs show it, too; empty where the library cannot compute it.
[[nodiscard]] QString FingerprintOf(ssh_key key);
/// "ssh-ed25519"
[[nodiscard]] QByteArray KeyTypeOf(ssh_key key);
/// The key itself, without its type; empty where the library fails.
[[nodiscard]] QByteArray Base64Of(ssh_key key);

}  // namespace trevane
