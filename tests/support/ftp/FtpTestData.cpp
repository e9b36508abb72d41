#include "tests/support/ftp/FtpTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Milliseconds until a client has opened its data connection.
constexpr int kLongestOpening = 10'000;

sockaddr_in Loopback(quint16 port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace

int ListenAtLoopback(quint16& port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  EXPECT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(::listen(fd, SOMAXCONN), 0);
  EXPECT_EQ(::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
  port = ntohs(address.sin_port);
  return fd;
}

FtpTestData::~FtpTestData() {
  Forget();
}

void FtpTestData::Forget() {
  if (listening_ >= 0) {
    ::close(listening_);
  }
  listening_ = -1;
  port_ = 0;
}

quint16 FtpTestData::Listen(bool refuses) {
  Forget();
  quint16 port = 0;
  const int fd = ListenAtLoopback(port);
  if (refuses) {
    ::close(fd);
  } else {
    listening_ = fd;
  }
  return port;
}

void FtpTestData::ConnectTo(quint16 port) {
  Forget();
  port_ = port;
}

std::optional<FtpTestSocket> FtpTestData::Open(const FtpTestSocket& control) {
  int fd = -1;
  if (listening_ >= 0) {
    std::array<pollfd, 3> fds{
        {{listening_, POLLIN, 0}, {stop_, POLLIN, 0}, {control.Handle(), POLLRDHUP, 0}}};
    int ready = 0;
    do {
      ready = ::poll(fds.data(), fds.size(), kLongestOpening);
    } while (ready < 0 && errno == EINTR);
    if (ready > 0 && fds[0].revents != 0) {
      fd = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    }
  } else if (port_ != 0) {
    fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(port_);
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      ::close(fd);
      fd = -1;
    }
  }
  Forget();
  if (fd < 0) {
    return {};
  }
  FtpTestSocket socket(fd, stop_);
  socket.Watch(control);
  return socket;
}

}  // namespace trevane::test
