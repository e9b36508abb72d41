#pragma once

#include "platform/Volumes.h"

#include <utility>
#include <vector>

namespace trevane {

/// The drives of one moment: what another thread sees of them.
class DriveSnapshot final : public Volumes {
 public:
  explicit DriveSnapshot(std::vector<Volume> drives) : drives_(std::move(drives)) {}

  /// Changes nothing.
  bool Refresh() override { return true; }
  [[nodiscard]] const std::vector<Volume>& Current() const override { return drives_; }

 private:
  const std::vector<Volume> drives_;
};

}  // namespace trevane
