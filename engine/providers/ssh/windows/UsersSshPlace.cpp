#include "engine/providers/ssh/SshPlace.h"

#include <QDir>

#include <array>

#include <windows.h>

#include <lmcons.h>

namespace trevane {

SshPlace UsersSshPlace(SecretStore* store) {
  const QString folder = QDir::homePath() + QStringLiteral("/.ssh/");
  SshPlace place;
  place.knownHosts = folder + QStringLiteral("known_hosts");
  const QString shared = qEnvironmentVariable("ProgramData");
  if (!shared.isEmpty()) {
    place.moreKnownHosts = QStringList{shared + QStringLiteral("/ssh/ssh_known_hosts")};
  }
  for (const char* name : {"id_ed25519", "id_ecdsa", "id_rsa"}) {
    place.keyFiles.append(folder + QString::fromLatin1(name));
  }
  std::array<wchar_t, UNLEN + 1> name{};
  DWORD size = static_cast<DWORD>(name.size());
  if (GetUserNameW(name.data(), &size) != FALSE) {
    place.userName = QString::fromWCharArray(name.data());
  }
  place.store = store;
  return place;
}

}  // namespace trevane
