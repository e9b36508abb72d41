#include "base/RunTimeError.h"
#include "engine/providers/ftp/FtpHelp.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <gtest/gtest.h>

#include <vector>

namespace trevane::test {
namespace {

const QString kHost = QStringLiteral("cell4");

FtpSettings Read(const QString& machine, const QString& option = {}) {
  return ReadFtpSettings(machine, option);
}

/// The text with which it is refused.
QString Refusal(const QString& machine, const QString& option = {}) {
  try {
    static_cast<void>(ReadFtpSettings(machine, option));
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kInvalidParameter);
    return failure.Description();
  }
  return {};
}

QString WrongValue(const char* key, const QString& value, const QString& expected) {
  return QStringLiteral("The value of the option %1 cannot be used: %2. It must be %3")
      .arg(QString::fromLatin1(key), value.isEmpty() ? QStringLiteral("(empty)") : value, expected);
}

TEST(FtpSettingsTest, TakesHostAloneForAnAnonymousPlainLogOn) {
  const FtpSettings settings = Read(kHost);
  EXPECT_EQ(settings.host, kHost);
  EXPECT_EQ(settings.port, 21);
  EXPECT_EQ(settings.user, QString());
  EXPECT_EQ(settings.tls, FtpSettings::Tls::Off);
  EXPECT_EQ(settings.tlsMost, FtpSettings::TlsMost::Tls12);
  EXPECT_FALSE(settings.active);
  EXPECT_EQ(settings.caFile, QString());
  EXPECT_EQ(settings.timeout, 10);
  EXPECT_EQ(settings.encoding, QString());
  EXPECT_EQ(settings.drive, QString());
}

TEST(FtpSettingsTest, TakesThePortOfTheKindOfTls) {
  struct Case {
    const char16_t* machine;
    const char16_t* option;
    const char16_t* host;
    int port;
  };
  const std::vector<Case> cases = {
      {u"cell4", u"", u"cell4", 21},
      {u"cell4", u"Tls=Off", u"cell4", 21},
      {u"cell4", u"Tls=Explicit", u"cell4", 21},
      {u"cell4", u"Tls=Implicit", u"cell4", 990},
      {u"cell4:990", u"Tls=Explicit", u"cell4", 990},
      {u"cell4:21", u"Tls=Implicit", u"cell4", 21},
      {u"cell4:2121", u"", u"cell4", 2121},
      {u"[fe80::1%eth0]:2121", u"", u"fe80::1%eth0", 2121},
      {u"[::1]", u"tls=implicit", u"::1", 990},
      {u" fe80::1 ", u"", u"fe80::1", 21},
  };
  for (const Case& each : cases) {
    const FtpSettings settings = Read(QString::fromUtf16(each.machine), QString::fromUtf16(each.option));
    EXPECT_EQ(settings.host, QString::fromUtf16(each.host));
    EXPECT_EQ(settings.port, each.port) << QString::fromUtf16(each.option).toStdString();
  }
}

TEST(FtpSettingsTest, RefusesAMachineThatNamesNoHostOrAWrongPort) {
  EXPECT_EQ(Refusal(QString()), QStringLiteral("The machine names no host"));
  EXPECT_EQ(Refusal(QStringLiteral(":21")), QStringLiteral("The machine names no host: :21"));
  EXPECT_EQ(Refusal(QStringLiteral("cell4:ftp")),
            QStringLiteral("The port must be a number from 1 to 65535: cell4:ftp"));
  EXPECT_EQ(Refusal(QStringLiteral("cell4:65536")),
            QStringLiteral("The port must be a number from 1 to 65535: cell4:65536"));
  const QString form = QStringLiteral("The machine must be host, host:port or [IPv6 address]:port: ");
  for (const char16_t* machine : {u"joe@cell4", u"cell 4", u"[::1", u"[::1]21", u"-q"}) {
    EXPECT_EQ(Refusal(QString::fromUtf16(machine)), form + QString::fromUtf16(machine));
  }
}

TEST(FtpSettingsTest, ReadsEveryKey) {
  FtpSettings expected{.host = kHost, .port = 990, .user = QStringLiteral("joe")};
  expected.tls = FtpSettings::Tls::Implicit;
  expected.tlsMost = FtpSettings::TlsMost::Tls13;
  expected.active = true;
  expected.caFile = QStringLiteral("/home/me/plant.pem");
  expected.timeout = 30;
  expected.encoding = QStringLiteral("ISO-8859-1");
  expected.drive = QStringLiteral("/MMC");
  EXPECT_EQ(
      Read(kHost, QStringLiteral("User=joe,Tls=Implicit,TlsMax=1.3,Active=Yes,"
                                 "CaFile=/home/me/plant.pem,Timeout=30,Encoding=ISO-8859-1,Drive=/MMC")),
      expected);
  EXPECT_EQ(Read(kHost, QStringLiteral(" user = joe , , TLS= IMPLICIT ,tlsmax= 1.3, ACTIVE=yes,"
                                       "cafile =/home/me/plant.pem,Timeout = 30 ,encoding=ISO-8859-1,"
                                       " drive = /MMC ,")),
            expected);
}

TEST(FtpSettingsTest, ReadsEachValueOfAChoice) {
  EXPECT_EQ(Read(kHost, QStringLiteral("Tls=Off")).tls, FtpSettings::Tls::Off);
  EXPECT_EQ(Read(kHost, QStringLiteral("Tls=Explicit")).tls, FtpSettings::Tls::Explicit);
  EXPECT_EQ(Read(kHost, QStringLiteral("TlsMax=1.2")).tlsMost, FtpSettings::TlsMost::Tls12);
  EXPECT_FALSE(Read(kHost, QStringLiteral("Active=No")).active);
}

TEST(FtpSettingsTest, ReadsQuotedValues) {
  EXPECT_EQ(Read(kHost, QStringLiteral("CaFile=\"/keys/a, b\" , User=joe")).caFile,
            QStringLiteral("/keys/a, b"));
  EXPECT_EQ(Read(kHost, QStringLiteral("User=\" joe \"")).user, QStringLiteral(" joe "));
  EXPECT_EQ(Read(kHost, QStringLiteral("Drive=\"/say \"\"A\"\"\"")).drive, QStringLiteral("/say \"A\""));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("Drive=\"/MMC")),
            QStringLiteral("The closing quote is missing behind the option Drive"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("Drive=\"/MMC\"x")),
            QStringLiteral("A comma is missing behind the value of the option Drive"));
}

