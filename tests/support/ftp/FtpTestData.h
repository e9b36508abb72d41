#pragma once

#include "tests/support/Sockets.h"
#include "tests/support/ftp/FtpTestSocket.h"

#include <QByteArray>
#include <QtGlobal>

#include <optional>

namespace trevane::test {

/// Where the next data connection comes from or goes to.
class FtpTestData final {
 public:
  explicit FtpTestData(sockets::Handle stop) : stop_(stop) {}
  ~FtpTestData();
  FtpTestData(const FtpTestData&) = delete;
  FtpTestData& operator=(const FtpTestData&) = delete;

  /// Waits at a new port of 127.0.0.1; with `refuses` nobody waits there. The port.
  quint16 Listen(bool refuses);
  /// Connects to that port of 127.0.0.1.
  void ConnectTo(quint16 port);
  [[nodiscard]] bool IsSet() const { return listening_ >= 0 || port_ != 0; }
  void Forget();
  /// Nothing where the client does not come, or is not there. It serves once.
  [[nodiscard]] std::optional<FtpTestSocket> Open(const FtpTestSocket& control);

 private:
  sockets::Handle stop_;
  sockets::Handle listening_ = -1;
  quint16 port_ = 0;
};

}  // namespace trevane::test
