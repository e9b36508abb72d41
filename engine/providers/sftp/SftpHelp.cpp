#include "engine/providers/sftp/SftpHelp.h"

#include "engine/providers/sftp/SftpSettings.h"

#include <QStringList>

namespace trevane {

ConnectionHelp SftpHelp() {
  const QStringList machine{
      QStringLiteral("host"),
      QStringLiteral("host:port (%1)").arg(SftpSettings::kPort),
      QStringLiteral("[IPv6 address]:port"),
  };
  const QStringList option{
      QStringLiteral("Key=Value, separated by commas. A value with commas or outer blanks"),
      QStringLiteral("stands in double quotes. In brackets: what is taken without the key."),
      QString(),
      QStringLiteral("User: the name to log on with (your name on this computer)"),
      QStringLiteral("KeyFile: the path of a private key on this computer (your usual keys)"),
      QStringLiteral("Timeout: seconds without an answer (%1)").arg(SftpSettings::kTimeout),
      QStringLiteral("Encoding: of the names on the controller, such as ISO-8859-1 (UTF-8)"),
      QStringLiteral("OldAlgorithms=Yes: allow what is no longer safe, for old controllers"),
      QString(),
      QStringLiteral("No password: where one is needed, it will be asked for."),
  };
  return {.machineExample = QStringLiteral("cell4:22"),
          .optionExample = QStringLiteral("User=joe, Timeout=20"),
          .machine = machine.join(u'\n'),
          .option = option.join(u'\n')};
}

}  // namespace trevane
