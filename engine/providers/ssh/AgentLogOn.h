#pragma once

#include "engine/providers/ssh/SshSession.h"

#include <QString>

namespace trevane {

/// Logs on with the keys of the agent that listens at `agent`; what the library answers (ssh_auth_e).
/// SSH_AUTH_DENIED where no agent is there.
[[nodiscard]] int LogOnWithAgent(SshSession& session, const QString& agent);

}  // namespace trevane
