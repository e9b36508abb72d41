#pragma once

#include <QString>
#include <QStringList>

namespace trevane {

class SecretStore;

/// What an SSH connection uses of this computer and its user. Tests give their own.
struct SshPlace {
  /// The file of known host keys, to which an accepted one is added.
  QString knownHosts;
  /// Files of known host keys that are only read, for instance those of the whole system.
  QStringList moreKnownHosts = {};
  /// The private keys that are tried where the settings name none. Those that are missing are no error.
  QStringList keyFiles = {};
  /// The socket of the agent (on Windows the name of its pipe); empty for none.
  QString agent = {};
  /// The user's name on this computer.
  QString userName;
  /// Lives on the window's thread, and is called there only. Null where the system has none.
  SecretStore* store = nullptr;
};

/// The place of the user who runs the program.
[[nodiscard]] SshPlace UsersSshPlace(SecretStore* store);

}  // namespace trevane
