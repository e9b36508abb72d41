#include "views/addresses/AttributeLetters.h"

#include "engine/model/FileEntry.h"

#include <algorithm>
#include <array>

namespace trevane {
namespace {

struct AttributeLetter {
  qint32 bit;
  QChar letter;
};
constexpr std::array<AttributeLetter, 4> kLetters = {{{attribute::kReadOnly, u'R'},
                                                      {attribute::kHidden, u'H'},
                                                      {attribute::kSystem, u'S'},
                                                      {attribute::kArchive, u'A'}}};
constexpr size_t kCombinations = 1U << kLetters.size();

/// Of the combination of shown attributes, whose number has a bit for each letter.
size_t CombinationOf(qint32 attributes) {
  size_t combination = 0;
  for (size_t i = 0; i < kLetters.size(); ++i) {
    combination |= (attributes & kLetters[i].bit) != 0 ? size_t{1} << i : 0;
  }
  return combination;
}

/// One text for each combination: the list asks for them a hundred thousand times, and shared texts cost
/// nothing.
const std::array<QString, kCombinations>& Texts() {
  static const auto kTexts = [] {
    std::array<QString, kCombinations> texts;
    for (size_t combination = 0; combination < texts.size(); ++combination) {
      for (size_t i = 0; i < kLetters.size(); ++i) {
        if (((combination >> i) & 1U) != 0) {
          texts[combination] += kLetters[i].letter;
        }
      }
    }
    return texts;
  }();
  return kTexts;
}

}  // namespace

QString AttributeLetters(qint32 attributes) {
  return Texts()[CombinationOf(attributes)];
}

quint8 AttributeSortKey(qint32 attributes) {
  static const auto kKeys = [] {
    std::array<quint8, kCombinations> keys{};
    std::ranges::transform(Texts(), keys.begin(), [](const QString& text) {
      return static_cast<quint8>(
          std::ranges::count_if(Texts(), [&text](const QString& other) { return other < text; }));
    });
    return keys;
  }();
  return kKeys[CombinationOf(attributes)];
}

}  // namespace trevane
