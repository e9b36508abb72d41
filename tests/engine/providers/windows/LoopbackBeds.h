#pragma once

#include "tests/engine/providers/ProviderBed.h"

#include <vector>

namespace trevane::test {

/// The providers over the servers that are started beside Wine (tools/loopback-servers.sh), a line for each.
[[nodiscard]] std::vector<ProviderCase> LoopbackProviders();

}  // namespace trevane::test
