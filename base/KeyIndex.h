#pragma once

#include <QtGlobal>

#include <cstddef>
#include <vector>

namespace trevane {

/// Finds the number of an entry by its key in constant time without storing the key: the caller hashes, and
/// compares by looking into the entry itself. An entry costs some ten bytes.
class KeyIndex {
 public:
  static constexpr quint32 kNone = 0xFFFFFFFFU;

  /// The number under `hash` for which `equal(number)` holds, or kNone.
  template <typename Equal>
  [[nodiscard]] quint32 Find(size_t hash, Equal equal) const {
    if (slots_.empty()) {
      return kNone;
    }
    const quint32 wanted = Fold(hash);
    for (size_t i = wanted & mask_; slots_[i].number != kNone; i = (i + 1) & mask_) {
      if (slots_[i].hash == wanted && equal(slots_[i].number)) {
        return slots_[i].number;
      }
    }
    return kNone;
  }

  /// The caller has made sure that no equal key is there.
  void Insert(size_t hash, quint32 number) {
    if ((count_ + 1) * 5 > slots_.size() * 4) {
      Grow(slots_.empty() ? kFirstSize : slots_.size() * 2);
    }
    Put({Fold(hash), number});
    ++count_;
  }

  void Remove(size_t hash, quint32 number) {
    if (slots_.empty()) {
      return;
    }
    size_t hole = Fold(hash) & mask_;
    while (slots_[hole].number != number) {
      if (slots_[hole].number == kNone) {
        return;
      }
      hole = (hole + 1) & mask_;
    }
    // Entries that were pushed past the hole move back into it: no tombstones, so look-ups stay short.
    for (size_t i = (hole + 1) & mask_; slots_[i].number != kNone; i = (i + 1) & mask_) {
      const size_t home = slots_[i].hash & mask_;
      if (((i - home) & mask_) >= ((i - hole) & mask_)) {
        slots_[hole] = slots_[i];
        hole = i;
      }
    }
    slots_[hole] = Slot{};
    --count_;
  }

  void Clear() {
    std::vector<Slot>().swap(slots_);
    count_ = 0;
    mask_ = 0;
  }

  void Reserve(size_t count) {
    size_t size = kFirstSize;
    while (count * 5 > size * 4) {
      size *= 2;
    }
    if (size > slots_.size()) {
      Grow(size);
    }
  }

  [[nodiscard]] size_t Count() const noexcept { return count_; }

 private:
  struct Slot {
    quint32 hash = 0;
    quint32 number = kNone;
  };

  static constexpr size_t kFirstSize = 16;

  static quint32 Fold(size_t hash) noexcept {
    return static_cast<quint32>(hash ^ (static_cast<quint64>(hash) >> 32));
  }

  void Put(Slot slot) {
    size_t i = slot.hash & mask_;
    while (slots_[i].number != kNone) {
      i = (i + 1) & mask_;
    }
    slots_[i] = slot;
  }

  void Grow(size_t size) {
    std::vector<Slot> old(size);
    old.swap(slots_);
    mask_ = size - 1;
    for (const Slot& slot : old) {
      if (slot.number != kNone) {
        Put(slot);
      }
    }
  }

  std::vector<Slot> slots_;
  size_t count_ = 0;
  size_t mask_ = 0;
};

}  // namespace trevane
