#pragma once

#include "engine/providers/ssh/SshPlace.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace trevane::test {

struct SshdOptions {
  /// "ed25519", "rsa"; one host key of each.
  QStringList hostKeys = {QStringLiteral("ed25519")};
  QString subsystem = QStringLiteral("internal-sftp");
  /// Further lines of its configuration.
  QStringList configuration = {};
};

/// OpenSSH's server on a free port of 127.0.0.1, with a configuration, host keys and a user's key of its own.
/// It runs as the user of the test and takes that user's log-on with the key.
class Sshd final {
 public:
  using Options = SshdOptions;

  /// A server that has nothing newer than RSA keys with SHA-1, CBC and such.
  [[nodiscard]] static Options OldAlgorithms();

  /// The folder of the unpacked servers is known: see CONTRIBUTING.
  [[nodiscard]] static bool IsAvailable();
  /// One of the unpacked programs ("usr/bin/ssh-keygen").
  [[nodiscard]] static QString Program(const QString& path);
  /// Runs one of them to its end; a failure fails the test.
  static void Run(const QString& path, const QStringList& arguments);
  /// Makes a key and its ".pub" at that path.
  static void MakeKey(const QString& path, const QString& type, const QString& passphrase = {});

  /// Starts it and waits until it listens; a failure fails the test.
  explicit Sshd(const Options& options = {});
  ~Sshd();
  Sshd(const Sshd&) = delete;
  Sshd& operator=(const Sshd&) = delete;

  [[nodiscard]] quint16 Port() const { return port_; }
  /// "127.0.0.1:2222"
  [[nodiscard]] QString Machine() const;
  [[nodiscard]] QString User() const;
  /// The private key that it takes.
  [[nodiscard]] QString KeyFile() const { return At(QStringLiteral("user_key")); }
  /// The public key of a type, "ssh-ed25519 AAAA...".
  [[nodiscard]] QByteArray HostKey(const QString& type) const;
  /// A path in the server's own temporary folder.
  [[nodiscard]] QString At(const QString& name) const { return folder_.filePath(name); }
  /// Where its key is known and the user's key is used; nothing of it is the real user's.
  [[nodiscard]] SshPlace Place() const;
  /// Takes this user's key, too.
  void Authorize(const QString& publicKeyFile);
  /// What it has written since it began.
  [[nodiscard]] QByteArray Log();
  [[nodiscard]] qint64 Process() const { return process_.processId(); }

 private:
  void Start();
  void WriteConfiguration(const Options& options);

  QTemporaryDir folder_;
  QProcess process_;
  quint16 port_ = 0;
  QByteArray log_;
};

}  // namespace trevane::test
