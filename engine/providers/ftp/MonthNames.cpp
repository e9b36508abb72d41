#include "engine/providers/ftp/MonthNames.h"

#include "engine/providers/ftp/ListWords.h"

#include <QByteArray>
#include <QHash>

#include <array>
#include <string_view>

namespace trevane::ftp {
namespace {

// A row a month, in lower case. A letter with an accent is "?", since its bytes depend on the encoding.
constexpr std::array<std::string_view, 12> kLatinNames{
    "jan january janv januar januari janvier ene enero gen gennaio sty tammi led oca",
    "feb february febr februar februari f?v f?vr f?vrier febrero febbraio fev lut helmi ?no ?ub",
    "mar march mrz m?r m?rz mars marzo mrt maart maalis b?e m?rc",
    "apr april avr avril abr abril aprile kwi huhti dub nis ?pr",
    "may mai mag maggio mayo mei maj touko kv? m?j",
    "jun june juni juin junio giu giugno cze kes? ?en haz j?n",
    "jul july juli juil juillet julio lug luglio lip hein? ?ec tem j?l",
    "aug august ao? ao?t ago agosto augustus sie elo srp a?u",
    "sep sept september septembre septiembre set settembre wrz syys z? eyl szept",
    "oct october okt oktober octobre octubre ott ottobre pa? loka ?j out eki",
    "nov november novembre noviembre lis marras kas",
    "dec december dez dezember d?c d?cembre dic diciembre dicembre gru joulu des pro ara",
};

const QHash<QByteArray, int>& LatinNames() {
  static const QHash<QByteArray, int> names = [] {
    QHash<QByteArray, int> result;
    int month = 0;
    for (std::string_view row : kLatinNames) {
      ++month;
      while (!row.empty()) {
        const size_t size = row.find(' ');
        const std::string_view name = row.substr(0, size);
        result.insert(QByteArray(name.data(), static_cast<qsizetype>(name.size())), month);
        row.remove_prefix(size == std::string_view::npos ? row.size() : size + 1);
      }
    }
    return result;
  }();
  return names;
}

// The first letters of the months, as numbers of the letters of the Russian alphabet from 0 on.
struct RussianName {
  std::array<int, 3> letters;
  int month;
};
constexpr std::array<RussianName, 13> kRussianNames{{
    {{31, 13, 2}, 1},
    {{20, 5, 2}, 2},
    {{12, 0, 16}, 3},
    {{0, 15, 16}, 4},
    {{12, 0, 9}, 5},
    {{12, 0, 31}, 5},
    {{8, 30, 13}, 6},
    {{8, 30, 11}, 7},
    {{0, 2, 3}, 8},
    {{17, 5, 13}, 9},
    {{14, 10, 18}, 10},
    {{13, 14, 31}, 11},
    {{4, 5, 10}, 12},
}};

constexpr int kNoLetter = -1;

int LetterInWindows(unsigned char byte) {
  return byte >= 0xC0 ? (byte - 0xC0) % 32 : kNoLetter;
}

int LetterInDos(unsigned char byte) {
  if (byte >= 0x80 && byte < 0xB0) {
    return (byte - 0x80) % 32;
  }
  return byte >= 0xE0 && byte < 0xF0 ? byte - 0xE0 + 16 : kNoLetter;
}

int LetterInIso(unsigned char byte) {
  return byte >= 0xB0 && byte < 0xF0 ? (byte - 0xB0) % 32 : kNoLetter;
}

int LetterInKoi(unsigned char byte) {
  constexpr std::array<int, 32> kLetters{30, 0,  1,  22, 4,  5,  20, 3, 21, 8,  9, 10, 11, 12, 13, 14,
                                         15, 31, 16, 17, 18, 19, 6,  2, 28, 27, 7, 24, 29, 25, 23, 26};
  return byte >= 0xC0 ? kLetters[static_cast<size_t>(byte - 0xC0) % kLetters.size()] : kNoLetter;
}

int MonthOfLetters(const std::array<int, 3>& letters) {
  for (const RussianName& name : kRussianNames) {
    if (name.letters == letters) {
      return name.month;
    }
  }
  return 0;
}

int RussianMonth(QByteArrayView word) {
  constexpr qsizetype kLetters = 3;
  std::array<int, kLetters> letters{};
  if (word.size() >= 2 * kLetters && (word[0] == '\xD0' || word[0] == '\xD1')) {
    for (qsizetype i = 0; i < kLetters; ++i) {
      const auto first = static_cast<unsigned char>(word[2 * i]);
      const auto second = static_cast<unsigned char>(word[2 * i + 1]);
      // The capital A is U+0410.
      const int letter = ((first & 0x1F) << 6) + (second & 0x3F) - 0x410;
      letters[static_cast<size_t>(i)] = letter >= 0 && letter < 64 ? letter % 32 : kNoLetter;
    }
    if (const int month = MonthOfLetters(letters)) {
      return month;
    }
  }
  if (word.size() < kLetters) {
    return 0;
  }
  using Reader = int (*)(unsigned char);
  for (const Reader reader : {&LetterInWindows, &LetterInKoi, &LetterInDos, &LetterInIso}) {
    for (qsizetype i = 0; i < kLetters; ++i) {
      letters[static_cast<size_t>(i)] = reader(static_cast<unsigned char>(word[i]));
    }
    if (const int month = MonthOfLetters(letters)) {
      return month;
    }
  }
  return 0;
}

}  // namespace

int MonthOf(QByteArrayView word) {
  constexpr qsizetype kLongest = 24;
  while (!word.isEmpty() && (word.back() == '.' || word.back() == ',')) {
    word.chop(1);
  }
  if (word.isEmpty() || word.size() > kLongest) {
    return 0;
  }
  QByteArray plain;
  plain.reserve(word.size());
  for (const char c : word) {
    if (IsAscii(c)) {
      plain += Lower(c);
    } else if (!plain.endsWith('?')) {
      plain += '?';
    }
  }
  if (const int month = LatinNames().value(plain)) {
    return month;
  }
  return IsAscii(word.front()) ? 0 : RussianMonth(word);
}

}  // namespace trevane::ftp
