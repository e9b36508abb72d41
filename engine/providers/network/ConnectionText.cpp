#include "engine/providers/network/ConnectionText.h"

#include "base/RunTimeError.h"

#include <QStringDecoder>
#include <QStringList>
#include <QStringView>

#include <algorithm>
#include <utility>

namespace trevane::connectiontext {
namespace {

constexpr int kLongestTimeout = 3600;

/// Takes the option text apart, from its beginning.
class OptionReader final {
 public:
  explicit OptionReader(const QString& text) : text_(text) {}

  [[nodiscard]] std::vector<OptionSetting> Read() {
    std::vector<OptionSetting> settings;
    while (at_ < text_.size()) {
      SkipBlanks();
      if (at_ < text_.size() && text_[at_] != u',') {
        settings.push_back(ReadSetting());
      }
      ++at_;  // the comma
    }
    return settings;
  }

 private:
  [[nodiscard]] OptionSetting ReadSetting() {
    const qsizetype end = Next(u',');
    const qsizetype equals = Next(u'=');
    if (equals >= end) {
      Refuse(QStringLiteral("The option has no value: %1. It must be Key=Value")
                 .arg(text_.sliced(at_, end - at_).trimmed()));
    }
    const QString key = text_.sliced(at_, equals - at_).trimmed();
    at_ = equals + 1;
    SkipBlanks();
    if (at_ < text_.size() && text_[at_] == u'"') {
      return {key, ReadQuoted(key)};
    }
    const qsizetype start = std::exchange(at_, Next(u','));
    return {key, text_.sliced(start, at_ - start).trimmed()};
  }

  [[nodiscard]] QString ReadQuoted(const QString& key) {
    QString value;
    for (++at_;; ++at_) {
      if (at_ >= text_.size()) {
        Refuse(QStringLiteral("The closing quote is missing behind the option %1").arg(key));
      }
      if (text_[at_] == u'"') {
        ++at_;
        if (at_ >= text_.size() || text_[at_] != u'"') {
          break;
        }
      }
      value.append(text_[at_]);
    }
    SkipBlanks();
    if (at_ < text_.size() && text_[at_] != u',') {
      Refuse(QStringLiteral("A comma is missing behind the value of the option %1").arg(key));
    }
    return value;
  }

  void SkipBlanks() {
    while (at_ < text_.size() && text_[at_].isSpace()) {
      ++at_;
    }
  }
  [[nodiscard]] qsizetype Next(QChar what) const {
    const qsizetype found = text_.indexOf(what, at_);
    return found < 0 ? text_.size() : found;
  }

  const QString& text_;
  qsizetype at_ = 0;
};

bool IsEqual(const QString& left, QStringView right) {
  return left.compare(right, Qt::CaseInsensitive) == 0;
}

quint16 ReadPort(QStringView text, const QString& machine) {
  bool isNumber = false;
  const int port = text.toInt(&isNumber);
  if (!isNumber || port < 1 || port > 65535) {
    Refuse(QStringLiteral("The port must be a number from 1 to 65535: %1").arg(machine));
  }
  return static_cast<quint16>(port);
}

void RequireHost(const QString& host, const QString& machine) {
  if (host.isEmpty()) {
    Refuse(QStringLiteral("The machine names no host%1")
               .arg(machine.isEmpty() ? QString() : QStringLiteral(": ") + machine));
  }
  const bool isWrong = std::any_of(host.begin(), host.end(), [](QChar c) {
    return c.isSpace() || c.unicode() < 32 || QStringView(u"/\\@,[]").contains(c);
  });
  if (isWrong || host.startsWith(u'-')) {
    Refuse(QStringLiteral("The machine must be host, host:port or [IPv6 address]:port: %1").arg(machine));
  }
}

}  // namespace

void Refuse(const QString& text) {
  throw RunTimeError(error::kInvalidParameter, text);
}

void RefuseValue(const OptionSetting& setting, const QString& expected) {
  Refuse(
      QStringLiteral("The value of the option %1 cannot be used: %2. It must be %3")
          .arg(setting.key, setting.value.isEmpty() ? QStringLiteral("(empty)") : setting.value, expected));
}

int ReadTimeout(const OptionSetting& setting) {
  bool isNumber = false;
  const int seconds = setting.value.toInt(&isNumber);
  if (!isNumber || seconds < 1 || seconds > kLongestTimeout) {
    RefuseValue(setting, QStringLiteral("a number of seconds from 1 to %1").arg(kLongestTimeout));
  }
  return seconds;
}

QString ReadEncoding(const OptionSetting& setting) {
  QStringDecoder decoder(setting.value.toLatin1().constData());
  // Names are bytes between slashes: an encoding of wider units cannot be one of names.
  if (setting.value.isEmpty() || !decoder.isValid() ||
      decoder.decode(QByteArrayLiteral("a/")) != QStringLiteral("a/")) {
    RefuseValue(setting, QStringLiteral("an encoding of names, for instance UTF-8 or ISO-8859-1"));
  }
  return setting.value;
}

bool ReadYesOrNo(const OptionSetting& setting) {
  if (IsEqual(setting.value, u"Yes")) {
    return true;
  }
  if (!IsEqual(setting.value, u"No")) {
    RefuseValue(setting, QStringLiteral("Yes or No"));
  }
  return false;
}

std::vector<OptionSetting> ReadOption(const QString& option) {
  std::vector<OptionSetting> settings = OptionReader(option).Read();
  QStringList seen;
  for (const OptionSetting& setting : settings) {
    if (seen.contains(setting.key, Qt::CaseInsensitive)) {
      Refuse(QStringLiteral("The option %1 is there twice").arg(setting.key));
    }
    seen.append(setting.key);
    if (setting.Is(u"Password") || setting.Is(u"Passphrase")) {
      // The value stands in no text: it would reach the log.
      Refuse(QStringLiteral("The option %1 is not taken, since options are stored in clear text. It will be "
                            "asked for when the controller is connected")
                 .arg(setting.key));
    }
  }
  return settings;
}

HostAndPort ReadHostAndPort(const QString& text) {
  HostAndPort place;
  const QString machine = text.trimmed();
  if (machine.startsWith(u'[')) {
    const qsizetype end = machine.indexOf(u']');
    const QString rest = end < 0 ? QStringLiteral("?") : machine.sliced(end + 1);
    if (!rest.isEmpty() && !rest.startsWith(u':')) {
      Refuse(QStringLiteral("The machine must be host, host:port or [IPv6 address]:port: %1").arg(machine));
    }
    place.host = machine.sliced(1, end - 1);
    if (!rest.isEmpty()) {
      place.port = ReadPort(QStringView(rest).sliced(1), machine);
    }
  } else if (machine.count(u':') == 1) {
    const qsizetype colon = machine.indexOf(u':');
    place.host = machine.first(colon);
    place.port = ReadPort(QStringView(machine).sliced(colon + 1), machine);
  } else {
    // With more colons it is an address of its own.
    place.host = machine;
  }
  RequireHost(place.host, machine);
  return place;
}

}  // namespace trevane::connectiontext
