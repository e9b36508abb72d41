#pragma once

#include "bench/engine/providers/ControllerDesk.h"
#include "bench/engine/providers/ftp/FtpLine.h"

#include <QByteArray>

#include <utility>

namespace trevane::bench {

/// The controllers Near and Far show the folder of the server.
class FtpDesk final : public ControllerDesk {
 public:
  explicit FtpDesk(FtpLine& line) : ControllerDesk(line.Daemon().Folder(), WorkspaceOf(line)) {}

 private:
  [[nodiscard]] static QByteArray WorkspaceOf(FtpLine& line) {
    QByteArray workspace;
    for (const auto& [name, port] : {std::pair("Near", line.Near()), std::pair("Far", line.Far())}) {
      workspace += QByteArray("[") + name + "]\r\nCtrlName=" + name +
                   "\r\nProvider=IxoProv.Ftp\r\nMachine=127.0.0.1:" + QByteArray::number(port) +
                   "\r\nRoot=" + line.Daemon().ClientFolder().toUtf8() + "\r\n";
    }
    return workspace;
  }
};

}  // namespace trevane::bench
