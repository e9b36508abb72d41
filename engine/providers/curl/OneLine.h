#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace trevane::curl {

/// Bytes that would end a command in its middle.
[[nodiscard]] bool HoldsLineBreak(QByteArrayView bytes) noexcept;
/// Fails with error::kInvalidName for bytes that would be none or more than one command.
void RequireOneLine(QByteArrayView bytes);
/// Fails likewise for a path that the library refuses in an address.
void RequireAddressable(const QByteArray& path);

}  // namespace trevane::curl
