#pragma once

#include "engine/providers/curl/SocketCalls.h"

#include <QString>

#include <chrono>

#include <curl/curl.h>

namespace trevane::curl {

/// Bytes, or the end, have come on a control connection on which nothing was asked. It does not wait.
[[nodiscard]] bool HasUnaskedWords(CURLM* multi, Socket socket) noexcept;
/// Whether what has come is the end of the line, as far as can be seen without taking it.
[[nodiscard]] bool IsUnaskedEnd(Socket socket, bool isEncrypted) noexcept;
/// What has come without being asked for, as people say it. It is taken from a connection without TLS, and
/// the rest of it is waited for.
[[nodiscard]] QString TakeUnaskedWords(Socket socket, std::chrono::milliseconds longest);

}  // namespace trevane::curl
