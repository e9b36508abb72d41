#pragma once

#include "engine/model/Content.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace trevane {

/// Gathers the entries of a listing into batches: a small one first, so that something is seen soon, then
/// larger ones.
class BatchedListing {
 public:
  /// `receive` must outlive this.
  explicit BatchedListing(const ListingReceiver& receive) : receive_(receive) {}

  /// False when the receiver takes no more.
  [[nodiscard]] bool Add(FileEntry&& entry) {
    batch_.push_back(std::move(entry));
    return batch_.size() < limit_ || HandOver();
  }

  /// The rest. A folder without entries gives one empty batch.
  void Finish() {
    if (!batch_.empty() || isFirst_) {
      static_cast<void>(HandOver());
    }
  }

 private:
  static constexpr std::size_t kFirst = 64;
  static constexpr std::size_t kLargest = 4096;

  bool HandOver() {
    isFirst_ = false;
    limit_ = std::min(limit_ * 4, kLargest);
    return receive_(std::exchange(batch_, {}));
  }

  const ListingReceiver& receive_;
  Listing batch_;
  std::size_t limit_ = kFirst;
  bool isFirst_ = true;
};

}  // namespace trevane
