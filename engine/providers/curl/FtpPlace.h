#pragma once

#include "engine/providers/certificates/TrustPlace.h"

namespace trevane {

class SecretStore;

/// What an FTP connection uses of this computer and its user. Tests give their own.
struct FtpPlace {
  TrustPlace trust = {};
  /// Lives on the window's thread, and is called there only. Null where the system has none.
  SecretStore* store = nullptr;
};

}  // namespace trevane
