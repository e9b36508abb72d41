#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

class AcceptedCertificates;
class SecretStore;

/// What an FTP connection uses of this computer and its user. Tests give their own.
struct FtpPlace {
  /// The file of trusted certificates, to which an accepted one is added; empty for none. It need not exist.
  QString trustFile = {};
  /// Files of trusted certificates that are only read: an earlier run may have added to them.
  QStringList moreTrustFiles = {};
  /// Those that could not be stored: trusted until the program ends. Null for none.
  std::shared_ptr<AcceptedCertificates> accepted = {};
  /// Lives on the window's thread, and is called there only. Null where the system has none.
  SecretStore* store = nullptr;
};

}  // namespace trevane
