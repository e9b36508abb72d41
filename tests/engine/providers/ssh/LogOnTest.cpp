#include "engine/providers/network/SecretDesk.h"
#include "platform/SecretStore.h"
#include "tests/engine/providers/ssh/SshdWorld.h"
#include "tests/support/FakeSecretStore.h"
#include "tests/support/SshTestServer.h"
#include "tests/support/TestFiles.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace trevane::test {
namespace {

Secret SecretOf(const char* text) {
  return Secret(QByteArrayView(text));
}

class LogOnTest : public SshdWorld {
 protected:
  /// A user who has no keys and no agent.
  [[nodiscard]] SshPlace PlaceOf(const SshTestServer& server) {
    SshPlace place;
    place.knownHosts = folder_.filePath(QStringLiteral("known_hosts"));
    WriteFile(place.knownHosts, server.KnownHostsLine());
    place.userName = QStringLiteral("joe");
    place.store = &store_;
    return place;
  }
  [[nodiscard]] std::unique_ptr<SshConnector> ConnectorTo(const SshTestServer& server) {
    return ConnectorOf(server.Machine(), PlaceOf(server));
  }
  [[nodiscard]] static QString PasswordPrompt(const SshTestServer& server) {
    return QStringLiteral("Password of joe on ") + server.Machine();
  }
  [[nodiscard]] static QString PasswordAccount(const SshTestServer& server) {
    return QStringLiteral("password for joe@") + server.Machine();
  }
  /// Makes a key of the user; the text of the public one.
  QByteArray MakeKey(const QString& type, const QString& passphrase = {}) {
    Sshd::MakeKey(KeyPath(), type, passphrase);
    return ContentOf(KeyPath() + QStringLiteral(".pub"));
  }
  [[nodiscard]] QString KeyPath() const { return folder_.filePath(QStringLiteral("id_test")); }

  QTemporaryDir folder_;
  FakeSecretStore store_;
};

TEST_F(LogOnTest, AsksForThePassword) {
  const SshTestServer server({.password = "swordfish", .banner = "Authorised\x1b[31m persons only\n"});
  const auto connector = ConnectorTo(server);
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  const AskedQuestion& asked = prompts_.Asked().front();
  EXPECT_EQ(asked.title, QStringLiteral("Log on to ") + server.Machine());
  EXPECT_TRUE(asked.isHidden);
  EXPECT_TRUE(asked.offersRemember);
  EXPECT_EQ(asked.whyNotRemember, QString());
  EXPECT_EQ(asked.informativeText, QStringLiteral("Authorised[31m persons only"));
  EXPECT_FALSE(connector->ConnectsWithoutQuestion());
  EXPECT_TRUE(store_.kept.empty());
}

TEST_F(LogOnTest, ConnectsOnceMoreWithWhatWasTyped) {
  const SshTestServer server({.password = "swordfish"});
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
  static_cast<void>(ConnectorTo(server)->Connect());
  // Another connection of the same controller: its line died.
  const auto connector = ConnectorTo(server);
  static_cast<void>(connector->Connect());
  EXPECT_FALSE(connector->ConnectsWithoutQuestion());
  EXPECT_EQ(prompts_.Asked().size(), 1U);
  // Another controller knows nothing of it.
  secrets_ = std::make_shared<SecretMemory>();
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
  static_cast<void>(ConnectorTo(server)->Connect());
  EXPECT_EQ(prompts_.Asked().size(), 2U);
}

TEST_F(LogOnTest, WipesARefusedPasswordAndAsksAgain) {
  const SshTestServer server({.password = "swordfish"});
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("wrong"));
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"), true);
  static_cast<void>(ConnectorTo(server)->Connect());
  EXPECT_EQ(prompts_.Asked()[0].informativeText, QString());
  EXPECT_EQ(prompts_.Asked()[1].informativeText, QStringLiteral("The log-on was refused."));
  EXPECT_EQ(server.Passwords(), 2);
  ASSERT_EQ(store_.kept.size(), 1U);
  EXPECT_EQ(store_.kept.begin()->first, PasswordAccount(server));
  EXPECT_EQ(store_.kept.begin()->second, SecretOf("swordfish"));
}

