#pragma once

#include "engine/providers/curl/SocketCalls.h"

#include <QByteArray>

#include <chrono>

#include <openssl/ssl.h>

namespace trevane::curl {

/// What the other end of an encrypted connection has said, without taking it: up to the end of its first
/// packet, which is waited for. `socket` is the one below, and nobody else uses the connection at the moment.
[[nodiscard]] QByteArray PeekTlsWords(SSL* tls, Socket socket, std::chrono::milliseconds longest);

}  // namespace trevane::curl
