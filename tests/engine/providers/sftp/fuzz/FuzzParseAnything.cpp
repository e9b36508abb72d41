// What libFuzzer calls. CorpusTest runs the corpus through the same function without it.
#include "tests/engine/providers/sftp/ParseAnything.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static_cast<void>(trevane::sftp::test::ParseAnything(
      QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size))));
  return 0;
}