TEST_F(LogOnTest, EndsAfterThreeRefusedPasswordsAndKeepsNone) {
  const SshTestServer server({.password = "swordfish"});
  for (const char16_t* password : {u"one", u"two", u"three"}) {
    prompts_.ExpectSecret(PasswordPrompt(server), QString::fromUtf16(password), true);
  }
  const RunTimeError failure = FailureOf(*ConnectorTo(server));
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("The log-on as joe has failed. Tried: a password. The server offers: password: ") +
                server.Machine());
  EXPECT_TRUE(store_.kept.empty());
  EXPECT_FALSE(secrets_->Find(PasswordAccount(server)).has_value());
}

TEST_F(LogOnTest, EndsWhereTheUserCancels) {
  const SshTestServer server({.password = "swordfish"});
  prompts_.ExpectCancelledSecret(PasswordPrompt(server));
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kCancelled);
  EXPECT_EQ(server.Passwords(), 0);
}

TEST_F(LogOnTest, UsesAKeptPasswordWithoutAQuestion) {
  const SshTestServer server({.password = "swordfish"});
  store_.kept.emplace(PasswordAccount(server), SecretOf("swordfish"));
  const auto connector = ConnectorTo(server);
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  EXPECT_TRUE(connector->ConnectsWithoutQuestion());
  EXPECT_TRUE(prompts_.Asked().empty());
}

TEST_F(LogOnTest, TriesAWrongKeptPasswordOnceAndForgetsIt) {
  const SshTestServer server({.password = "swordfish"});
  store_.kept.emplace(PasswordAccount(server), SecretOf("old"));
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
  const auto connector = ConnectorTo(server);
  static_cast<void>(connector->Connect());
  EXPECT_EQ(server.Passwords(), 2);
  EXPECT_TRUE(store_.kept.empty());
  EXPECT_FALSE(connector->ConnectsWithoutQuestion());
}

TEST_F(LogOnTest, OffersAKeptPasswordToNoOtherUserOrPort) {
  const SshTestServer server({.password = "swordfish"});
  const SshTestServer other({.password = "swordfish"});
  store_.kept.emplace(PasswordAccount(server), SecretOf("swordfish"));
  prompts_.ExpectCancelledSecret(PasswordPrompt(other));
  EXPECT_EQ(FailureOf(*ConnectorTo(other)).Number(), error::kCancelled);
  EXPECT_EQ(other.Passwords(), 0);
  prompts_.ExpectCancelledSecret(QStringLiteral("Password of jim on ") + server.Machine());
  EXPECT_EQ(FailureOf(*ConnectorOf(server.Machine(), PlaceOf(server), QStringLiteral("User=jim"))).Number(),
            error::kCancelled);
  EXPECT_EQ(server.Passwords(), 0);
}

TEST_F(LogOnTest, SaysWhyNothingCanBeRemembered) {
  const SshTestServer server({.password = "swordfish"});
  store_.whyNot = QStringLiteral("The password store is locked.");
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
  static_cast<void>(ConnectorTo(server)->Connect());
  EXPECT_EQ(prompts_.Asked().front().whyNotRemember, store_.whyNot);
}

