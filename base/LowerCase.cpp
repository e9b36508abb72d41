#include "base/LowerCase.h"

namespace trevane {
namespace {

/// The lower case of one code unit that is no surrogate.
char16_t LowerUnit(char16_t unit) noexcept {
  if (unit < 0x80) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
  }
  const char32_t lower = QChar::toLower(static_cast<char32_t>(unit));
  // A mapping out of the basic plane would change the length; there is none, and none is made up here.
  return lower < 0x10000 ? static_cast<char16_t>(lower) : unit;
}

/// The lower case of the text, unit by unit, in place of an iterator over code points: a pair maps to a pair,
/// so every position keeps its meaning.
class LowerUnits {
 public:
  explicit LowerUnits(QStringView text) noexcept : units_(text.utf16()), size_(text.size()) {}

  [[nodiscard]] char16_t At(qsizetype i) const noexcept {
    const char16_t unit = units_[i];
    if (!QChar::isSurrogate(unit)) {
      return LowerUnit(unit);
    }
    if (QChar::isHighSurrogate(unit)) {
      return i + 1 < size_ && QChar::isLowSurrogate(units_[i + 1])
                 ? QChar::highSurrogate(LowerPair(unit, units_[i + 1]))
                 : unit;
    }
    return i > 0 && QChar::isHighSurrogate(units_[i - 1])
               ? QChar::lowSurrogate(LowerPair(units_[i - 1], unit))
               : unit;
  }

 private:
  static char32_t LowerPair(char16_t high, char16_t low) noexcept {
    const char32_t whole = QChar::surrogateToUcs4(high, low);
    const char32_t lower = QChar::toLower(whole);
    return lower >= 0x10000 ? lower : whole;
  }

  const char16_t* units_;
  qsizetype size_;
};

}  // namespace

QString LowerCase(const QString& text) {
  const LowerUnits lower(text);
  const char16_t* units = QStringView(text).utf16();
  const qsizetype size = text.size();
  qsizetype i = 0;
  while (i < size && lower.At(i) == units[i]) {
    ++i;
  }
  if (i == size) {
    return text;  // Shared, not copied: most names are lower case already.
  }
  QString result = text;
  QChar* out = result.data();
  for (; i < size; ++i) {
    out[i] = QChar(lower.At(i));
  }
  return result;
}

void AppendLowerCase(QStringView text, std::vector<char16_t>& units) {
  const LowerUnits lower(text);
  for (qsizetype i = 0; i < text.size(); ++i) {
    units.push_back(lower.At(i));
  }
}

bool EqualIgnoringCase(QStringView left, QStringView right) noexcept {
  return left.size() == right.size() && StartsWithIgnoringCase(left, right);
}

int CompareIgnoringCase(QStringView left, QStringView right) noexcept {
  const LowerUnits lowerLeft(left);
  const LowerUnits lowerRight(right);
  const qsizetype common = qMin(left.size(), right.size());
  for (qsizetype i = 0; i < common; ++i) {
    if (left[i] == right[i] && !left[i].isSurrogate()) {
      continue;
    }
    const char16_t a = lowerLeft.At(i);
    const char16_t b = lowerRight.At(i);
    if (a != b) {
      return a < b ? -1 : 1;
    }
  }
  return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

bool StartsWithIgnoringCase(QStringView text, QStringView prefix) noexcept {
  if (text.size() < prefix.size()) {
    return false;
  }
  const LowerUnits lowerText(text);
  const LowerUnits lowerPrefix(prefix);
  for (qsizetype i = 0; i < prefix.size(); ++i) {
    if (text[i] == prefix[i] && !text[i].isSurrogate()) {
      continue;
    }
    if (lowerText.At(i) != lowerPrefix.At(i)) {
      return false;
    }
  }
  return true;
}

size_t HashIgnoringCase(QStringView text, size_t seed) noexcept {
  const LowerUnits lower(text);
  quint64 hash = 0xcbf29ce484222325ULL ^ seed;
  for (qsizetype i = 0; i < text.size(); ++i) {
    hash = (hash ^ lower.At(i)) * 0x9E3779B97F4A7C15ULL;
    hash ^= hash >> 32;
  }
  return static_cast<size_t>(hash);
}

}  // namespace trevane
