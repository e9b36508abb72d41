#pragma once

#include "bench/engine/providers/ControllerDesk.h"
#include "bench/engine/providers/ftp/FtpLine.h"

#include <QByteArray>
#include <QStringList>

#include <utility>

namespace trevane::bench {

/// The controllers Near and Far show the folder of the server.
class FtpDesk final : public ControllerDesk {
 public:
  explicit FtpDesk(FtpLine& line)
      : ControllerDesk(line.Daemon().Folder(), WorkspaceOf(line), SecretsOf(line)) {}

 private:
  [[nodiscard]] static bool IsNameless(FtpLine& line) {
    return line.Daemon().User() == QStringLiteral("anonymous");
  }
  /// Each of the two asks.
  [[nodiscard]] static QStringList SecretsOf(FtpLine& line) {
    return IsNameless(line) ? QStringList() : QStringList(2, line.Daemon().Password());
  }
  [[nodiscard]] static QByteArray WorkspaceOf(FtpLine& line) {
    QByteArray workspace;
    for (const auto& [name, port] : {std::pair("Near", line.Near()), std::pair("Far", line.Far())}) {
      workspace += QByteArray("[") + name + "]\r\nCtrlName=" + name +
                   "\r\nProvider=IxoProv.Ftp\r\nMachine=127.0.0.1:" + QByteArray::number(port) +
                   "\r\nOption=" + (IsNameless(line) ? "" : "User=" + line.Daemon().User().toUtf8()) +
                   "\r\nRoot=" + line.Daemon().ClientFolder().toUtf8() + "\r\n";
    }
    return workspace;
  }
};

}  // namespace trevane::bench
