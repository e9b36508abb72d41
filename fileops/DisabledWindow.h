#pragma once

#include "fileops/OperationHost.h"

#include <utility>

namespace trevane {

/// Enables the main window again when it ends, on every way out, if it has disabled it.
class DisabledWindow final {
 public:
  explicit DisabledWindow(OperationHost& host) : host_(host) {}
  ~DisabledWindow() {
    if (disabled_) {
      host_.SetMainWindowEnabled(true);
    }
  }
  DisabledWindow(const DisabledWindow&) = delete;
  DisabledWindow& operator=(const DisabledWindow&) = delete;

  void Disable() {
    if (!std::exchange(disabled_, true)) {
      host_.SetMainWindowEnabled(false);
    }
  }

 private:
  OperationHost& host_;
  bool disabled_ = false;
};

}  // namespace trevane
