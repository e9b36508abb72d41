#pragma once

#include "engine/providers/curl/CurlDialogue.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <QByteArray>

#include <curl/curl.h>

namespace trevane::curl {

/// The address of a server, with its port and a slash at the end.
[[nodiscard]] QByteArray UrlOf(const FtpSettings& settings);

/// How the library is to speak with the server, in all that needs no line to call back. It keeps a copy of
/// user and password. Fails with error::kInvalidParameter where they cannot be told to a server, and with
/// error::kNotSupported where the library lacks what is needed.
void SetFtpOptions(CURL* easy, const FtpSettings& settings, const FtpLogOn& logOn);

}  // namespace trevane::curl
