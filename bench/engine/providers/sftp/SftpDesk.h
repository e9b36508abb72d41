#pragma once

#include "bench/engine/providers/ControllerDesk.h"
#include "bench/engine/providers/sftp/FarServers.h"

#include <QByteArray>

#include <utility>

namespace trevane::bench {

/// The controllers Near0, Near1, Far0 and Far1.
class SftpDesk final : public ControllerDesk {
 public:
  explicit SftpDesk(const FarServers& servers) : ControllerDesk(servers.Root(), WorkspaceOf(servers)) {}

 private:
  [[nodiscard]] static QByteArray WorkspaceOf(const FarServers& servers) {
    QByteArray workspace;
    for (int i = 0; i < 2; ++i) {
      for (const auto& [name, port] :
           {std::pair("Near", servers.Near(i)), std::pair("Far", servers.Far(i))}) {
        const QByteArray each = name + QByteArray::number(i);
        workspace += '[' + each + "]\r\nCtrlName=" + each +
                     "\r\nProvider=IxoProv.Sftp\r\nMachine=" + FarServers::Machine(port).toUtf8() +
                     "\r\nRoot=" + servers.Root().toUtf8() + "\r\n";
      }
    }
    return workspace;
  }
};

}  // namespace trevane::bench
