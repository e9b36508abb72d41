#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <string>

namespace trevane::test {

/// A server that answers one client on 127.0.0.1: it gives the one content for each name. Its
/// certificate is signed by itself.
class LoopbackFtp final {
 public:
  enum class Tls : std::uint8_t { None, Implicit };

  LoopbackFtp(Tls tls, QByteArray content);
  /// Waits for the client's end.
  ~LoopbackFtp();
  LoopbackFtp(const LoopbackFtp&) = delete;
  LoopbackFtp& operator=(const LoopbackFtp&) = delete;

  /// For a file of that name.
  [[nodiscard]] std::string Url() const;

 private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace trevane::test
