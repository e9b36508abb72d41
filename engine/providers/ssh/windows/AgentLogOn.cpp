#include "engine/providers/ssh/AgentLogOn.h"

namespace trevane {

int LogOnWithAgent(SshSession& /*session*/, const QString& /*agent*/) {
  // The library cannot talk to this system's agent.
  return SSH_AUTH_DENIED;
}

}  // namespace trevane
