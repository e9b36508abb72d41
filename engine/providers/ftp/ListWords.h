#pragma once

#include <QByteArrayView>
#include <QtGlobal>

#include <array>
#include <optional>

namespace trevane::ftp {

/// The first words of a line, separated by blanks and tabs. So many that a date is among them; what follows
/// is a name, however long.
class ListWords {
 public:
  explicit ListWords(QByteArrayView line) noexcept;

  [[nodiscard]] int Count() const noexcept { return count_; }
  /// The empty view beyond the last one.
  [[nodiscard]] QByteArrayView At(int at) const noexcept;
  /// Where the word begins and ends in the line.
  [[nodiscard]] qsizetype Begin(int at) const noexcept { return words_[static_cast<size_t>(at)].begin; }
  [[nodiscard]] qsizetype End(int at) const noexcept { return words_[static_cast<size_t>(at)].end; }
  [[nodiscard]] QByteArrayView Line() const noexcept { return line_; }

 private:
  static constexpr int kMost = 24;
  struct Word {
    qsizetype begin = 0;
    qsizetype end = 0;
  };

  QByteArrayView line_;
  std::array<Word, kMost> words_ = {};
  int count_ = 0;
};

[[nodiscard]] constexpr bool IsDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}
[[nodiscard]] constexpr bool IsBlank(char c) noexcept {
  return c == ' ' || c == '\t';
}
[[nodiscard]] constexpr bool IsAscii(char c) noexcept {
  return static_cast<unsigned char>(c) < 0x80;
}
[[nodiscard]] constexpr char Lower(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
[[nodiscard]] constexpr bool IsLetter(char c) noexcept {
  return Lower(c) >= 'a' && Lower(c) <= 'z';
}

/// At least one digit and nothing else.
[[nodiscard]] bool IsNumber(QByteArrayView text) noexcept;
/// A number of at most 18 digits.
[[nodiscard]] std::optional<qint64> NumberIn(QByteArrayView text) noexcept;
/// Without regard to the case of ASCII letters.
[[nodiscard]] bool IsSame(QByteArrayView text, QByteArrayView other) noexcept;
[[nodiscard]] bool BeginsWith(QByteArrayView text, QByteArrayView other) noexcept;
/// Without the blanks and tabs around it.
[[nodiscard]] QByteArrayView WithoutOuterBlanks(QByteArrayView text) noexcept;

}  // namespace trevane::ftp
