#pragma once

#include <QStringView>

#include <vector>

namespace trevane {

/// Sorts many texts without regard to case, in the order of CompareIgnoringCase. Each text is lower-cased
/// once into one buffer, and most comparisons are of one number: the first characters behind what all texts
/// have in common.
class TextOrder {
 public:
  void Reserve(size_t texts, size_t unitsEach = 24);
  void Add(QStringView text);

  [[nodiscard]] size_t Count() const noexcept { return starts_.size() - 1; }

  /// The positions of the texts, counted in the order of Add, in sorted order; equal texts keep their order,
  /// in both directions.
  [[nodiscard]] std::vector<quint32> Sorted(bool descending = false) const;

 private:
  [[nodiscard]] QStringView Text(quint32 i) const noexcept {
    return {units_.data() + starts_[i], static_cast<qsizetype>(starts_[i + 1] - starts_[i])};
  }

  std::vector<char16_t> units_;
  std::vector<quint32> starts_{0};
};

}  // namespace trevane
