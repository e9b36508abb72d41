#include "base/Wildcard.h"

#include <QVarLengthArray>

#include <algorithm>

namespace trevane {

namespace {

/// Calls `take` with each code point.
template <typename Take>
void ForEachCharacter(QStringView text, Take take) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      take(QChar::surrogateToUcs4(text[i], text[i + 1]));
      ++i;
    } else {
      take(static_cast<char32_t>(text[i].unicode()));
    }
  }
}

QString AsText(char32_t character) {
  return QChar::requiresSurrogates(character) ? QString::fromUcs4(&character, 1)
                                              : QString(QChar(static_cast<char16_t>(character)));
}

}  // namespace

Wildcard::Wildcard(const QString& pattern) {
  std::vector<char32_t> characters;
  characters.reserve(static_cast<size_t>(pattern.size()));
  ForEachCharacter(pattern, [&](char32_t character) { characters.push_back(character); });
  Parse(characters);
}

void Wildcard::Parse(const std::vector<char32_t>& pattern) {
  for (size_t i = 0; i < pattern.size(); ++i) {
    switch (pattern[i]) {
      case U'*':
        // Runs in a row are one.
        if (pieces_.empty() || pieces_.back().kind != Kind::Run) {
          pieces_.push_back({.kind = Kind::Run});
        }
        break;
      case U'?':
        pieces_.push_back({.kind = Kind::One});
        break;
      case U'#':
        pieces_.push_back({.kind = Kind::Digit});
        break;
      case U'[': {
        const auto from = pattern.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        const auto end = std::find(from, pattern.end(), U']');
        if (end == pattern.end()) {
          problem_ =
              QStringLiteral("The set that begins at character %1 is not closed by a \"]\".").arg(i + 1);
          return;
        }
        const auto to = static_cast<size_t>(end - pattern.begin());
        if (!ReadSet(pattern, i + 1, to)) {
          return;
        }
        i = to;
        break;
      }
      default:
        pieces_.push_back({.kind = Kind::Character, .character = pattern[i]});
    }
  }
}

bool Wildcard::ReadSet(const std::vector<char32_t>& pattern, size_t from, size_t to) {
  if (from == to) {
    return true;
  }
  Piece set{.kind = Kind::Set};
  // Alone it is no sign of a negation: there is nothing to negate.
  set.negated = pattern[from] == U'!' && to - from > 1;
  for (size_t i = from + (set.negated ? 1 : 0); i < to; ++i) {
    const char32_t first = pattern[i];
    char32_t last = first;
    if (i + 2 < to && pattern[i + 1] == U'-') {
      last = pattern[i + 2];
      i += 2;
    }
    if (last < first) {
      problem_ = QStringLiteral("The range \"%1-%2\" does not ascend.").arg(AsText(first), AsText(last));
      return false;
    }
    set.ranges.push_back({first, last});
  }
  pieces_.push_back(std::move(set));
  return true;
}

bool Wildcard::Fits(const Piece& piece, char32_t character) noexcept {
  switch (piece.kind) {
    case Kind::Character:
      return piece.character == character;
    case Kind::One:
      return true;
    case Kind::Digit:
      return character >= U'0' && character <= U'9';
    case Kind::Set:
      return piece.negated != std::any_of(piece.ranges.begin(), piece.ranges.end(), [&](const Range& range) {
               return range.first <= character && character <= range.last;
             });
    case Kind::Run:
      break;
  }
  return false;
}

bool Wildcard::Matches(QStringView text) const {
  if (!IsWellFormed()) {
    return false;
  }
  constexpr qsizetype kUsualName = 256;
  QVarLengthArray<char32_t, kUsualName> name;
  ForEachCharacter(text, [&](char32_t character) { name.append(character); });

  // Only the last run that was passed is ever made longer: whatever an earlier one could take in addition,
  // the last one can take as well.
  constexpr auto kNone = static_cast<size_t>(-1);
  size_t piece = 0;
  qsizetype at = 0;
  size_t run = kNone;
  qsizetype runEnd = 0;
  while (at < name.size()) {
    if (piece < pieces_.size() && pieces_[piece].kind == Kind::Run) {
      run = piece++;
      runEnd = at;
    } else if (piece < pieces_.size() && Fits(pieces_[piece], name[at])) {
      ++piece;
      ++at;
    } else if (run != kNone) {
      piece = run + 1;
      at = ++runEnd;
    } else {
      return false;
    }
  }
  while (piece < pieces_.size() && pieces_[piece].kind == Kind::Run) {
    ++piece;
  }
  return piece == pieces_.size();
}

}  // namespace trevane
