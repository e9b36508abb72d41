// What libFuzzer calls. FtpCorpusTest runs the corpus through the same function without it.
#include "tests/engine/providers/ftp/ParseAnything.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const QByteArray wrong = trevane::ftp::test::ParseAnything(
      QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
  if (!wrong.isEmpty()) {
    std::fprintf(stderr, "%s\n", wrong.constData());
    std::abort();
  }
  return 0;
}
