#pragma once

#include "engine/controllers/clsIxoCtrls.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoEngine.h"
#include "engine/model/IxoWorkspace.h"

#include <QString>

#include <memory>
#include <vector>

namespace trevane {

/// A controller that failed to connect after the engine had opened it: the engine keeps it, and its name.
struct LeftController {
  /// The name that was asked for.
  QString asked;
  /// The name that the engine gave it.
  QString name;
};

/// The engine objects that the whole process shares. The application makes one and ends it; all others get a
/// reference and read it.
class EngineSession {
 public:
  EngineSession() = default;
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;

  std::shared_ptr<IxoEngine> gIxoEngine;
  /// The engine's default workspace.
  std::shared_ptr<IxoWorkspace> gIxoWorkspace;
  /// The default workspace's controllers; nothing before the session was open. It outlives the engine.
  std::shared_ptr<IxoControllers> gIxoControllers;
  /// The name that the engine gave the local-file controller.
  QString gLocalCtrlName;
  /// The controllers that are remembered between runs, most recent first, keyed by ControllerKey(CtrlName).
  ControllerCollection gSavedCtrls;

  /// The controllers that were left open in the engine, oldest first.
  std::vector<LeftController> leftControllers;

  /// The registry of connected controllers, created on first use; its first record is the local-file
  /// controller.
  [[nodiscard]] clsIxoCtrls& gIxoCtrls() {
    if (!registry_) {
      registry_ = std::make_unique<clsIxoCtrls>();
    }
    return *registry_;
  }

 private:
  std::unique_ptr<clsIxoCtrls> registry_;
};

}  // namespace trevane
