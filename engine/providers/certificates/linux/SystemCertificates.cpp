#include "engine/providers/certificates/SystemCertificates.h"

#include <openssl/x509_vfy.h>

namespace trevane {

void AddSystemCertificates(X509_STORE* store) {
  // A folder in which each certificate is found by the hash of its name: nothing is read before it is needed.
  X509_STORE_set_default_paths(store);
}

}  // namespace trevane
