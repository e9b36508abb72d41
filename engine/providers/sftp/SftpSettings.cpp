#include "engine/providers/sftp/SftpSettings.h"

#include "engine/providers/network/ConnectionText.h"

namespace trevane {
namespace {

using connectiontext::HostAndPort;
using connectiontext::OptionSetting;
using connectiontext::Refuse;
using connectiontext::RefuseValue;

void Apply(const OptionSetting& setting, SftpSettings& settings) {
  if (setting.Is(u"User")) {
    if (setting.value.isEmpty()) {
      RefuseValue(setting, QStringLiteral("the name of a user"));
    }
    settings.user = setting.value;
  } else if (setting.Is(u"KeyFile")) {
    if (setting.value.isEmpty()) {
      RefuseValue(setting, QStringLiteral("the path of a private key"));
    }
    settings.keyFile = setting.value;
  } else if (setting.Is(u"Timeout")) {
    settings.timeout = connectiontext::ReadTimeout(setting);
  } else if (setting.Is(u"Encoding")) {
    settings.encoding = connectiontext::ReadEncoding(setting);
  } else if (setting.Is(u"OldAlgorithms")) {
    settings.oldAlgorithms = connectiontext::ReadYesOrNo(setting);
  } else {
    Refuse(QStringLiteral("The option %1 is unknown. Known are User, KeyFile, Timeout, Encoding and "
                          "OldAlgorithms")
               .arg(setting.key.isEmpty() ? QStringLiteral("(without a name)") : setting.key));
  }
}

}  // namespace

SftpSettings ReadSftpSettings(const QString& machine, const QString& option, const QString& userOfComputer) {
  SftpSettings settings;
  const HostAndPort place = connectiontext::ReadHostAndPort(machine);
  settings.host = place.host;
  settings.port = place.port.value_or(SftpSettings::kPort);
  for (const OptionSetting& setting : connectiontext::ReadOption(option)) {
    Apply(setting, settings);
  }
  if (settings.user.isEmpty()) {
    if (userOfComputer.isEmpty()) {
      Refuse(QStringLiteral("The name of this computer's user is not known: the option User is missing"));
    }
    settings.user = userOfComputer;
  }
  return settings;
}

}  // namespace trevane