TEST_F(LogOnTest, SaysThatThePasswordCouldNotBeKept) {
  const SshTestServer server({.password = "swordfish"});
  store_.keepFailure = QStringLiteral("The store is full");
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"), true);
  prompts_.ExpectBox(QStringLiteral("The secret could not be remembered."));
  EXPECT_EQ(Greet(*ConnectorTo(server)->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(prompts_.Asked().back().informativeText, store_.keepFailure);
}

TEST_F(LogOnTest, AnswersTheServersQuestionsAndARequestWithoutAny) {
  const SshTestServer server(
      {.questions = {{"Password: ", "swordfish"}}, .instruction = "Welcome to cell 4"});
  prompts_.ExpectSecret(QStringLiteral("joe on %1: Password:").arg(server.Machine()),
                        QStringLiteral("wrong"));
  prompts_.ExpectSecret(QStringLiteral("joe on %1: Password:").arg(server.Machine()),
                        QStringLiteral("swordfish"), true);
  EXPECT_EQ(Greet(*ConnectorTo(server)->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(prompts_.Asked()[0].informativeText, QStringLiteral("Welcome to cell 4"));
  EXPECT_EQ(prompts_.Asked()[1].informativeText,
            QStringLiteral("The log-on was refused.\nWelcome to cell 4"));
  EXPECT_EQ(server.Answers(), 2);
  EXPECT_EQ(store_.kept.count(PasswordAccount(server)), 1U);
}

using Wrong = SshTestServerOptions::Wrong;

TEST_F(LogOnTest, ForgetsAKeptPasswordWhereTheServerEndsTheSessionWithTheRefusal) {
  for (const Wrong wrong : {Wrong::IsRefusedAndEnds, Wrong::EndsWithWords}) {
    const SshTestServer server({.password = "swordfish", .wrong = wrong});
    store_.kept.emplace(PasswordAccount(server), SecretOf("old"));
    EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kLogonFailure);
    EXPECT_EQ(server.Passwords(), 1);
    EXPECT_TRUE(store_.kept.empty());
    prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
    EXPECT_EQ(Greet(*ConnectorTo(server)->Connect()).sliced(4, 5), kVersion3);
    EXPECT_EQ(server.Passwords(), 2);
  }
}

TEST_F(LogOnTest, ForgetsATypedPasswordWhereTheServerEndsTheSessionWithTheRefusal) {
  const SshTestServer server({.password = "swordfish", .wrong = Wrong::EndsWithWords});
  secrets_->Keep(PasswordAccount(server), SecretOf("old"));
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kLogonFailure);
  EXPECT_FALSE(secrets_->Find(PasswordAccount(server)).has_value());
}

TEST_F(LogOnTest, ForgetsAKeptPasswordAfterASecondSessionThatEndedWithoutAWord) {
  const SshTestServer server({.password = "swordfish", .wrong = Wrong::EndsSilently});
  store_.kept.emplace(PasswordAccount(server), SecretOf("old"));
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kLogonFailure);
  EXPECT_EQ(store_.kept.size(), 1U) << "the line alone may have died";
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kLogonFailure);
  EXPECT_TRUE(store_.kept.empty());
  prompts_.ExpectCancelledSecret(PasswordPrompt(server));
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kCancelled);
  EXPECT_EQ(server.Passwords(), 2);
}

TEST_F(LogOnTest, KeepsAPasswordThatWasTakenBetweenTwoLostLines) {
  const QString account = QStringLiteral("password for joe@cell4:22");
  EXPECT_FALSE(secrets_->NoteUnanswered(account));
  SecretDesk desk(QString(), secrets_, &store_, control_.get());
  desk.Accept(account);
  EXPECT_FALSE(secrets_->NoteUnanswered(account));
}

TEST_F(LogOnTest, ForgetsAKeptAnswerWhereTheServerEndsTheSessionWithoutRefusingIt) {
  const SshTestServer server({.questions = {{"Password: ", "swordfish"}}, .wrong = Wrong::EndsWithWords});
  store_.kept.emplace(PasswordAccount(server), SecretOf("old"));
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kLogonFailure);
  EXPECT_EQ(server.Answers(), 1);
  EXPECT_TRUE(store_.kept.empty());
}

