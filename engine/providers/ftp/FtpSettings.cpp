#include "engine/providers/ftp/FtpSettings.h"

#include "engine/providers/network/ConnectionText.h"

namespace trevane {
namespace {

using connectiontext::HostAndPort;
using connectiontext::OptionSetting;
using connectiontext::RefuseValue;

QString ReadText(const OptionSetting& setting, const QString& expected) {
  if (setting.value.isEmpty()) {
    RefuseValue(setting, expected);
  }
  return setting.value;
}

FtpSettings::Tls ReadTls(const OptionSetting& setting) {
  if (setting.value.compare(u"Explicit", Qt::CaseInsensitive) == 0) {
    return FtpSettings::Tls::Explicit;
  }
  if (setting.value.compare(u"Implicit", Qt::CaseInsensitive) == 0) {
    return FtpSettings::Tls::Implicit;
  }
  if (setting.value.compare(u"Off", Qt::CaseInsensitive) != 0) {
    RefuseValue(setting, QStringLiteral("Off, Explicit or Implicit"));
  }
  return FtpSettings::Tls::Off;
}

FtpSettings::TlsMost ReadTlsMost(const OptionSetting& setting) {
  if (setting.value == u"1.3") {
    return FtpSettings::TlsMost::Tls13;
  }
  if (setting.value != u"1.2") {
    RefuseValue(setting, QStringLiteral("1.2 or 1.3"));
  }
  return FtpSettings::TlsMost::Tls12;
}

void Apply(const OptionSetting& setting, FtpSettings& settings) {
  if (setting.Is(u"User")) {
    settings.user = ReadText(setting, QStringLiteral("the name of a user"));
  } else if (setting.Is(u"Tls")) {
    settings.tls = ReadTls(setting);
  } else if (setting.Is(u"TlsMax")) {
    settings.tlsMost = ReadTlsMost(setting);
  } else if (setting.Is(u"Active")) {
    settings.active = connectiontext::ReadYesOrNo(setting);
  } else if (setting.Is(u"CaFile")) {
    settings.caFile = ReadText(setting, QStringLiteral("the path of a file of certificates"));
  } else if (setting.Is(u"Timeout")) {
    settings.timeout = connectiontext::ReadTimeout(setting);
  } else if (setting.Is(u"Encoding")) {
    settings.encoding = connectiontext::ReadEncoding(setting);
  } else if (setting.Is(u"Drive")) {
    settings.drive = ReadText(setting, QStringLiteral("a folder of the controller"));
  } else {
    connectiontext::Refuse(
        QStringLiteral("The option %1 is unknown. Known are User, Tls, TlsMax, Active, CaFile, Timeout, "
                       "Encoding and Drive")
            .arg(setting.key.isEmpty() ? QStringLiteral("(without a name)") : setting.key));
  }
}

}  // namespace

FtpSettings ReadFtpSettings(const QString& machine, const QString& option) {
  FtpSettings settings;
  const HostAndPort place = connectiontext::ReadHostAndPort(machine);
  settings.host = place.host;
  for (const OptionSetting& setting : connectiontext::ReadOption(option)) {
    Apply(setting, settings);
  }
  const bool isImplicit = settings.tls == FtpSettings::Tls::Implicit;
  settings.port = place.port.value_or(isImplicit ? FtpSettings::kImplicitPort : FtpSettings::kPort);
  return settings;
}

}  // namespace trevane
