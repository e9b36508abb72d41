#pragma once

#include <QStringList>
#include <QtGlobal>

namespace trevane::test {

/// The addresses at which the process and its children listen, "127.0.0.1:2222", from the system's tables.
[[nodiscard]] QStringList ListeningAddresses(qint64 process);
/// A port of 127.0.0.1 at which nobody listened a moment ago.
[[nodiscard]] quint16 FreePort();

}  // namespace trevane::test
