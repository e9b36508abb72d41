#pragma once

#include "tests/engine/providers/ProviderBed.h"

#include <vector>

namespace trevane::test {

/// The providers of FTP, a line for each server.
[[nodiscard]] std::vector<ProviderCase> FtpProviders();

}  // namespace trevane::test
