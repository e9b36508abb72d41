#pragma once

#include "engine/providers/ftp/FtpReply.h"

#include <QByteArrayList>

namespace trevane::curl {

/// The lines of an answer to FEAT, without the words around them; none where the server does not know it.
[[nodiscard]] QByteArrayList FeaturesOf(const ftp::Reply& reply);

}  // namespace trevane::curl
