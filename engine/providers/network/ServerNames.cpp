#include "engine/providers/network/ServerNames.h"

#include "base/NameCodec.h"
#include "engine/files/ProviderError.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <QStringList>

#include <algorithm>

namespace trevane {
namespace {

constexpr char16_t kCarrier = 0xF05C;
constexpr char kCarrierBytes[] = "\xEF\x81\x9C";
constexpr qsizetype kCarrierLength = 3;
constexpr char16_t kEscapeBase = 0xDC00;

bool IsPlain(QByteArrayView name) {
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return static_cast<signed char>(c) >= 0 && c != '\\'; });
}

bool IsEscape(QChar unit) {
  return unit.unicode() >= kEscapeBase + 0x80 && unit.unicode() <= kEscapeBase + 0xFF;
}

QString Escaped(QByteArrayView bytes) {
  QString text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += QChar(static_cast<char16_t>(byte < 0x80 ? byte : kEscapeBase + byte));
  }
  return text;
}

/// Every surrogate without its half stands for a byte.
bool IsWellFormed(QStringView text) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      ++i;
    } else if (text[i].isSurrogate() && !IsEscape(text[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace

ServerNames::ServerNames(const QString& encoding) {
  if (encoding.isEmpty() || encoding.compare(u"UTF-8", Qt::CaseInsensitive) == 0) {
    return;
  }
  encoding_ = encoding.toLatin1();
  const QStringDecoder decoder(encoding_.constData());
  const QStringEncoder encoder(encoding_.constData());
  if (!decoder.isValid() || !encoder.isValid()) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("The encoding %1 is not known here").arg(encoding));
  }
}

QString ServerNames::Decode(QByteArrayView name) const {
  if (encoding_.isEmpty()) {
    return DecodeBytes(name);
  }
  QStringDecoder decoder(encoding_.constData(), QStringConverter::Flag::Stateless);
  QString text = decoder(name);
  QByteArray back;
  return !decoder.hasError() && Encode(text, back) && back == name ? text : Escaped(name);
}

bool ServerNames::Encode(QStringView text, QByteArray& bytes) const {
  QStringEncoder encoder(encoding_.constData(), QStringConverter::Flag::Stateless);
  const QByteArray encoded = encoder(text);
  QStringDecoder decoder(encoding_.constData(), QStringConverter::Flag::Stateless);
  const QString back = decoder(encoded);
  // A character that the encoding lacks becomes another one.
  if (encoder.hasError() || back != text) {
    return false;
  }
  bytes += encoded;
  return true;
}

QString ServerNames::FromServer(QByteArrayView name) const {
  if (IsPlain(name)) {
    return QString::fromLatin1(name);
  }
  QString text;
  const auto append = [&](QByteArrayView part) {
    QString decoded = Decode(part);
    decoded.replace(u'\\', QChar(kCarrier));
    text += decoded;
  };
  // Only in UTF-8 a name can hold the carrier itself: its bytes are kept as such. 0xEF always begins a
  // character there.
  for (qsizetype start = 0;;) {
    const qsizetype at =
        encoding_.isEmpty() ? name.sliced(start).indexOf(QByteArrayView(kCarrierBytes, kCarrierLength)) : -1;
    if (at < 0) {
      append(name.sliced(start));
      return text;
    }
    append(name.sliced(start, at));
    text += Escaped(QByteArrayView(kCarrierBytes, kCarrierLength));
    start += at + kCarrierLength;
  }
}

QByteArray ServerNames::ToServer(const QString& name, const QString& path) const {
  if (!IsWellFormed(name)) {
    Fail(error::kInvalidName, path);
  }
  QString text = name;
  text.replace(QChar(kCarrier), QChar(u'\\'));
  if (encoding_.isEmpty()) {
    return EncodeText(text);
  }
  QByteArray bytes;
  for (qsizetype i = 0; i < text.size();) {
    if (IsEscape(text[i])) {
      bytes += static_cast<char>(text[i].unicode() - kEscapeBase);
      ++i;
      continue;
    }
    qsizetype end = i;
    // The second half of a pair lies in the same range.
    while (end < text.size() && !IsEscape(text[end])) {
      end += text[end].isHighSurrogate() ? 2 : 1;
    }
    end = std::min(end, text.size());
    if (!Encode(QStringView(text).sliced(i, end - i), bytes)) {
      Fail(error::kInvalidName,
           QStringLiteral("The encoding %1 cannot hold the name").arg(QString::fromLatin1(encoding_)), path);
    }
    i = end;
  }
  return bytes;
}

QString ServerNames::PathFromServer(const QByteArray& path) const {
  QStringList names;
  for (const QByteArray& name : path.split('/')) {
    if (!name.isEmpty()) {
      names += FromServer(name);
    }
  }
  return names.join(u'\\');
}

bool ServerNames::IsName(const QByteArray& name) noexcept {
  return !name.isEmpty() && name != "." && name != ".." && !name.contains('/') && !name.contains('\0');
}

}  // namespace trevane
