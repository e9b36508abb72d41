#include "engine/providers/ftp/ListWords.h"

#include <algorithm>

namespace trevane::ftp {

ListWords::ListWords(QByteArrayView line) noexcept : line_(line) {
  qsizetype at = 0;
  while (count_ < kMost) {
    while (at < line.size() && IsBlank(line[at])) {
      ++at;
    }
    if (at == line.size()) {
      return;
    }
    Word& word = words_[static_cast<size_t>(count_)];
    word.begin = at;
    while (at < line.size() && !IsBlank(line[at])) {
      ++at;
    }
    word.end = at;
    ++count_;
  }
}

QByteArrayView ListWords::At(int at) const noexcept {
  if (at < 0 || at >= count_) {
    return {};
  }
  const Word& word = words_[static_cast<size_t>(at)];
  return line_.sliced(word.begin, word.end - word.begin);
}

bool IsNumber(QByteArrayView text) noexcept {
  return !text.isEmpty() && std::all_of(text.begin(), text.end(), IsDigit);
}

std::optional<qint64> NumberIn(QByteArrayView text) noexcept {
  constexpr qsizetype kMostDigits = 18;
  if (text.size() > kMostDigits || !IsNumber(text)) {
    return std::nullopt;
  }
  qint64 number = 0;
  for (const char digit : text) {
    number = number * 10 + (digit - '0');
  }
  return number;
}

bool IsSame(QByteArrayView text, QByteArrayView other) noexcept {
  return text.size() == other.size() && BeginsWith(text, other);
}

bool BeginsWith(QByteArrayView text, QByteArrayView other) noexcept {
  return text.size() >= other.size() &&
         std::equal(other.begin(), other.end(), text.begin(),
                    [](char left, char right) { return Lower(left) == Lower(right); });
}

QByteArrayView WithoutOuterBlanks(QByteArrayView text) noexcept {
  while (!text.isEmpty() && IsBlank(text.front())) {
    text = text.sliced(1);
  }
  while (!text.isEmpty() && IsBlank(text.back())) {
    text.chop(1);
  }
  return text;
}

}  // namespace trevane::ftp
