#pragma once

#include "tests/support/Sockets.h"
#include "tests/support/ftp/FtpTestContexts.h"
#include "tests/support/ftp/FtpTestScript.h"
#include "tests/support/ftp/FtpTestTree.h"
#include "tests/support/ftp/FtpVices.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace trevane::test {

/// A controller with FTP on a free port of 127.0.0.1, with a tree of files in memory and with any vices. Runs
/// in threads of its own until it is destroyed; vices, tree and counts can be changed and read meanwhile.
class FtpTestServer final {
 public:
  explicit FtpTestServer(FtpVices vices = {});
  /// Ends all connections.
  ~FtpTestServer();
  FtpTestServer(const FtpTestServer&) = delete;
  FtpTestServer& operator=(const FtpTestServer&) = delete;

  [[nodiscard]] quint16 Port() const noexcept { return port_; }
  /// "127.0.0.1:2121"
  [[nodiscard]] QString Machine() const { return QStringLiteral("127.0.0.1:%1").arg(port_); }
  [[nodiscard]] FtpTestTree& Tree() noexcept { return tree_; }
  /// Faults, hooks, counts, and the vices from the next command on.
  [[nodiscard]] FtpTestScript& Script() noexcept { return script_; }
  [[nodiscard]] FtpTestCounts Counts() const { return script_.Counts(); }
  /// How often a command came since the counts were cleared.
  [[nodiscard]] int Count(const QByteArray& command) const { return script_.Counts().byName.value(command); }

  /// SHA-256 of the certificate of connections from now on.
  [[nodiscard]] QByteArray Fingerprint() const;
  [[nodiscard]] QByteArray CertificatePem() const;
  /// Connections from now on are shown another one.
  void ChangeCertificate();
  /// Ends the lines of all clients, with the last words of the vices.
  void DropAll();

 private:
  struct Client;

  void Accept();
  void Serve(Client& client, int place);
  [[nodiscard]] std::shared_ptr<FtpTestContexts> Contexts() const;
  /// Waits for those that have ended.
  void Collect(bool all);

  FtpTestScript script_;
  FtpTestTree tree_;
  // Before the socket that finds it.
  quint16 port_ = 0;
  sockets::Handle listening_ = -1;
  /// Can be read when the server ends.
  sockets::Handle stop_ = -1;
  mutable std::mutex mutex_;
  std::shared_ptr<FtpTestContexts> contexts_;
  std::vector<std::unique_ptr<Client>> clients_;
  std::thread accepting_;
};

}  // namespace trevane::test
