#pragma once

#include <QByteArray>
#include <QString>

namespace trevane::certificatetext {

/// Bytes of SHA-256.
inline constexpr int kFingerprintSize = 32;

/// "3A:F0:...", as other programs show it, too.
[[nodiscard]] QString FingerprintText(const QByteArray& fingerprint);
/// The same in two lines, for a window.
[[nodiscard]] QString FingerprintLines(const QByteArray& fingerprint);
/// Reads it back, in letters of either case and also without colons; empty where it is none.
[[nodiscard]] QByteArray ReadFingerprint(const QByteArray& text);

}  // namespace trevane::certificatetext
