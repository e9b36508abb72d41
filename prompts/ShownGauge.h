#pragma once

#include "prompts/UserPrompts.h"

namespace trevane {

/// Takes the gauge away when it ends, on every way out.
class ShownGauge final {
 public:
  explicit ShownGauge(ProgressGauge& gauge) : gauge_(gauge) {}
  ~ShownGauge() { gauge_.UnloadGage(); }
  ShownGauge(const ShownGauge&) = delete;
  ShownGauge& operator=(const ShownGauge&) = delete;

 private:
  ProgressGauge& gauge_;
};

}  // namespace trevane
