#pragma once

#include "tests/support/ftp/FtpTestKeys.h"

namespace trevane::test {

/// What the lines of one server use for TLS.
struct FtpTestContexts {
  FtpTestKeys keys = {};
  FtpTestKeys::Context lines = keys.MakeContext(false, true);
  FtpTestKeys::Context linesUpTo12 = keys.MakeContext(true, true);
  /// For data that never resume a session.
  FtpTestKeys::Context data = keys.MakeContext(false, false);
  FtpTestKeys::Context dataUpTo12 = keys.MakeContext(true, false);
};

}  // namespace trevane::test
