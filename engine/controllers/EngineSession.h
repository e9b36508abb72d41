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
  /// As it was asked for.
  QString asked;
  /// As the engine calls it.
  QString name;
};

/// What the whole process shares of the engine. The application makes one and ends it; everybody else is
/// handed a reference and reads it.
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

  /// Those that were left open in the engine, oldest first.
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
