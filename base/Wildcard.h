#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace trevane {

/// A pattern for whole texts, compared letter by letter as they are (to ignore case, give both in lower
/// case):
///
/// - "*" is any run of characters, also none; "?" one character; "#" one digit, 0 to 9.
/// - "[abc]" is one character of the set, "[!abc]" one that is not in it. In a set "a-z" is a range, which
///   must ascend; "-" first or last, or after a range, is a character, and so are "*", "?", "#", "[" and a
///   "!" that is not first. "[]" is the empty text and "[!]" a "!".
/// - Anything else is itself, also a "]" outside a set and a "!".
///
/// A character is a code point; one half of a surrogate pair that is alone counts as one, too.
class Wildcard final {
 public:
  explicit Wildcard(const QString& pattern);

  /// A pattern with a set that is not closed or a range that descends matches nothing.
  [[nodiscard]] bool IsWellFormed() const noexcept { return problem_.isEmpty(); }
  /// The error in the pattern, as a sentence for the user; empty for a well-formed one.
  [[nodiscard]] const QString& Problem() const noexcept { return problem_; }

  /// Takes time in proportion to the length of the text times that of the pattern, at most.
  [[nodiscard]] bool Matches(QStringView text) const;

 private:
  enum class Kind { Character, One, Digit, Run, Set };
  struct Range {
    char32_t first;
    char32_t last;
  };
  struct Piece {
    Kind kind = Kind::Character;
    char32_t character = 0;
    bool negated = false;
    std::vector<Range> ranges = {};
  };

  void Parse(const std::vector<char32_t>& pattern);
  /// Reads the characters between the brackets.
  [[nodiscard]] bool ReadSet(const std::vector<char32_t>& pattern, size_t from, size_t to);
  [[nodiscard]] static bool Fits(const Piece& piece, char32_t character) noexcept;

  std::vector<Piece> pieces_;
  QString problem_;
};

}  // namespace trevane
