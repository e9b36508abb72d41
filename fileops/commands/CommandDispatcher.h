#pragma once

#include "fileops/commands/CommandId.h"
#include "fileops/commands/CommandTargets.h"

namespace trevane {

class OperationGuard;

/// Executes commands by id. An operation is refused silently while another one runs or a folder is being
/// displayed; every command while a controller is waited for, except the one that closes the window, and once
/// the program is ending.
class CommandDispatcher final {
 public:
  CommandDispatcher(const CommandTargets& targets, OperationGuard& guard)
      : targets_(targets), guard_(guard) {}

  void Execute(CommandId id);
  [[nodiscard]] bool IsRefused(CommandId id) const;

 private:
  CommandTargets targets_;
  OperationGuard& guard_;
};

}  // namespace trevane
