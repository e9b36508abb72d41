#include "engine/providers/SftpProvider.h"

namespace trevane {

std::optional<Provider> SftpProvider(SecretStore* /*store*/) {
  return std::nullopt;
}

}  // namespace trevane
