#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>

#include <optional>
#include <vector>

/// The machine and option texts of a connection, as a person writes them. What cannot be used fails with
/// error::kInvalidParameter and a text that names the key, the value or the missing host.
namespace trevane::connectiontext {

struct OptionSetting {
  QString key;
  QString value;

  [[nodiscard]] bool Is(QStringView name) const { return key.compare(name, Qt::CaseInsensitive) == 0; }
};

/// Reads "Key=Value" separated by commas, where a value with commas or outer blanks stands in double quotes
/// (two of them within are one). A key that is there twice is refused; so is a Password, with the text that
/// one will be asked for.
[[nodiscard]] std::vector<OptionSetting> ReadOption(const QString& option);

struct HostAndPort {
  QString host;
  std::optional<quint16> port = {};
};

/// Reads "host", "host:port" or "[ipv6]:port".
[[nodiscard]] HostAndPort ReadHostAndPort(const QString& machine);

[[noreturn]] void Refuse(const QString& text);
/// `expected` is what the value must be.
[[noreturn]] void RefuseValue(const OptionSetting& setting, const QString& expected);

/// Seconds, from 1 to 3600.
[[nodiscard]] int ReadTimeout(const OptionSetting& setting);
/// An encoding of names, as QStringDecoder knows it.
[[nodiscard]] QString ReadEncoding(const OptionSetting& setting);
[[nodiscard]] bool ReadYesOrNo(const OptionSetting& setting);

}  // namespace trevane::connectiontext
