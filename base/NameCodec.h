#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace trevane {

/// UTF-8 to text without loss: a byte that is no part of well-formed UTF-8 becomes the lone surrogate U+DC00
/// plus the byte (U+DC80 to U+DCFF). A byte order mark is kept as U+FEFF. An empty text is never null.
[[nodiscard]] QString DecodeBytes(QByteArrayView bytes);

/// The way back: EncodeText(DecodeBytes(b)) == b for every b. A lone surrogate that represents no byte
/// becomes U+FFFD.
[[nodiscard]] QByteArray EncodeText(QStringView text);

/// The largest length of UTF-8 up to `limit` that cuts no character in two. Bytes that are no character may
/// be cut anywhere; a limit below 0 is 0.
[[nodiscard]] qsizetype CutLength(QByteArrayView bytes, qsizetype limit);

}  // namespace trevane
