#include "engine/providers/ftp/FtpHelp.h"

#include "engine/providers/ftp/FtpSettings.h"

#include <QStringList>

namespace trevane {

ConnectionHelp FtpHelp() {
  const QStringList machine{
      QStringLiteral("host"),
      QStringLiteral("host:port (%1; with Tls=Implicit %2)")
          .arg(FtpSettings::kPort)
          .arg(FtpSettings::kImplicitPort),
      QStringLiteral("[IPv6 address]:port"),
  };
  const QStringList option{
      QStringLiteral("Key=Value, separated by commas. A value with commas or outer blanks"),
      QStringLiteral("stands in double quotes. In brackets: what is taken without the key."),
      QString(),
      QStringLiteral("User: the name to log on with (an anonymous log-on)"),
      QStringLiteral("Tls=Explicit or Implicit: encrypt the connection (Off)"),
      QStringLiteral("TlsMax: 1.3 where the controller can do it (1.2)"),
      QStringLiteral("CaFile: the path of a file of certificates to be trusted, too (none)"),
      QStringLiteral("Drive: the folder of the controller to be shown, such as /MMC"),
      QStringLiteral("   (the topmost one, or that of the log-on where it cannot be listed)"),
      QStringLiteral("Active=Yes: the controller opens the data connections; only without Tls (No)"),
      QStringLiteral("Timeout: seconds without an answer (%1)").arg(FtpSettings::kTimeout),
      QStringLiteral("Encoding: of the names on the controller, such as ISO-8859-1 (UTF-8)"),
      QString(),
      QStringLiteral("No password: where one is needed, it will be asked for."),
  };
  return {.machineExample = QStringLiteral("cell4:21"),
          .optionExample = QStringLiteral("User=joe, Tls=Explicit"),
          .machine = machine.join(u'\n'),
          .option = option.join(u'\n')};
}

}  // namespace trevane
