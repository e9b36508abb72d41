#pragma once

#include "engine/remote/ConnectionControl.h"
#include "engine/remote/ControllerThread.h"

#include <memory>

namespace trevane {

/// One connection: its thread and what the provider there knows of the window. When the line dies it is given
/// up, and the controller gets another one. The window's thread's alone.
class ControllerLink final {
 public:
  ControllerLink(RemoteControllers& all, std::shared_ptr<ConnectionControl> control, Workbench::Opener open)
      : control_(std::move(control)), thread_(all, std::move(open)) {}
  ControllerLink(const ControllerLink&) = delete;
  ControllerLink& operator=(const ControllerLink&) = delete;

  [[nodiscard]] const std::shared_ptr<ConnectionControl>& Control() const noexcept { return control_; }
  [[nodiscard]] ControllerThread& Thread() noexcept { return thread_; }
  [[nodiscard]] bool IsGivenUp() const noexcept { return givenUp_; }

  /// What runs is told to end; nothing waits for it.
  void GiveUp() {
    givenUp_ = true;
    thread_.Stop();
    control_->GiveUp();
  }

 private:
  const std::shared_ptr<ConnectionControl> control_;
  ControllerThread thread_;
  bool givenUp_ = false;
};

}  // namespace trevane