TEST(FtpSettingsTest, RefusesWhatItDoesNotKnow) {
  const QString known =
      QStringLiteral(" is unknown. Known are User, Tls, TlsMax, Active, CaFile, Timeout, Encoding and Drive");
  EXPECT_EQ(Refusal(kHost, QStringLiteral("KeyFile=/a")), QStringLiteral("The option KeyFile") + known);
  EXPECT_EQ(Refusal(kHost, QStringLiteral("=red")), QStringLiteral("The option (without a name)") + known);
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=joe,Tls")),
            QStringLiteral("The option has no value: Tls. It must be Key=Value"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("Tls=Off,tls=Explicit")),
            QStringLiteral("The option tls is there twice"));
}

TEST(FtpSettingsTest, RefusesValuesThatCannotBeUsed) {
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=")),
            WrongValue("User", {}, QStringLiteral("the name of a user")));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("CaFile=\"\"")),
            WrongValue("CaFile", {}, QStringLiteral("the path of a file of certificates")));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("Drive=")),
            WrongValue("Drive", {}, QStringLiteral("a folder of the controller")));
  for (const char16_t* tls : {u"", u"Yes", u"1.2", u"Explicit!"}) {
    const QString value = QString::fromUtf16(tls);
    EXPECT_EQ(Refusal(kHost, QStringLiteral("Tls=") + value),
              WrongValue("Tls", value, QStringLiteral("Off, Explicit or Implicit")));
  }
  for (const char16_t* version : {u"", u"1", u"1.1", u"1.4", u"TLSv1.2"}) {
    const QString value = QString::fromUtf16(version);
    EXPECT_EQ(Refusal(kHost, QStringLiteral("TlsMax=") + value),
              WrongValue("TlsMax", value, QStringLiteral("1.2 or 1.3")));
  }
  for (const char16_t* seconds : {u"", u"0", u"-1", u"3601", u"soon", u"1.5"}) {
    const QString value = QString::fromUtf16(seconds);
    EXPECT_EQ(Refusal(kHost, QStringLiteral("Timeout=") + value),
              WrongValue("Timeout", value, QStringLiteral("a number of seconds from 1 to 3600")));
  }
  EXPECT_EQ(Refusal(kHost, QStringLiteral("Active=perhaps")),
            WrongValue("Active", QStringLiteral("perhaps"), QStringLiteral("Yes or No")));
  for (const char16_t* encoding : {u"Klingon", u"UTF-16"}) {
    const QString value = QString::fromUtf16(encoding);
    EXPECT_EQ(Refusal(kHost, QStringLiteral("Encoding=") + value),
              WrongValue("Encoding", value,
                         QStringLiteral("an encoding of names, for instance UTF-8 or ISO-8859-1")));
  }
}

TEST(FtpSettingsTest, TakesNoSecretAndRepeatsNone) {
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=joe, password = swordfish")),
            QStringLiteral("The option password is not taken, since options are stored in clear text. "
                           "It will be asked for when the controller is connected"));
  EXPECT_FALSE(Refusal(kHost, QStringLiteral("Passphrase=swordfish")).contains(QStringLiteral("swordfish")));
}

TEST(FtpSettingsTest, TheHelpNamesEveryKeyAndItsExamplesCanBeUsed) {
  const ConnectionHelp help = FtpHelp();
  const FtpSettings example = Read(help.machineExample, help.optionExample);
  EXPECT_EQ(example.host, QStringLiteral("cell4"));
  EXPECT_EQ(example.user, QStringLiteral("joe"));
  EXPECT_EQ(example.tls, FtpSettings::Tls::Explicit);
  for (const char* key :
       {"User:", "Tls=", "TlsMax:", "Active=Yes", "CaFile:", "Timeout:", "Encoding:", "Drive:"}) {
    EXPECT_TRUE(help.option.contains(QLatin1StringView(key))) << key;
  }
  EXPECT_TRUE(help.option.contains(QStringLiteral("it will be asked for")));
  EXPECT_TRUE(help.option.contains(QStringLiteral("(the topmost one,")));
  EXPECT_TRUE(help.machine.contains(QStringLiteral("990")));
}

}  // namespace
}  // namespace trevane::test
