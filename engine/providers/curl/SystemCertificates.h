#pragma once

#include <openssl/types.h>

namespace trevane::curl {

/// Adds the certificates that this computer trusts.
void AddSystemCertificates(X509_STORE* store);

}  // namespace trevane::curl
