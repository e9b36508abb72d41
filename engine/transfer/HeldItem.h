#pragma once

#include "engine/model/IxoFile.h"

#include <memory>
#include <utility>

namespace trevane {

/// Holds an item until the end of the scope.
class HeldItem {
 public:
  explicit HeldItem(std::shared_ptr<IxoFile> item) : item_(std::move(item)) { item_->Hold(); }
  ~HeldItem() { item_->LetGo(); }
  HeldItem(const HeldItem&) = delete;
  HeldItem& operator=(const HeldItem&) = delete;

 private:
  std::shared_ptr<IxoFile> item_;
};

}  // namespace trevane
