#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

class AcceptedCertificates;

/// Where the certificates stand that the user trusts.
struct TrustPlace {
  /// The file to which an accepted one is added; empty for none. It need not exist.
  QString file = {};
  /// Files that are only read: an earlier run may have added to them.
  QStringList moreFiles = {};
  /// Those that could not be stored: trusted until the program ends. Null for none.
  std::shared_ptr<AcceptedCertificates> accepted = {};
};

}  // namespace trevane
