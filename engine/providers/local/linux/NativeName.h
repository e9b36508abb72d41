#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace trevane::local {

/// Stands in a name of the provider for a "\" in the name on the disk.
inline constexpr char16_t kBackslashCarrier = 0xF05C;

/// The provider's form of a name on the disk, without loss: bytes that are no text become lone surrogates
/// (platform/NameCodec.h), "\" becomes U+F05C, and a U+F05C that really stands there becomes the lone
/// surrogates of its three bytes.
[[nodiscard]] QString FromNativeName(QByteArrayView name);

/// The way back. Fails with error::kInvalidName, naming `path`, when a name stands for no bytes.
[[nodiscard]] QByteArray ToNativeName(const QString& name, const QString& path);

}  // namespace trevane::local
