#include "engine/providers/certificates/SystemCertificates.h"

#include <windows.h>

#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <wincrypt.h>

namespace trevane {

void AddSystemCertificates(x509_store_st* store) {
  const HCERTSTORE system = ::CertOpenSystemStoreW(0, L"ROOT");
  if (system == nullptr) {
    return;
  }
  PCCERT_CONTEXT each = nullptr;
  while ((each = ::CertEnumCertificatesInStore(system, each)) != nullptr) {
    const unsigned char* bytes = each->pbCertEncoded;
    X509* const certificate = ::d2i_X509(nullptr, &bytes, static_cast<long>(each->cbCertEncoded));
    if (certificate != nullptr) {
      ::X509_STORE_add_cert(store, certificate);
      ::X509_free(certificate);
    }
  }
  ::CertCloseStore(system, 0);
}

}  // namespace trevane
