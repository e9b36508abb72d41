#include "engine/providers/local/linux/NativeName.h"

#include "base/NameCodec.h"
#include "engine/files/ProviderError.h"

#include <algorithm>
#include <cstring>

namespace trevane::local {
namespace {

constexpr char kCarrierBytes[] = "\xEF\x81\x9C";
constexpr qsizetype kCarrierLength = 3;
constexpr char16_t kEscapeBase = 0xDC00;

bool IsPlain(QByteArrayView name) {
  for (const char c : name) {
    if (static_cast<signed char>(c) < 0 || c == '\\') {
      return false;
    }
  }
  return true;
}

// For text without a carrier.
void AppendDecoded(QString& text, QByteArrayView bytes) {
  QString part = DecodeBytes(bytes);
  part.replace(u'\\', QChar(kBackslashCarrier));
  text += part;
}

}  // namespace

QString FromNativeName(QByteArrayView name) {
  if (IsPlain(name)) {
    return QString::fromLatin1(name);
  }
  // 0xEF always begins a character, so that splitting before it is safe.
  QString text;
  qsizetype start = 0;
  for (;;) {
    const qsizetype at = name.sliced(start).indexOf(QByteArrayView(kCarrierBytes, kCarrierLength));
    if (at < 0) {
      AppendDecoded(text, name.sliced(start));
      return text;
    }
    AppendDecoded(text, name.sliced(start, at));
    for (qsizetype i = 0; i < kCarrierLength; ++i) {
      text += QChar(static_cast<char16_t>(kEscapeBase + static_cast<unsigned char>(kCarrierBytes[i])));
    }
    start += at + kCarrierLength;
  }
}

QByteArray ToNativeName(const QString& name, const QString& path) {
  const auto isAscii = [](QChar c) { return c.unicode() < 0x80; };
  if (std::all_of(name.begin(), name.end(), isAscii)) {
    return name.toLatin1();
  }
  QString text = name;
  text.replace(QChar(kBackslashCarrier), QChar(u'\\'));
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      ++i;
    } else if (c.isSurrogate() && (c.unicode() < kEscapeBase + 0x80 || c.unicode() > kEscapeBase + 0xFF)) {
      Fail(error::kInvalidName, path);
    }
  }
  QByteArray bytes = EncodeText(text);
  // Lone surrogates encode bytes from 0x80 on, so they never become "/" or NUL.
  return bytes;
}

}  // namespace trevane::local
