#include "base/RunTimeError.h"
#include "engine/providers/sftp/SftpHelp.h"
#include "engine/providers/sftp/SftpSettings.h"

#include <gtest/gtest.h>

#include <vector>

namespace trevane::test {
namespace {

const QString kHost = QStringLiteral("cell4");
const QString kMe = QStringLiteral("me");

SftpSettings Read(const QString& machine, const QString& option = {}) {
  return ReadSftpSettings(machine, option, kMe);
}

/// The text with which it is refused.
QString Refusal(const QString& machine, const QString& option = {}, const QString& me = kMe) {
  try {
    static_cast<void>(ReadSftpSettings(machine, option, me));
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kInvalidParameter);
    return failure.Description();
  }
  return {};
}

TEST(SftpSettingsTest, ReadsHostAndPort) {
  struct Case {
    const char16_t* machine;
    const char16_t* host;
    int port;
  };
  const std::vector<Case> cases = {
      {u"cell4", u"cell4", 22},
      {u"  cell4.plant.example  ", u"cell4.plant.example", 22},
      {u"cell4:2222", u"cell4", 2222},
      {u"192.168.0.4:65535", u"192.168.0.4", 65535},
      {u"[fe80::1%eth0]:2222", u"fe80::1%eth0", 2222},
      {u"[::1]", u"::1", 22},
      {u"fe80::1", u"fe80::1", 22},
  };
  for (const Case& each : cases) {
    const SftpSettings settings = Read(QString::fromUtf16(each.machine));
    EXPECT_EQ(settings.host, QString::fromUtf16(each.host));
    EXPECT_EQ(settings.port, each.port);
    EXPECT_EQ(settings.user, kMe);
    EXPECT_EQ(settings.timeout, 10);
    EXPECT_FALSE(settings.oldAlgorithms);
  }
}

TEST(SftpSettingsTest, RefusesAMachineThatNamesNoHostOrAWrongPort) {
  EXPECT_EQ(Refusal(QString()), QStringLiteral("The machine names no host"));
  EXPECT_EQ(Refusal(QStringLiteral("   ")), QStringLiteral("The machine names no host"));
  EXPECT_EQ(Refusal(QStringLiteral(":22")), QStringLiteral("The machine names no host: :22"));
  EXPECT_EQ(Refusal(QStringLiteral("[]:22")), QStringLiteral("The machine names no host: []:22"));
  const QString port = QStringLiteral("The port must be a number from 1 to 65535: ");
  for (const char16_t* machine :
       {u"cell4:", u"cell4:0", u"cell4:65536", u"cell4:ssh", u"cell4:-1", u"[::1]:"}) {
    EXPECT_EQ(Refusal(QString::fromUtf16(machine)), port + QString::fromUtf16(machine));
  }
  const QString form = QStringLiteral("The machine must be host, host:port or [IPv6 address]:port: ");
  for (const char16_t* machine :
       {u"joe@cell4", u"cell 4", u"sftp://cell4", u"[::1", u"[::1]22", u"-oProxy", u"a,b"}) {
    EXPECT_TRUE(Refusal(QString::fromUtf16(machine)).startsWith(form) ||
                Refusal(QString::fromUtf16(machine)).startsWith(port))
        << Refusal(QString::fromUtf16(machine)).toStdString();
  }
}

TEST(SftpSettingsTest, ReadsEveryKey) {
  SftpSettings expected{.host = kHost, .port = 22, .user = QStringLiteral("joe")};
  expected.keyFile = QStringLiteral("/home/me/keys/cell");
  expected.timeout = 30;
  expected.encoding = QStringLiteral("ISO-8859-1");
  expected.oldAlgorithms = true;
  EXPECT_EQ(Read(kHost, QStringLiteral("User=joe,KeyFile=/home/me/keys/cell,Timeout=30,"
                                       "Encoding=ISO-8859-1,OldAlgorithms=Yes")),
            expected);
  EXPECT_EQ(Read(kHost, QStringLiteral(" user = joe , , KEYFILE= /home/me/keys/cell ,Timeout = 30 ,"
                                       "encoding=ISO-8859-1, oldalgorithms =yes ,")),
            expected);
}

TEST(SftpSettingsTest, TheHelpNamesEveryKeyAndItsExamplesCanBeUsed) {
  const ConnectionHelp help = SftpHelp();
  const SftpSettings example = Read(help.machineExample, help.optionExample);
  EXPECT_EQ(example.host, QStringLiteral("cell4"));
  EXPECT_EQ(example.user, QStringLiteral("joe"));
  for (const char* key : {"User", "KeyFile", "Timeout", "Encoding", "OldAlgorithms=Yes"}) {
    EXPECT_TRUE(help.option.contains(QLatin1StringView(key))) << key;
  }
  EXPECT_TRUE(help.option.contains(QStringLiteral("it will be asked for")));
  EXPECT_TRUE(help.machine.contains(QStringLiteral("[IPv6 address]:port")));
}

TEST(SftpSettingsTest, ReadsQuotedValues) {
  EXPECT_EQ(Read(kHost, QStringLiteral("KeyFile=\"/keys/a, b\" , User=joe")).keyFile,
            QStringLiteral("/keys/a, b"));
  EXPECT_EQ(Read(kHost, QStringLiteral("User=\" joe \"")).user, QStringLiteral(" joe "));
  EXPECT_EQ(Read(kHost, QStringLiteral("User=\"say \"\"joe\"\"\"")).user, QStringLiteral("say \"joe\""));
  EXPECT_EQ(Read(kHost, QStringLiteral("User=a b=c\"d")).user, QStringLiteral("a b=c\"d"));
}

TEST(SftpSettingsTest, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(Refusal(kHost, QStringLiteral("Colour=red")),
            QStringLiteral("The option Colour is unknown. Known are User, KeyFile, Timeout, Encoding and "
                           "OldAlgorithms"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("=red")),
            QStringLiteral("The option (without a name) is unknown. Known are User, KeyFile, Timeout, "
                           "Encoding and OldAlgorithms"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=joe,fast")),
            QStringLiteral("The option has no value: fast. It must be Key=Value"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=joe,user=jim")),
            QStringLiteral("The option user is there twice"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=\"joe")),
            QStringLiteral("The closing quote is missing behind the option User"));
  EXPECT_EQ(Refusal(kHost, QStringLiteral("User=\"joe\"x")),
            QStringLiteral("A comma is missing behind the value of the option User"));
}

TEST(SftpSettingsTest, RefusesValuesThatCannotBeUsed) {
  const QString start = QStringLiteral("The value of the option %1 cannot be used: %2. It must be ");
  EXPECT_TRUE(Refusal(kHost, QStringLiteral("User="))
                  .startsWith(start.arg(QStringLiteral("User"), QStringLiteral("(empty)"))));
  EXPECT_TRUE(Refusal(kHost, QStringLiteral("User=\"\",Timeout=3"))
                  .startsWith(start.arg(QStringLiteral("User"), QStringLiteral("(empty)"))));
  EXPECT_TRUE(Refusal(kHost, QStringLiteral("KeyFile="))
                  .startsWith(start.arg(QStringLiteral("KeyFile"), QStringLiteral("(empty)"))));
  for (const char16_t* seconds : {u"0", u"-1", u"3601", u"soon", u"1.5"}) {
    const QString value = QString::fromUtf16(seconds);
    EXPECT_EQ(
        Refusal(kHost, QStringLiteral("Timeout=") + value),
        start.arg(QStringLiteral("Timeout"), value) + QStringLiteral("a number of seconds from 1 to 3600"));
  }
  for (const char16_t* encoding : {u"Klingon", u"UTF-16", u"UTF-32LE"}) {
    const QString value = QString::fromUtf16(encoding);
    EXPECT_TRUE(Refusal(kHost, QStringLiteral("Encoding=") + value)
                    .startsWith(start.arg(QStringLiteral("Encoding"), value)));
  }
  EXPECT_EQ(
      Refusal(kHost, QStringLiteral("OldAlgorithms=maybe")),
      start.arg(QStringLiteral("OldAlgorithms"), QStringLiteral("maybe")) + QStringLiteral("Yes or No"));
  EXPECT_FALSE(Read(kHost, QStringLiteral("OldAlgorithms=No")).oldAlgorithms);
}

TEST(SftpSettingsTest, TakesNoSecretAndRepeatsNone) {
  const QString text = Refusal(kHost, QStringLiteral("User=joe, password = swordfish"));
  EXPECT_EQ(text, QStringLiteral("The option password is not taken, since options are stored in clear text. "
                                 "It will be asked for when the controller is connected"));
  EXPECT_FALSE(Refusal(kHost, QStringLiteral("Passphrase=swordfish")).contains(QStringLiteral("swordfish")));
}

TEST(SftpSettingsTest, TakesTheUserOfThisComputerWhereNoneIsNamed) {
  EXPECT_EQ(Read(kHost).user, kMe);
  EXPECT_EQ(Refusal(kHost, QString(), QString()),
            QStringLiteral("The name of this computer's user is not known: the option User is missing"));
  EXPECT_EQ(ReadSftpSettings(kHost, QStringLiteral("User=joe"), QString()).user, QStringLiteral("joe"));
}

}  // namespace
}  // namespace trevane::test
