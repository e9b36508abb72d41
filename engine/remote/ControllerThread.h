#pragma once

#include "engine/remote/Workbench.h"

#include <functional>
#include <memory>

namespace trevane {

class RemoteControllers;

/// One thread for one connection: it does what it is given, in order. No member waits for it, and it keeps
/// alive all that it needs; so it can be left behind while a call hangs in it.
class ControllerThread final {
 public:
  using Task = std::function<void(Workbench& bench)>;

  /// Starts it. Fails where the system has no thread left.
  ControllerThread(RemoteControllers& all, Workbench::Opener open);
  /// As Stop.
  ~ControllerThread();
  ControllerThread(const ControllerThread&) = delete;
  ControllerThread& operator=(const ControllerThread&) = delete;

  /// `task` throws nothing. After Stop it does not run.
  void Post(Task task);
  /// The thread ends after what it is at, and destroys there what it works with. Nothing else is begun.
  void Stop();

 private:
  struct Shared;
  static void Run(const std::shared_ptr<Shared>& shared, Workbench::Opener open);

  std::shared_ptr<Shared> shared_;
};

}  // namespace trevane
