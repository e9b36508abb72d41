#include "tests/support/Sockets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test::sockets {
namespace {

sockaddr_in Loopback(quint16 port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void Prepare(Handle socket) {
  ::fcntl(socket, F_SETFL, ::fcntl(socket, F_GETFL) | O_NONBLOCK);
  // Small pieces are sent at once.
  const int on = 1;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

short EventsOf(Until until) {
  switch (until) {
    case Until::Readable:
      return POLLIN;
    case Until::Writable:
      return POLLOUT;
    case Until::Gone:
      break;
  }
  return POLLRDHUP;
}

}  // namespace

Handle Listen(quint16& port) {
  const int listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  EXPECT_EQ(::bind(listening, reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(::listen(listening, SOMAXCONN), 0);
  EXPECT_EQ(::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size), 0);
  port = ntohs(address.sin_port);
  return listening;
}

Handle Connect(quint16 port) {
  const int line = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = Loopback(port);
  if (::connect(line, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(line);
    return -1;
  }
  Prepare(line);
  return line;
}

Handle Accept(Handle listening) {
  const int line = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
  if (line >= 0) {
    Prepare(line);
  }
  return line;
}

void Close(Handle handle) {
  ::close(handle);
}

void Break(Handle socket) {
  const linger reset{1, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  ::close(socket);
}

qsizetype Receive(Handle socket, char* to, qsizetype most) {
  return ::recv(socket, to, static_cast<size_t>(most), 0);
}

qsizetype Send(Handle socket, const char* from, qsizetype size) {
  return ::send(socket, from, static_cast<size_t>(size), MSG_NOSIGNAL);
}

bool WouldBlock() {
  return errno == EAGAIN || errno == EINTR;
}

void BlockBrokenPipe() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

Handle MakeEvent() {
  return ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

void Raise(Handle event) {
  const quint64 one = 1;
  (void)!::write(event, &one, sizeof one);
}

int Wait(std::span<const Waited> all, int timeout) {
  std::vector<pollfd> waiting;
  waiting.reserve(all.size());
  std::transform(all.begin(), all.end(), std::back_inserter(waiting), [](const Waited& one) {
    return pollfd{one.handle, EventsOf(one.until), 0};
  });
  int ready = 0;
  do {
    ready = ::poll(waiting.data(), waiting.size(), timeout);
  } while (ready < 0 && errno == EINTR);
  const auto first =
      std::find_if(waiting.begin(), waiting.end(), [](const pollfd& one) { return one.revents != 0; });
  return first == waiting.end() ? -1 : static_cast<int>(first - waiting.begin());
}

}  // namespace trevane::test::sockets
