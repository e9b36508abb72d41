#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "tests/support/ftp/FtpDaemon.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <memory>

namespace trevane::bench {

/// An FTP server of this computer, also behind a line of 40 ms a round trip.
class FtpLine final {
 public:
  static constexpr double kRoundTrip = 0.04;  // seconds

  using Program = test::FtpDaemonOptions::Program;

  explicit FtpLine(Program program);
  ~FtpLine();
  FtpLine(const FtpLine&) = delete;
  FtpLine& operator=(const FtpLine&) = delete;

  [[nodiscard]] quint16 Near() const { return daemon_.Port(); }
  [[nodiscard]] quint16 Far() const { return far_; }
  [[nodiscard]] test::FtpDaemon& Daemon() { return daemon_; }
  [[nodiscard]] std::unique_ptr<CurlDialogue> Connect(quint16 port) const;
  /// The files of the server; nothing is known of it yet.
  [[nodiscard]] std::shared_ptr<FileSystem> Open(quint16 port) const;
  /// A path of the server's folder as clients name it.
  [[nodiscard]] QByteArray Name(const QByteArray& name) const {
    return daemon_.ClientFolder().toUtf8() + '/' + name;
  }
  /// The same on this computer.
  [[nodiscard]] QString At(const QString& name) const { return daemon_.Folder() + u'/' + name; }

 private:
  [[nodiscard]] FtpSettings Settings(quint16 port) const;
  [[nodiscard]] FtpLogOn LogOn() const { return {daemon_.User(), Secret(daemon_.Password())}; }

  test::FtpDaemon daemon_;
  quint16 far_ = 0;
  QProcess proxy_;
};

}  // namespace trevane::bench
