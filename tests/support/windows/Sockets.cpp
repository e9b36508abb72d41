#include "tests/support/Sockets.h"

#include <gtest/gtest.h>

#include <vector>

#include <winsock2.h>

namespace trevane::test::sockets {
namespace {

sockaddr_in Loopback(quint16 port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

SOCKET Native(Handle handle) {
  return static_cast<SOCKET>(handle);
}

Handle MakeSocket(int type) {
  struct Library {
    WSADATA data{};
    int result = ::WSAStartup(MAKEWORD(2, 2), &data);
  };
  static const Library kLibrary;
  EXPECT_EQ(kLibrary.result, 0);
  const SOCKET made = ::socket(AF_INET, type, 0);
  EXPECT_NE(made, INVALID_SOCKET);
  // Programs that are started do not hold it open.
  ::SetHandleInformation(reinterpret_cast<HANDLE>(made), HANDLE_FLAG_INHERIT, 0);
  // The system's handles have 32 bits.
  return static_cast<Handle>(made);
}

void Prepare(Handle socket) {
  u_long on = 1;
  EXPECT_EQ(::ioctlsocket(Native(socket), FIONBIO, &on), 0);
  // Small pieces are sent at once.
  const BOOL now = TRUE;
  ::setsockopt(Native(socket), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&now), sizeof now);
}

/// To a free port of 127.0.0.1: the address with the port.
sockaddr_in Bind(Handle socket) {
  sockaddr_in address = Loopback(0);
  int size = sizeof address;
  EXPECT_EQ(::bind(Native(socket), reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(::getsockname(Native(socket), reinterpret_cast<sockaddr*>(&address), &size), 0);
  return address;
}

short EventsOf(Until until) {
  switch (until) {
    case Until::Readable:
      return POLLRDNORM;
    case Until::Writable:
      return POLLWRNORM;
    case Until::Gone:
      break;
  }
  // It is told of each.
  return 0;
}

}  // namespace

Handle Listen(quint16& port) {
  const Handle listening = MakeSocket(SOCK_STREAM);
  port = ntohs(Bind(listening).sin_port);
  EXPECT_EQ(::listen(Native(listening), SOMAXCONN), 0);
  Prepare(listening);
  return listening;
}

Handle Connect(quint16 port) {
  const Handle line = MakeSocket(SOCK_STREAM);
  const sockaddr_in address = Loopback(port);
  if (::connect(Native(line), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    Close(line);
    return -1;
  }
  Prepare(line);
  return line;
}

Handle Accept(Handle listening) {
  const SOCKET line = ::accept(Native(listening), nullptr, nullptr);
  if (line == INVALID_SOCKET) {
    return -1;
  }
  Prepare(static_cast<Handle>(line));
  return static_cast<Handle>(line);
}

void Close(Handle handle) {
  ::closesocket(Native(handle));
}

void Break(Handle socket) {
  const linger reset{1, 0};
  ::setsockopt(Native(socket), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&reset), sizeof reset);
  Close(socket);
}

qsizetype Receive(Handle socket, char* to, qsizetype most) {
  return ::recv(Native(socket), to, static_cast<int>(most), 0);
}

qsizetype Send(Handle socket, const char* from, qsizetype size) {
  return ::send(Native(socket), from, static_cast<int>(size), 0);
}

bool WouldBlock() {
  return ::WSAGetLastError() == WSAEWOULDBLOCK;
}

void BlockBrokenPipe() {
  // There are no signals.
}

Handle MakeEvent() {
  // Only sockets can be waited for: this one is connected with itself.
  const Handle event = MakeSocket(SOCK_DGRAM);
  const sockaddr_in address = Bind(event);
  EXPECT_EQ(::connect(Native(event), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return event;
}

void Raise(Handle event) {
  const char one = '1';
  EXPECT_EQ(::send(Native(event), &one, 1, 0), 1);
}

int Wait(std::span<const Waited> all, int timeout) {
  std::vector<WSAPOLLFD> waiting;
  std::vector<int> places;
  waiting.reserve(all.size());
  places.reserve(all.size());
  for (size_t i = 0; i < all.size(); ++i) {
    if (all[i].handle >= 0) {
      waiting.push_back({Native(all[i].handle), EventsOf(all[i].until), 0});
      places.push_back(static_cast<int>(i));
    }
  }
  ::WSAPoll(waiting.data(), static_cast<ULONG>(waiting.size()), timeout);
  for (size_t i = 0; i < waiting.size(); ++i) {
    if (waiting[i].revents != 0) {
      return places[i];
    }
  }
  return -1;
}

}  // namespace trevane::test::sockets
