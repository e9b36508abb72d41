#include "engine/providers/ssh/SocketCalls.h"

#include "engine/files/ProviderError.h"

#include <QScopeGuard>
#include <QVarLengthArray>

#include <algorithm>
#include <array>

// In this order.
#include <windows.h>

#include <winsock2.h>
#include <ws2tcpip.h>

namespace trevane::net {
namespace {

SOCKET Handle(Socket socket) {
  return static_cast<SOCKET>(socket);
}

Socket Own(SOCKET socket) {
  return socket == INVALID_SOCKET ? kNoSocket : static_cast<Socket>(socket);
}

/// The library counts these calls: one for the whole program is enough.
void StartSockets() {
  static const int started = [] {
    WSADATA data{};
    return WSAStartup(MAKEWORD(2, 2), &data);
  }();
  Q_UNUSED(started);
}

qint32 NumberOf(int code) {
  switch (code) {
    case WSAECONNREFUSED:
      return kRefused;
    case WSAENETUNREACH:
    case WSAENETDOWN:
    case WSAEADDRNOTAVAIL:
      return kNetworkUnreachable;
    case WSAEHOSTUNREACH:
    case WSAEHOSTDOWN:
      return kHostUnreachable;
    case WSAETIMEDOUT:
      return error::kTimeOut;
    case WSAECONNRESET:
    case WSAECONNABORTED:
      return kLineLost;
    case WSAEACCES:
      return error::kAccessDenied;
    default:
      return providererror::kGeneralFailure;
  }
}

NetFailure FailureOf(int code) {
  const qint32 number = NumberOf(code);
  const QString own = ReasonOf(number);
  return {number, own.isEmpty() ? QStringLiteral("The network reports error %1").arg(code) : own};
}

QString TextOf(const addrinfo& address) {
  std::array<char, NI_MAXHOST> text{};
  const int failed = getnameinfo(address.ai_addr, static_cast<socklen_t>(address.ai_addrlen), text.data(),
                                 static_cast<DWORD>(text.size()), nullptr, 0, NI_NUMERICHOST);
  return failed != 0 ? QString() : QString::fromLatin1(text.data());
}

void MakeNonBlocking(SOCKET socket) {
  u_long on = 1;
  ioctlsocket(socket, FIONBIO, &on);
}

/// A listening socket that only this computer reaches, on a free port.
SOCKET ListenOnLoopback(sockaddr_in& address) {
  const SOCKET listening = WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                      WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int size = sizeof address;
  if (listening == INVALID_SOCKET || bind(listening, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listening, 1) != 0 ||
      getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    closesocket(listening);
    return INVALID_SOCKET;
  }
  return listening;
}

/// Another program could have been faster to connect.
bool AreConnected(SOCKET one, SOCKET other) {
  sockaddr_in here{};
  sockaddr_in there{};
  int size = sizeof here;
  return getsockname(one, reinterpret_cast<sockaddr*>(&here), &size) == 0 &&
         getpeername(other, reinterpret_cast<sockaddr*>(&there), &size) == 0 &&
         here.sin_port == there.sin_port;
}

}  // namespace

Resolved Resolve(const QString& host, quint16 port) {
  StartSockets();
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.toUtf8().constData(), QByteArray::number(port).constData(), &hints, &found) != 0) {
    return {{}, {kUnknownHost, ReasonOf(kUnknownHost)}};
  }
  const auto free = qScopeGuard([found] { freeaddrinfo(found); });
  Resolved resolved;
  for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
    resolved.addresses.push_back(
        {QByteArray(reinterpret_cast<const char*>(each->ai_addr), static_cast<qsizetype>(each->ai_addrlen)),
         TextOf(*each)});
  }
  return resolved;
}

Socket StartConnecting(const Address& address, NetFailure& failure) {
  StartSockets();
  const auto* target = reinterpret_cast<const sockaddr*>(address.bytes.constData());
  const SOCKET socket = WSASocketW(target->sa_family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                   WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  if (socket == INVALID_SOCKET) {
    failure = FailureOf(WSAGetLastError());
    return kNoSocket;
  }
  Prepare(Own(socket));
  if (connect(socket, target, static_cast<int>(address.bytes.size())) != 0 &&
      WSAGetLastError() != WSAEWOULDBLOCK) {
    failure = FailureOf(WSAGetLastError());
    closesocket(socket);
    return kNoSocket;
  }
  return Own(socket);
}

NetFailure ConnectFailure(Socket socket) {
  int code = 0;
  int size = sizeof code;
  if (getsockopt(Handle(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&code), &size) != 0) {
    code = WSAGetLastError();
  }
  return code == 0 ? NetFailure() : FailureOf(code);
}

void Prepare(Socket socket) noexcept {
  const BOOL on = TRUE;
  setsockopt(Handle(socket), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  MakeNonBlocking(Handle(socket));
}

Socket Duplicate(Socket socket) noexcept {
  WSAPROTOCOL_INFOW info{};
  if (WSADuplicateSocketW(Handle(socket), GetCurrentProcessId(), &info) != 0) {
    return kNoSocket;
  }
  return Own(WSASocketW(FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, &info, 0,
                        WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

void Shutdown(Socket socket) noexcept {
  shutdown(Handle(socket), SD_BOTH);
}

void Close(Socket socket) noexcept {
  closesocket(Handle(socket));
}

void Wait(std::vector<Watched>& watched, std::chrono::milliseconds longest) {
  // A failed attempt to connect is told by select alone, not by WSAPoll of older systems.
  fd_set read;
  fd_set write;
  fd_set failed;
  FD_ZERO(&read);
  FD_ZERO(&write);
  FD_ZERO(&failed);
  for (const Watched& each : watched) {
    FD_SET(Handle(each.socket), &read);
    FD_SET(Handle(each.socket), &failed);
    if (each.writing) {
      FD_SET(Handle(each.socket), &write);
    }
  }
  const auto milliseconds = static_cast<long>(longest.count());
  timeval time{milliseconds / 1000, milliseconds % 1000 * 1000};
  const int ready = select(0, &read, &write, &failed, &time);
  for (Watched& each : watched) {
    const SOCKET socket = Handle(each.socket);
    each.isReady =
        ready > 0 && (FD_ISSET(socket, &read) || FD_ISSET(socket, &write) || FD_ISSET(socket, &failed));
  }
}

WakePair MakeWakePair() noexcept {
  StartSockets();
  sockaddr_in address{};
  const SOCKET listening = ListenOnLoopback(address);
  if (listening == INVALID_SOCKET) {
    return {};
  }
  const auto close = qScopeGuard([listening] { closesocket(listening); });
  const SOCKET waking = WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                   WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  if (waking == INVALID_SOCKET ||
      connect(waking, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    closesocket(waking);
    return {};
  }
  const SOCKET waiting = accept(listening, nullptr, nullptr);
  if (waiting == INVALID_SOCKET || !AreConnected(waking, waiting)) {
    closesocket(waiting);
    closesocket(waking);
    return {};
  }
  SetHandleInformation(reinterpret_cast<HANDLE>(waiting), HANDLE_FLAG_INHERIT, 0);
  Prepare(Own(waiting));
  Prepare(Own(waking));
  return {Own(waiting), Own(waking)};
}

void PutByte(Socket waking) noexcept {
  send(Handle(waking), "", 1, 0);
}

void TakeBytes(Socket waiting) noexcept {
  std::array<char, 64> bytes{};
  while (recv(Handle(waiting), bytes.data(), static_cast<int>(bytes.size()), 0) > 0) {
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