TEST_F(LogOnTest, SendsAKeptPasswordOnceWhereTheServerRepeatsItsQuestion) {
  const SshTestServer server({.questions = {{"Password: ", "swordfish"}}, .mostRepeats = 100});
  store_.kept.emplace(PasswordAccount(server), SecretOf("old"));
  const QString prompt = QStringLiteral("joe on %1: Password:").arg(server.Machine());
  prompts_.ExpectSecret(prompt, QStringLiteral("wrong"), true);
  prompts_.ExpectSecret(prompt, QStringLiteral("swordfish"), true);
  EXPECT_EQ(Greet(*ConnectorTo(server)->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(server.Answers(), 3);
  ASSERT_EQ(store_.kept.size(), 1U);
  EXPECT_EQ(store_.kept.begin()->second, SecretOf("swordfish")) << "the first of those that were typed";
  EXPECT_EQ(secrets_->Find(PasswordAccount(server)), SecretOf("swordfish"));
}

TEST_F(LogOnTest, EndsAfterThreeTypedAnswersToAQuestionThatTheServerRepeats) {
  const SshTestServer server({.questions = {{"Password: ", "swordfish"}}, .mostRepeats = 100});
  store_.kept.emplace(PasswordAccount(server), SecretOf("old"));
  for (int i = 0; i < 3; ++i) {
    prompts_.ExpectSecret(QStringLiteral("joe on %1: Password:").arg(server.Machine()),
                          QStringLiteral("wrong"), true);
  }
  EXPECT_EQ(FailureOf(*ConnectorTo(server)).Number(), error::kLogonFailure);
  EXPECT_EQ(server.Answers(), 4);
  EXPECT_TRUE(store_.kept.empty());
  EXPECT_FALSE(secrets_->Find(PasswordAccount(server)).has_value());
}

TEST_F(LogOnTest, AsksForANewPasswordAndForgetsTheOldOne) {
  const SshTestServer server({.questions = {{"(joe@cell4) Password: ", "swordfish"}},
                              .laterQuestions = {{"New password: ", "marlin"}}});
  store_.kept.emplace(PasswordAccount(server), SecretOf("swordfish"));
  prompts_.ExpectSecret(QStringLiteral("joe on %1: New password:").arg(server.Machine()),
                        QStringLiteral("marlin"));
  EXPECT_EQ(Greet(*ConnectorTo(server)->Connect()).sliced(4, 5), kVersion3);
  EXPECT_FALSE(prompts_.Asked().front().offersRemember);
  EXPECT_EQ(server.Answers(), 2);
  EXPECT_TRUE(store_.kept.empty());
}

TEST_F(LogOnTest, LetsAPasswordAnswerNoOtherQuestionThanItsOwn) {
  // The second one, in words that this program does not know, is not kept either.
  const SshTestServer server({.questions = {{"Passwort der Zelle: ", "swordfish"}},
                              .laterQuestions = {{"Neues Passwort: ", "marlin"}}});
  store_.kept.emplace(PasswordAccount(server), SecretOf("other"));
  prompts_.ExpectSecret(QStringLiteral("joe on %1: Passwort der Zelle:").arg(server.Machine()),
                        QStringLiteral("swordfish"));
  for (int time = 0; time < 2; ++time) {
    prompts_.ExpectSecret(QStringLiteral("joe on %1: Neues Passwort:").arg(server.Machine()),
                          QStringLiteral("marlin"));
    EXPECT_EQ(Greet(*ConnectorTo(server)->Connect()).sliced(4, 5), kVersion3);
  }
  EXPECT_EQ(prompts_.Asked().size(), 3U);
  EXPECT_EQ(server.Answers(), 4);
  EXPECT_EQ(store_.kept.at(PasswordAccount(server)), SecretOf("other"));
}

TEST_F(LogOnTest, KeepsNoAnswerThatIsGoodForOnce) {
  const SshTestServer server({.questions = {{"Operator", "jim", true}, {"One-time password", "123456"}}});
  for (int time = 0; time < 2; ++time) {
    prompts_.ExpectSecret(QStringLiteral("joe on %1: Operator").arg(server.Machine()), QStringLiteral("jim"));
    prompts_.ExpectSecret(QStringLiteral("joe on %1: One-time password").arg(server.Machine()),
                          QStringLiteral("123456"));
    const auto connector = ConnectorTo(server);
    EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
    EXPECT_FALSE(connector->ConnectsWithoutQuestion());
  }
  EXPECT_FALSE(prompts_.Asked()[0].isHidden);
  EXPECT_TRUE(prompts_.Asked()[1].isHidden);
  EXPECT_FALSE(prompts_.Asked()[1].offersRemember);
}

TEST_F(LogOnTest, PrefersTheServersQuestionsToThePassword) {
  const SshTestServer server({.password = "swordfish", .questions = {{"Password: ", "swordfish"}}});
  prompts_.ExpectSecret(QStringLiteral("joe on %1: Password:").arg(server.Machine()),
                        QStringLiteral("swordfish"));
  static_cast<void>(ConnectorTo(server)->Connect());
  EXPECT_EQ(server.Passwords(), 0);
  EXPECT_EQ(server.Answers(), 1);
}

TEST_F(LogOnTest, AsksForThePassphraseOfAKeyThatTheServerAccepts) {
  const SshTestServer server(
      {.publicKey = MakeKey(QStringLiteral("ed25519"), QStringLiteral("open sesame"))});
  SshPlace place = PlaceOf(server);
  place.keyFiles = QStringList{KeyPath()};
  const QString prompt = QStringLiteral("Passphrase of the key ") + KeyPath();
  prompts_.ExpectSecret(prompt, QStringLiteral("wrong"));
  prompts_.ExpectSecret(prompt, QStringLiteral("open sesame"), true);
  const auto connector = ConnectorOf(server.Machine(), place);
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(prompts_.Asked()[1].informativeText, QStringLiteral("The passphrase is wrong."));
  EXPECT_FALSE(connector->ConnectsWithoutQuestion());
  EXPECT_EQ(store_.kept.count(QStringLiteral("passphrase of %1 for joe@%2").arg(KeyPath(), server.Machine())),
            1U);
  // From the store, where nothing was typed.
  secrets_ = std::make_shared<SecretMemory>();
  const auto next = ConnectorOf(server.Machine(), place);
  EXPECT_EQ(Greet(*next->Connect()).sliced(4, 5), kVersion3);
  EXPECT_TRUE(next->ConnectsWithoutQuestion());
}

TEST_F(LogOnTest, AsksForNoPassphraseOfAKeyThatTheServerRefuses) {
  Sshd::MakeKey(folder_.filePath(QStringLiteral("id_other")), QStringLiteral("ed25519"));
  const SshTestServer server({.publicKey = ContentOf(folder_.filePath(QStringLiteral("id_other.pub")))});
  MakeKey(QStringLiteral("ed25519"), QStringLiteral("open sesame"));
  SshPlace place = PlaceOf(server);
  place.keyFiles = QStringList{KeyPath(), folder_.filePath(QStringLiteral("missing"))};
  const RunTimeError failure = FailureOf(*ConnectorOf(server.Machine(), place));
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_EQ(
      failure.Description(),
      QStringLiteral("The log-on as joe has failed. Tried: the key %1. The server offers: publickey: %2")
          .arg(KeyPath(), server.Machine()));
  EXPECT_EQ(server.OfferedKeys(), 1);
  EXPECT_EQ(server.Signatures(), 0);
}

TEST_F(LogOnTest, GivesAPassphraseUpAfterThreeTries) {
  const SshTestServer server(
      {.publicKey = MakeKey(QStringLiteral("ed25519"), QStringLiteral("open sesame"))});
  SshPlace place = PlaceOf(server);
  place.keyFiles = QStringList{KeyPath()};
  for (int i = 0; i < 3; ++i) {
    prompts_.ExpectSecret(QStringLiteral("Passphrase of the key ") + KeyPath(), QStringLiteral("wrong"));
  }
  EXPECT_EQ(FailureOf(*ConnectorOf(server.Machine(), place)).Number(), error::kLogonFailure);
  EXPECT_EQ(server.Signatures(), 0);
}

TEST_F(LogOnTest, NamesAKeyFileThatCannotBeUsed) {
  const SshTestServer server({.password = "swordfish"});
  const QString path = folder_.filePath(QStringLiteral("none"));
  const SshTestServer withKeys({.password = "x", .publicKey = MakeKey(QStringLiteral("ed25519"))});
  const RunTimeError failure =
      FailureOf(*ConnectorOf(withKeys.Machine(), PlaceOf(withKeys), QStringLiteral("KeyFile=%1").arg(path)));
  EXPECT_EQ(failure.Number(), error::kInvalidParameter);
  EXPECT_EQ(
      failure.Description(),
      QStringLiteral("The key file %1 cannot be used: It is missing: %2").arg(path, withKeys.Machine()));
}

TEST_F(LogOnTest, ShowsTheServerAKeyAndAPasswordWhereItWantsBoth) {
  const SshTestServer server(
      {.password = "swordfish", .publicKey = MakeKey(QStringLiteral("ed25519")), .wantsBoth = true});
  prompts_.ExpectSecret(PasswordPrompt(server), QStringLiteral("swordfish"));
  const auto connector =
      ConnectorOf(server.Machine(), PlaceOf(server), QStringLiteral("KeyFile=") + KeyPath());
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(server.Signatures(), 1);
  EXPECT_FALSE(connector->ConnectsWithoutQuestion());
}

TEST_F(LogOnTest, UsesAKeyOfTheAgent) {
  const SshTestServer server(
      {.publicKey = MakeKey(QStringLiteral("ed25519"), QStringLiteral("open sesame"))});
  QProcess agent;
  const QString socket = folder_.filePath(QStringLiteral("agent"));
  agent.start(Sshd::Program(QStringLiteral("usr/bin/ssh-agent")),
              {QStringLiteral("-D"), QStringLiteral("-a"), socket});
  ASSERT_TRUE(agent.waitForReadyRead(20'000));
  // The key without its passphrase is in the agent alone.
  Sshd::Run(QStringLiteral("usr/bin/ssh-keygen"),
            {QStringLiteral("-q"), QStringLiteral("-p"), QStringLiteral("-P"), QStringLiteral("open sesame"),
             QStringLiteral("-N"), QString(), QStringLiteral("-f"), KeyPath()});
  QProcess add;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("SSH_AUTH_SOCK"), socket);
  add.setProcessEnvironment(environment);
  add.start(Sshd::Program(QStringLiteral("usr/bin/ssh-add")), {QStringLiteral("-q"), KeyPath()});
  ASSERT_TRUE(add.waitForFinished(20'000));
  ASSERT_EQ(add.exitCode(), 0) << add.readAllStandardError().toStdString();

  SshPlace place = PlaceOf(server);
  place.agent = socket;
  const auto connector = ConnectorOf(server.Machine(), place);
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  EXPECT_TRUE(connector->ConnectsWithoutQuestion());
  EXPECT_EQ(server.Signatures(), 1);
  agent.terminate();
  EXPECT_TRUE(agent.waitForFinished(20'000));
  // Without it nothing can be tried.
  EXPECT_EQ(FailureOf(*ConnectorOf(server.Machine(), place)).Number(), error::kLogonFailure);
}

TEST_F(LogOnTest, CancelEndsTheWaitForAnAgentThatHangs) {
  const SshTestServer server({.publicKey = MakeKey(QStringLiteral("ed25519"))});
  SshPlace place = PlaceOf(server);
  place.agent = folder_.filePath(QStringLiteral("agent"));
  const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const QByteArray path = QFile::encodeName(place.agent);
  ASSERT_LT(static_cast<size_t>(path.size()), sizeof address.sun_path);
  std::copy(path.begin(), path.end(), address.sun_path);
  ASSERT_EQ(::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listening, 1), 0);
  std::thread agent([this, listening] {
    const int line = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
    char byte = 0;
    // The question has come; nothing is answered.
    EXPECT_EQ(::recv(line, &byte, 1, 0), 1);
    control_->Cancel();
    while (::recv(line, &byte, 1, 0) > 0) {
    }
    ::close(line);
  });
  EXPECT_EQ(FailureOf(*ConnectorOf(server.Machine(), place)).Number(), error::kCancelled);
  agent.join();
  ::close(listening);
}

TEST_F(LogOnTest, NamesWhatIsOfferedWhereNothingCanBeTried) {
  const SshTestServer server({.publicKey = MakeKey(QStringLiteral("ed25519"))});
  const RunTimeError failure = FailureOf(*ConnectorTo(server));
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_EQ(
      failure.Description(),
      QStringLiteral("The log-on as joe has failed. Tried: nothing, since there was nothing to try. The "
                     "server offers: publickey: ") +
          server.Machine());
}

}  // namespace
}  // namespace trevane::test
