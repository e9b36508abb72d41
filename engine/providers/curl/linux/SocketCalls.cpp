#include "engine/providers/curl/SocketCalls.h"

#include "engine/providers/curl/ReplyReader.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::curl {

void Shutdown(Socket socket) noexcept {
  ::shutdown(static_cast<int>(socket), SHUT_RDWR);
}

void EndAtOnce(Socket socket) noexcept {
  const linger none{.l_onoff = 1, .l_linger = 0};
  ::setsockopt(static_cast<int>(socket), SOL_SOCKET, SO_LINGER, &none, sizeof none);
  Shutdown(socket);
}

bool ReadsAnEndThen() noexcept {
  return true;
}

void Close(Socket socket) noexcept {
  ::close(static_cast<int>(socket));
}

void KeepFromPrograms(Socket socket) noexcept {
  ::fcntl(static_cast<int>(socket), F_SETFD, FD_CLOEXEC);
}

qsizetype Peek(Socket socket, char* bytes, qsizetype most) noexcept {
  const ssize_t come =
      ::recv(static_cast<int>(socket), bytes, static_cast<size_t>(most), MSG_PEEK | MSG_DONTWAIT);
  return std::max<qsizetype>(come, 0);
}

qsizetype SendSome(Socket socket, QByteArrayView bytes) noexcept {
  const ssize_t sent = ::send(static_cast<int>(socket), bytes.data(), static_cast<size_t>(bytes.size()),
                              MSG_DONTWAIT | MSG_NOSIGNAL);
  return sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) ? 0 : sent;
}

qsizetype ReceiveSome(Socket socket, char* bytes, qsizetype most) noexcept {
  const ssize_t got = ::recv(static_cast<int>(socket), bytes, static_cast<size_t>(most), MSG_DONTWAIT);
  if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
    return 0;
  }
  return got > 0 ? got : -1;
}

bool AwaitBytes(Socket socket, std::chrono::milliseconds longest) noexcept {
  pollfd waiting{static_cast<int>(socket), POLLIN, 0};
  return ::poll(&waiting, 1, static_cast<int>(longest.count())) > 0;
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
    const ssize_t got = ::recv(static_cast<int>(socket), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (got <= 0) {
      break;
    }
    words.append(bytes.data(), got);
  }
  return words;
}

std::errc CauseOf(long number) noexcept {
  return static_cast<std::errc>(number);
}

}  // namespace trevane::curl
