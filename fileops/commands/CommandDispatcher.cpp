#include "fileops/commands/CommandDispatcher.h"

#include "fileops/OperationGuard.h"
#include "fileops/commands/CommandTable.h"

namespace trevane {

void CommandDispatcher::Execute(CommandId id) {
  if (IsRefused(id)) {
    return;
  }
  const Command& command = FindCommand(id);
  if (RunsAlone(command.kind)) {
    guard_.Run([&] { command.handler(targets_); }, command.kind == CommandKind::Operation);
  } else {
    command.handler(targets_);
  }
}

bool CommandDispatcher::IsRefused(CommandId id) const {
  return guard_.IsEnding() ||
         ((guard_.IsWaiting() || guard_.IsFileOperationRunning()) && id != CommandId::Close);
}

}  // namespace trevane
