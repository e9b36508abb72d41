#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace trevane::local {

/// Represents a "\" of the name on the disk in a name of the provider.
inline constexpr char16_t kBackslashCarrier = 0xF05C;

/// The provider's form of a name on the disk, without loss: bytes that are no text become lone surrogates
/// (base/NameCodec.h), "\" becomes U+F05C, and a U+F05C on the disk becomes the lone surrogates of its three
/// bytes.
[[nodiscard]] QString FromNativeName(QByteArrayView name);

/// The reverse. Fails with error::kInvalidName, naming `path`, when a name encodes no bytes.
[[nodiscard]] QByteArray ToNativeName(const QString& name, const QString& path);

}  // namespace trevane::local
