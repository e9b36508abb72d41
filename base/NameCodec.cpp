#include "base/NameCodec.h"

#include <algorithm>
#include <cstring>

namespace trevane {
namespace {

constexpr char16_t kEscapeBase = 0xDC00;
constexpr char16_t kReplacement = 0xFFFD;

bool IsAscii(QByteArrayView bytes) {
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  for (; end - at >= 8; at += 8) {
    quint64 word = 0;
    std::memcpy(&word, at, sizeof word);
    if ((word & 0x8080808080808080ULL) != 0) {
      return false;
    }
  }
  for (; at != end; ++at) {
    if ((static_cast<unsigned char>(*at) & 0x80U) != 0) {
      return false;
    }
  }
  return true;
}

bool IsContinuation(unsigned char byte, unsigned char low = 0x80, unsigned char high = 0xBF) {
  return byte >= low && byte <= high;
}

// Length of the well-formed sequence that begins with `at`, 0 when there is none (Unicode, table 3-7).
int SequenceLength(const unsigned char* at, const unsigned char* end) {
  const auto left = end - at;
  const unsigned char first = at[0];
  if (first < 0x80) {
    return 1;
  }
  if (first >= 0xC2 && first <= 0xDF) {
    return left >= 2 && IsContinuation(at[1]) ? 2 : 0;
  }
  if (first >= 0xE0 && first <= 0xEF) {
    const unsigned char low = first == 0xE0 ? 0xA0 : 0x80;
    const unsigned char high = first == 0xED ? 0x9F : 0xBF;
    return left >= 3 && IsContinuation(at[1], low, high) && IsContinuation(at[2]) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const unsigned char low = first == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = first == 0xF4 ? 0x8F : 0xBF;
    return left >= 4 && IsContinuation(at[1], low, high) && IsContinuation(at[2]) && IsContinuation(at[3])
               ? 4
               : 0;
  }
  return 0;
}

char* PutUnit(char* out, char16_t unit) {
  if (unit < 0x80) {
    *out++ = static_cast<char>(unit);
  } else if (unit < 0x800) {
    *out++ = static_cast<char>(0xC0 | (unit >> 6));
    *out++ = static_cast<char>(0x80 | (unit & 0x3F));
  } else {
    *out++ = static_cast<char>(0xE0 | (unit >> 12));
    *out++ = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
    *out++ = static_cast<char>(0x80 | (unit & 0x3F));
  }
  return out;
}

}  // namespace

QString DecodeBytes(QByteArrayView bytes) {
  if (bytes.isEmpty()) {
    return QString(QLatin1StringView(""));
  }
  if (IsAscii(bytes)) {
    return QString::fromLatin1(bytes);
  }
  // No byte makes more than one UTF-16 unit.
  QString text(bytes.size(), Qt::Uninitialized);
  auto* out = reinterpret_cast<char16_t*>(text.data());
  const char16_t* const begin = out;
  const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* const end = at + bytes.size();
  while (at != end) {
    const int length = SequenceLength(at, end);
    switch (length) {
      case 1:
        *out++ = at[0];
        break;
      case 2:
        *out++ = static_cast<char16_t>(((at[0] & 0x1F) << 6) | (at[1] & 0x3F));
        break;
      case 3:
        *out++ = static_cast<char16_t>(((at[0] & 0x0F) << 12) | ((at[1] & 0x3F) << 6) | (at[2] & 0x3F));
        break;
      case 4: {
        const char32_t code = (char32_t(at[0] & 0x07) << 18) | (char32_t(at[1] & 0x3F) << 12) |
                              (char32_t(at[2] & 0x3F) << 6) | char32_t(at[3] & 0x3F);
        *out++ = QChar::highSurrogate(code);
        *out++ = QChar::lowSurrogate(code);
        break;
      }
      default:
        *out++ = static_cast<char16_t>(kEscapeBase + at[0]);
        break;
    }
    at += length == 0 ? 1 : length;
  }
  text.truncate(out - begin);
  return text;
}

QByteArray EncodeText(QStringView text) {
  // No UTF-16 unit makes more than three bytes: a pair makes four.
  QByteArray bytes(text.size() * 3, Qt::Uninitialized);
  char* out = bytes.data();
  const char* const begin = out;
  const char16_t* at = text.utf16();
  const char16_t* const end = at + text.size();
  while (at != end) {
    const char16_t unit = *at++;
    if (unit < 0x80) {
      *out++ = static_cast<char>(unit);
    } else if (!QChar::isSurrogate(unit)) {
      out = PutUnit(out, unit);
    } else if (QChar::isHighSurrogate(unit) && at != end && QChar::isLowSurrogate(*at)) {
      const char32_t code = QChar::surrogateToUcs4(unit, *at++);
      *out++ = static_cast<char>(0xF0 | (code >> 18));
      *out++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      *out++ = static_cast<char>(0x80 | (code & 0x3F));
    } else if (unit >= kEscapeBase + 0x80 && unit <= kEscapeBase + 0xFF) {
      *out++ = static_cast<char>(unit - kEscapeBase);
    } else {
      out = PutUnit(out, kReplacement);
    }
  }
  bytes.truncate(out - begin);
  return bytes;
}

qsizetype CutLength(QByteArrayView bytes, qsizetype limit) {
  if (bytes.size() <= limit) {
    return bytes.size();
  }
  limit = std::max<qsizetype>(limit, 0);
  for (qsizetype back = 1; back <= 3 && back <= limit; ++back) {
    const auto byte = static_cast<unsigned char>(bytes[limit - back]);
    if ((byte & 0xC0) == 0x80) {
      continue;
    }
    const int length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    if (length <= back || limit - back + length > bytes.size()) {
      return limit;
    }
    // Only a whole character is kept together; bytes that are none may be cut anywhere.
    const QString character = DecodeBytes(bytes.sliced(limit - back, length));
    return character.size() < length ? limit - back : limit;
  }
  return limit;
}

}  // namespace trevane
