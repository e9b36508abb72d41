#include "engine/providers/ssh/SocketCalls.h"

#include "engine/files/ProviderError.h"

#include <QScopeGuard>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::net {
namespace {

int Fd(Socket socket) {
  return static_cast<int>(socket);
}

qint32 NumberOf(int code) {
  switch (code) {
    case ECONNREFUSED:
      return kRefused;
    case ENETUNREACH:
    case ENETDOWN:
    case EADDRNOTAVAIL:
      return kNetworkUnreachable;
    case EHOSTUNREACH:
    case EHOSTDOWN:
      return kHostUnreachable;
    case ETIMEDOUT:
      return error::kTimeOut;
    case ECONNRESET:
    case EPIPE:
      return kLineLost;
    case EACCES:
    case EPERM:
      return error::kAccessDenied;
    default:
      return providererror::kGeneralFailure;
  }
}

NetFailure FailureOf(int code) {
  const qint32 number = NumberOf(code);
  const QString own = ReasonOf(number);
  return {number, own.isEmpty() ? QString::fromLocal8Bit(std::strerror(code)) : own};
}

QString TextOf(const addrinfo& address) {
  std::array<char, NI_MAXHOST> text{};
  const int failed = ::getnameinfo(address.ai_addr, address.ai_addrlen, text.data(), text.size(), nullptr, 0,
                                   NI_NUMERICHOST);
  return failed != 0 ? QString() : QString::fromLatin1(text.data());
}

}  // namespace

Resolved Resolve(const QString& host, quint16 port) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int failed =
      ::getaddrinfo(host.toUtf8().constData(), QByteArray::number(port).constData(), &hints, &found);
  if (failed != 0) {
    if (failed == EAI_SYSTEM) {
      return {{}, FailureOf(errno)};
    }
    return {{}, {kUnknownHost, ReasonOf(kUnknownHost)}};
  }
  const auto free = qScopeGuard([found] { ::freeaddrinfo(found); });
  Resolved resolved;
  for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
    resolved.addresses.push_back(
        {QByteArray(reinterpret_cast<const char*>(each->ai_addr), static_cast<qsizetype>(each->ai_addrlen)),
         TextOf(*each)});
  }
  return resolved;
}

Socket StartConnecting(const Address& address, NetFailure& failure) {
  const auto* target = reinterpret_cast<const sockaddr*>(address.bytes.constData());
  const int fd = ::socket(target->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) {
    failure = FailureOf(errno);
    return kNoSocket;
  }
  Prepare(fd);
  if (::connect(fd, target, static_cast<socklen_t>(address.bytes.size())) != 0 && errno != EINPROGRESS &&
      errno != EINTR) {
    failure = FailureOf(errno);
    ::close(fd);
    return kNoSocket;
  }
  return fd;
}

NetFailure ConnectFailure(Socket socket) {
  int code = 0;
  socklen_t size = sizeof code;
  if (::getsockopt(Fd(socket), SOL_SOCKET, SO_ERROR, &code, &size) != 0) {
    code = errno;
  }
  return code == 0 ? NetFailure() : FailureOf(code);
}

void Prepare(Socket socket) noexcept {
  const int on = 1;
  ::setsockopt(Fd(socket), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  ::fcntl(Fd(socket), F_SETFL, ::fcntl(Fd(socket), F_GETFL) | O_NONBLOCK);
}

Socket Duplicate(Socket socket) noexcept {
  return ::fcntl(Fd(socket), F_DUPFD_CLOEXEC, 0);
}

void Shutdown(Socket socket) noexcept {
  ::shutdown(Fd(socket), SHUT_RDWR);
}

void Close(Socket socket) noexcept {
  ::close(Fd(socket));
}

void Wait(std::vector<Watched>& watched, std::chrono::milliseconds longest) {
  QVarLengthArray<pollfd, 8> polled;
  for (const Watched& each : watched) {
    polled.append({Fd(each.socket), static_cast<short>(POLLIN | (each.writing ? POLLOUT : 0)), 0});
  }
  // An interrupted wait is one that has ended early: the caller waits on.
  const int ready =
      ::poll(polled.data(), static_cast<nfds_t>(polled.size()), static_cast<int>(longest.count()));
  for (size_t i = 0; i < watched.size(); ++i) {
    watched[i].isReady = ready > 0 && polled[static_cast<qsizetype>(i)].revents != 0;
  }
}

WakePair MakeWakePair() noexcept {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    return {};
  }
  return {ends[0], ends[1]};
}

void PutByte(Socket waking) noexcept {
  // A full pipe wakes as well.
  [[maybe_unused]] const ssize_t put = ::write(Fd(waking), "", 1);
}

void TakeBytes(Socket waiting) noexcept {
  std::array<char, 64> bytes{};
  while (::read(Fd(waiting), bytes.data(), bytes.size()) > 0) {
  }
}

void CloseWakePair(const WakePair& pair) noexcept {
  for (const Socket end : {pair.waiting, pair.waking}) {
    if (end != kNoSocket) {
      Close(end);
    }
  }
}

}  // namespace trevane::net
