#pragma once

#include "tests/support/Sshd.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace trevane::bench {

/// Two SSH servers of this computer, each also behind a line of 40 ms a round trip. The home of this process
/// is a folder of its own from here on: its key opens both, and it knows their host keys.
class FarServers final {
 public:
  static constexpr double kRoundTrip = 0.04;  // seconds

  FarServers();
  ~FarServers();
  FarServers(const FarServers&) = delete;
  FarServers& operator=(const FarServers&) = delete;

  /// `number` is 0 or 1.
  [[nodiscard]] quint16 Near(int number) const { return number == 0 ? first_.Port() : second_.Port(); }
  [[nodiscard]] quint16 Far(int number) const { return far_[number]; }
  [[nodiscard]] static QString Machine(quint16 port) { return QStringLiteral("127.0.0.1:%1").arg(port); }

  [[nodiscard]] QString KeyFile() const { return home_.filePath(QStringLiteral(".ssh/id_ed25519")); }
  [[nodiscard]] QString KnownHosts() const { return home_.filePath(QStringLiteral(".ssh/known_hosts")); }
  /// The folder that both servers show, for instance.
  [[nodiscard]] QString Root() const { return root_.path(); }

 private:
  QTemporaryDir home_;
  QTemporaryDir root_;
  test::Sshd first_;
  test::Sshd second_;
  quint16 far_[2] = {};
  QProcess proxy_;
};

}  // namespace trevane::bench
