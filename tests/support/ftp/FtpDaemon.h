#pragma once

#include "tests/support/ftp/FtpTestKeys.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace trevane::test {

struct FtpDaemonOptions {
  enum class Program { Vsftpd, ProFtpd, PyFtpd };
  enum class Tls {
    Off,
    /// Data connections need not resume a session.
    Explicit,
    /// They must; PyFtpd cannot demand it.
    ExplicitWithReuse
  };

  Program program = Program::Vsftpd;
  Tls tls = Tls::Off;
  /// Further lines of its configuration; none for PyFtpd.
  QStringList configuration = {};
};

/// One of the FTP servers of Debian on a free port of 127.0.0.1, with a configuration and a certificate of
/// its own. It runs as the user of the test and serves a temporary folder.
class FtpDaemon final {
 public:
  using Options = FtpDaemonOptions;

  /// The folder of the unpacked servers is known: see CONTRIBUTING.
  [[nodiscard]] static bool IsAvailable();
  /// Why a test that needs one is skipped.
  [[nodiscard]] static QString MissingText();
  /// One of the unpacked programs ("usr/bin/lftp").
  [[nodiscard]] static QString ProgramFile(const QString& path);

  /// Starts it and waits until it listens; a failure fails the test.
  explicit FtpDaemon(Options options);
  ~FtpDaemon();
  FtpDaemon(const FtpDaemon&) = delete;
  FtpDaemon& operator=(const FtpDaemon&) = delete;

  [[nodiscard]] quint16 Port() const { return port_; }
  /// "127.0.0.1:2121"
  [[nodiscard]] QString Machine() const;
  /// "anonymous" where it takes no other.
  [[nodiscard]] QString User() const;
  [[nodiscard]] QString Password() const { return QStringLiteral("secret"); }
  /// The served folder on this computer, and as clients name it ("/" or the same).
  [[nodiscard]] QString Folder() const { return At(QStringLiteral("served")); }
  [[nodiscard]] QString ClientFolder() const;
  /// Of its certificate.
  [[nodiscard]] QByteArray Fingerprint() const { return keys_.Fingerprint(); }
  [[nodiscard]] QString CertificateFile() const { return At(QStringLiteral("certificate.pem")); }
  /// A path in the server's own temporary folder.
  [[nodiscard]] QString At(const QString& name) const { return folder_.filePath(name); }
  /// What it has written since it began.
  [[nodiscard]] QByteArray Log() const;
  [[nodiscard]] qint64 Process() const { return process_.processId(); }

 private:
  void Start();
  [[nodiscard]] QStringList VsftpdLines() const;
  [[nodiscard]] QStringList ProFtpdLines() const;
  [[nodiscard]] QStringList PyFtpdLines() const;
  [[nodiscard]] bool IsOverTls() const { return options_.tls != Options::Tls::Off; }

  const Options options_;
  FtpTestKeys keys_;
  QTemporaryDir folder_;
  QProcess process_;
  quint16 port_ = 0;
};

}  // namespace trevane::test
