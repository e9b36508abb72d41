#include "engine/providers/curl/SocketCalls.h"

#include "engine/providers/curl/ReplyReader.h"

#include <algorithm>
#include <array>

#include <winsock2.h>

namespace trevane::curl {

void Shutdown(Socket socket) noexcept {
  ::shutdown(static_cast<SOCKET>(socket), SD_BOTH);
}

void EndAtOnce(Socket socket) noexcept {
  const linger none{1, 0};
  ::setsockopt(static_cast<SOCKET>(socket), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&none),
               sizeof none);
  Shutdown(socket);
}

bool ReadsAnEndThen() noexcept {
  return false;
}

void Close(Socket socket) noexcept {
  ::closesocket(static_cast<SOCKET>(socket));
}

void KeepFromPrograms(Socket socket) noexcept {
  ::SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
}

qsizetype Peek(Socket socket, char* bytes, qsizetype most) noexcept {
  return std::max(::recv(static_cast<SOCKET>(socket), bytes, static_cast<int>(most), MSG_PEEK), 0);
}

qsizetype SendSome(Socket socket, QByteArrayView bytes) noexcept {
  // The library has made it one that does not wait.
  const int sent = ::send(static_cast<SOCKET>(socket), bytes.data(), static_cast<int>(bytes.size()), 0);
  return sent < 0 && ::WSAGetLastError() == WSAEWOULDBLOCK ? 0 : sent;
}

qsizetype ReceiveSome(Socket socket, char* bytes, qsizetype most) noexcept {
  const int got = ::recv(static_cast<SOCKET>(socket), bytes, static_cast<int>(most), 0);
  if (got < 0 && ::WSAGetLastError() == WSAEWOULDBLOCK) {
    return 0;
  }
  return got > 0 ? got : -1;
}

bool AwaitBytes(Socket socket, std::chrono::milliseconds longest) noexcept {
  WSAPOLLFD waiting{static_cast<SOCKET>(socket), POLLRDNORM, 0};
  return ::WSAPoll(&waiting, 1, static_cast<int>(longest.count())) > 0;
}

QByteArray ReadLastWords(Socket socket, std::chrono::milliseconds longest) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + longest;
  QByteArray words;
  while (!ReplyReader::EndsWithReply(words)) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0 || !AwaitBytes(socket, left)) {
      break;
    }
    std::array<char, 4096> bytes{};
    const int got = ::recv(static_cast<SOCKET>(socket), bytes.data(), static_cast<int>(bytes.size()), 0);
    if (got <= 0) {
      break;
    }
    words.append(bytes.data(), got);
  }
  return words;
}

std::errc CauseOf(long number) noexcept {
  switch (number) {
    case WSAECONNREFUSED:
      return std::errc::connection_refused;
    case WSAENETUNREACH:
      return std::errc::network_unreachable;
    case WSAEHOSTUNREACH:
      return std::errc::host_unreachable;
    default:
      return std::errc::timed_out;
  }
}

}  // namespace trevane::curl
