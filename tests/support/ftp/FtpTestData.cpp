#include "tests/support/ftp/FtpTestData.h"

#include <array>
#include <utility>

namespace trevane::test {
namespace {

/// Milliseconds until a client has opened its data connection.
constexpr int kLongestOpening = 10'000;

}  // namespace

FtpTestData::~FtpTestData() {
  Forget();
}

void FtpTestData::Forget() {
  if (listening_ >= 0) {
    sockets::Close(std::exchange(listening_, -1));
  }
  port_ = 0;
}

quint16 FtpTestData::Listen(bool refuses) {
  Forget();
  quint16 port = 0;
  const sockets::Handle listening = sockets::Listen(port);
  if (refuses) {
    sockets::Close(listening);
  } else {
    listening_ = listening;
  }
  return port;
}

void FtpTestData::ConnectTo(quint16 port) {
  Forget();
  port_ = port;
}

std::optional<FtpTestSocket> FtpTestData::Open(const FtpTestSocket& control) {
  sockets::Handle fd = -1;
  if (listening_ >= 0) {
    using sockets::Until;
    const std::array<sockets::Waited, 3> all{
        {{listening_, Until::Readable}, {stop_, Until::Readable}, {control.Handle(), Until::Gone}}};
    if (sockets::Wait(all, kLongestOpening) == 0) {
      fd = sockets::Accept(listening_);
    }
  } else if (port_ != 0) {
    fd = sockets::Connect(port_);
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
