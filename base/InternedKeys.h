#pragma once

#include <QHash>
#include <QString>

#include <array>
#include <vector>

namespace trevane {

/// Small numbers for texts that occur over and over, such as image keys: an entry then holds two bytes
/// instead of a text. Number 0 is the empty text. Texts that differ in case are different.
class InternedKeys {
 public:
  InternedKeys() : texts_(1) {}

  /// The 65536th distinct text and all after it get number 0.
  [[nodiscard]] quint16 NumberOf(const QString& text) {
    if (text.isEmpty()) {
      return 0;
    }
    // Callers pass the same few texts over and over, sharing their data: no hashing then.
    Recent& recent = recent_[(reinterpret_cast<quintptr>(text.constData()) >> 5U) % kRecent];
    if (recent.text.constData() == text.constData() && recent.text.size() == text.size()) {
      return recent.number;
    }
    recent = {text, Look(text)};
    return recent.number;
  }

  [[nodiscard]] const QString& TextOf(quint16 number) const { return texts_[number]; }

 private:
  /// Holds its text, so that no other text can come to lie at the same place.
  struct Recent {
    QString text;
    quint16 number = 0;
  };
  static constexpr size_t kRecent = 16;

  [[nodiscard]] quint16 Look(const QString& text) {
    const auto found = numbers_.constFind(text);
    if (found != numbers_.constEnd()) {
      return *found;
    }
    if (texts_.size() > 0xFFFF) {
      return 0;
    }
    const auto number = static_cast<quint16>(texts_.size());
    texts_.push_back(text);
    numbers_.insert(text, number);
    return number;
  }

  std::vector<QString> texts_;
  QHash<QString, quint16> numbers_;
  std::array<Recent, kRecent> recent_;
};

}  // namespace trevane
