#include "fileops/commands/CommandDispatcher.h"

#include "fileops/OperationGuard.h"
#include "fileops/commands/CommandTable.h"

namespace trevane {

void CommandDispatcher::Execute(CommandId id) {
  const Command& command = FindCommand(id);
  if (RunsAlone(command.kind)) {
    guard_.Run([&] { command.handler(targets_); }, command.kind == CommandKind::Operation);
  } else if (!guard_.IsEnding()) {
    command.handler(targets_);
  }
}

}  // namespace trevane
