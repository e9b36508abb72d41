#pragma once

#include "engine/providers/ftp/FtpReply.h"

#include <QByteArray>

namespace trevane::curl {

/// Whether a reply can be the answer to a command that has no data connection: a refusal always, and what
/// servers are known to tell of one that was carried out. False means that it may belong to another command.
[[nodiscard]] bool IsAnswerTo(const QByteArray& command, const ftp::Reply& reply);

}  // namespace trevane::curl
