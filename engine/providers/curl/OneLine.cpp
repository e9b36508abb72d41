#include "engine/providers/curl/OneLine.h"

#include "base/RunTimeError.h"

#include <QString>

#include <algorithm>

namespace trevane::curl {

bool HoldsLineBreak(QByteArrayView bytes) noexcept {
  return std::any_of(bytes.begin(), bytes.end(),
                     [](char each) { return each == '\r' || each == '\n' || each == '\0'; });
}

void RequireOneLine(QByteArrayView bytes) {
  if (bytes.isEmpty() || HoldsLineBreak(bytes)) {
    throw RunTimeError(error::kInvalidName,
                       QStringLiteral("A name with a line break cannot be told to an FTP server"));
  }
}

void RequireAddressable(const QByteArray& path) {
  RequireOneLine(path);
  constexpr unsigned char kFirstPrintable = 0x20;
  const bool isPlain = std::none_of(
      path.begin(), path.end(), [](char each) { return static_cast<unsigned char>(each) < kFirstPrintable; });
  if (!isPlain || path.endsWith('/')) {
    throw RunTimeError(error::kInvalidName,
                       QStringLiteral("A name with control characters cannot be transferred over FTP"));
  }
}

}  // namespace trevane::curl
