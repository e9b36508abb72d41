#include "engine/providers/ssh/SshPlace.h"

#include <QDir>
#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace trevane {

SshPlace UsersSshPlace(SecretStore* store) {
  const QString folder = QDir::homePath() + QStringLiteral("/.ssh/");
  SshPlace place;
  place.knownHosts = folder + QStringLiteral("known_hosts");
  place.moreKnownHosts =
      QStringList{folder + QStringLiteral("known_hosts2"), QStringLiteral("/etc/ssh/ssh_known_hosts"),
                  QStringLiteral("/etc/ssh/ssh_known_hosts2")};
  for (const char* name : {"id_ed25519", "id_ecdsa", "id_rsa"}) {
    place.keyFiles.append(folder + QString::fromLatin1(name));
  }
  place.agent = qEnvironmentVariable("SSH_AUTH_SOCK");
  if (const passwd* user = ::getpwuid(::getuid())) {
    place.userName = QFile::decodeName(user->pw_name);
  }
  place.store = store;
  return place;
}

}  // namespace trevane
