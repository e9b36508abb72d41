#pragma once

/// X509_STORE. OpenSSL's own header has to come after those of Windows.
struct x509_store_st;

namespace trevane {

/// Adds the certificates that this computer trusts.
void AddSystemCertificates(x509_store_st* store);

}  // namespace trevane
