#include "tests/engine/providers/ssh/SshdWorld.h"
#include "tests/support/Listening.h"
#include "tests/support/SshTestServer.h"
#include "tests/support/TestFiles.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Listens on a free port of 127.0.0.1, sends some bytes to one client, and closes the line or says nothing
/// more.
class Stub final {
 public:
  enum class Then { Closes, IsSilent, NeverAccepts };

  Stub(const QByteArray& bytes, Then then) : listening_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(listening_, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(::listen(listening_, 1), 0);
    EXPECT_EQ(::getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size), 0);
    port_ = ntohs(address.sin_port);
    if (then == Then::NeverAccepts) {
      return;
    }
    thread_ = std::thread([this, bytes, then] {
      line_ = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
      if (line_ < 0) {
        return;
      }
      [[maybe_unused]] const ssize_t sent =
          ::send(line_, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
      if (then == Then::Closes) {
        // What the client sends is read first: else the line is reset and it may not see these bytes.
        char byte = 0;
        ::recv(line_, &byte, 1, 0);
        ::shutdown(line_, SHUT_WR);
      }
      while (true) {
        char byte = 0;
        if (::recv(line_, &byte, 1, 0) <= 0) {
          break;
        }
      }
    });
  }
  ~Stub() {
    ::shutdown(listening_, SHUT_RDWR);
    if (thread_.joinable()) {
      thread_.join();
    }
    ::close(listening_);
    if (line_ >= 0) {
      ::close(line_);
    }
  }
  Stub(const Stub&) = delete;
  Stub& operator=(const Stub&) = delete;

  [[nodiscard]] QString Machine() const { return QStringLiteral("127.0.0.1:%1").arg(port_); }

 private:
  int listening_;
  int line_ = -1;
  quint16 port_ = 0;
  std::thread thread_;
};

class FailuresTest : public SshdWorld {
 protected:
  [[nodiscard]] SshPlace Place() const {
    SshPlace place;
    place.knownHosts = folder_.filePath(QStringLiteral("known_hosts"));
    place.userName = QStringLiteral("joe");
    return place;
  }
  [[nodiscard]] SshPlace PlaceOf(const SshTestServer& server) const {
    WriteFile(Place().knownHosts, server.KnownHostsLine());
    return Place();
  }
  [[nodiscard]] RunTimeError Failure(const QString& machine, const QString& option = {}) {
    return FailureOf(*ConnectorOf(machine, Place(), option));
  }

  QTemporaryDir folder_;
};

TEST_F(FailuresTest, NothingListens) {
  const QString port = QString::number(FreePort());
  const RunTimeError failure = Failure(QStringLiteral("127.0.0.1:") + port);
  EXPECT_EQ(failure.Number(), error::kWin32Error + 1225);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("The connection was refused: nothing listens there, or a firewall forbids it: "
                           "127.0.0.1, port %1")
                .arg(port));
}

TEST_F(FailuresTest, TheHostIsUnknown) {
  const RunTimeError failure = Failure(QStringLiteral("no-such-host.invalid"));
  EXPECT_EQ(failure.Number(), error::kWin32Error + 11001);
  EXPECT_EQ(failure.Description(), QStringLiteral("The host is unknown: no-such-host.invalid"));
}

TEST_F(FailuresTest, TheServerIsSilent) {
  const Stub stub(QByteArray(), Stub::Then::IsSilent);
  QElapsedTimer clock;
  clock.start();
  const RunTimeError failure = Failure(stub.Machine(), QStringLiteral("Timeout=1"));
  EXPECT_EQ(failure.Number(), error::kTimeOut);
  EXPECT_TRUE(failure.Description().startsWith(QStringLiteral("The controller has not answered for 1 s: ")))
      << failure.Description().toStdString();
  EXPECT_GE(clock.elapsed(), 1000);
}

TEST_F(FailuresTest, TheServerIsSilentInTheMiddleOfItsGreeting) {
  const Stub stub("SSH-2.0-Slow", Stub::Then::IsSilent);
  EXPECT_EQ(Failure(stub.Machine(), QStringLiteral("Timeout=1")).Number(), error::kTimeOut);
}

TEST_F(FailuresTest, SomethingElseListens) {
  const Stub stub("HTTP/1.1 400 Bad Request\r\nServer: x\r\n\r\n", Stub::Then::Closes);
  const RunTimeError failure = Failure(stub.Machine());
  EXPECT_EQ(failure.Number(), error::kWin32Error + 1238);
  EXPECT_TRUE(failure.Description().startsWith(
      QStringLiteral("The connection was closed without a greeting: no SSH server listens there")))
      << failure.Description().toStdString();
}

TEST_F(FailuresTest, TheServerIsTooOld) {
  const Stub stub("SSH-1.5-Ancient\r\n", Stub::Then::Closes);
  const RunTimeError failure = Failure(stub.Machine());
  EXPECT_EQ(failure.Number(), error::kNotSupported) << failure.Description().toStdString();
}

TEST_F(FailuresTest, TheServerClosesWhileKeysAreExchanged) {
  const Stub stub("SSH-2.0-Full\r\n", Stub::Then::Closes);
  const RunTimeError failure = Failure(stub.Machine());
  EXPECT_EQ(failure.Number(), error::kWin32Error + 1238);
  EXPECT_TRUE(failure.Description().startsWith(
      QStringLiteral("The server has closed the connection while keys were exchanged")))
      << failure.Description().toStdString();
}

TEST_F(FailuresTest, TheServerSendsGarbage) {
  const Stub stub("SSH-2.0-Odd\r\n" + QByteArray(2000, '\xee'), Stub::Then::IsSilent);
  EXPECT_NE(Failure(stub.Machine(), QStringLiteral("Timeout=2")).Number(), 0);
}

TEST_F(FailuresTest, NoSessionIsLeft) {
  const SshTestServer server({.password = "x", .mostSessions = 1});
  control_ = std::make_shared<TestControl>(&prompts_);
  prompts_.ExpectSecret(QString(), QStringLiteral("x"));
  const std::unique_ptr<SftpChannel> first = ConnectorOf(server.Machine(), PlaceOf(server))->Connect();
  EXPECT_EQ(Greet(*first).sliced(4, 5), kVersion3);
  const RunTimeError failure = Failure(server.Machine());
  EXPECT_EQ(failure.Number(), error::kWin32Error + 1238);
  EXPECT_TRUE(failure.Description().contains(QStringLiteral("no session left")))
      << failure.Description().toStdString();
}

TEST_F(FailuresTest, NoSessionIsLeftAndTheServerSaysSo) {
  const SshTestServer server({.password = "x", .mostSessions = 0, .endsWithWords = true});
  const RunTimeError failure = FailureOf(*ConnectorOf(server.Machine(), PlaceOf(server)));
  EXPECT_EQ(failure.Number(), error::kWin32Error + 1238);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("The server has ended the connection before the log-on: \"Too many sessions\": ") +
                server.Machine());
}

TEST_F(FailuresTest, TheServerHasNoSftp) {
  const SshTestServer server({.password = "x", .subsystem = SshTestServer::Options::Subsystem::Refused});
  prompts_.ExpectSecret(QString(), QStringLiteral("x"));
  const RunTimeError failure = FailureOf(*ConnectorOf(server.Machine(), PlaceOf(server)));
  EXPECT_EQ(failure.Number(), error::kNotSupported);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("The server has SSH, but no SFTP: it refuses to start the subsystem \"sftp\": ") +
                server.Machine());
}

TEST_F(FailuresTest, TheSftpServerEndsAtOnce) {
  for (const QByteArray& text : {QByteArray(), QByteArray("sh: sftp-server: not found\n")}) {
    const SshTestServer server(
        {.password = "x", .subsystem = SshTestServer::Options::Subsystem::EndsAtOnce, .lastText = text});
    prompts_.ExpectSecret(QString(), QStringLiteral("x"));
    const std::unique_ptr<SftpChannel> channel = ConnectorOf(server.Machine(), PlaceOf(server))->Connect();
    try {
      Greet(*channel);
      ADD_FAILURE() << "it has answered";
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kWin32Error + 64);
      EXPECT_EQ(failure.Description(), (text.isEmpty() ? QStringLiteral("The server has ended SFTP: ")
                                                       : QStringLiteral("The server has ended SFTP: sh: "
                                                                        "sftp-server: not found: ")) +
                                           server.Machine());
    }
  }
}

TEST_F(FailuresTest, TheLineIsLost) {
  SshTestServer server({.password = "x"});
  prompts_.ExpectSecret(QString(), QStringLiteral("x"));
  const std::unique_ptr<SftpChannel> channel = ConnectorOf(server.Machine(), PlaceOf(server))->Connect();
  EXPECT_EQ(Greet(*channel).sliced(4, 5), kVersion3);
  server.DropAll();
  QByteArray nothing;
  try {
    static_cast<void>(channel->Exchange(nothing));
    FAIL() << "something has come";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kWin32Error + 64);
  }
}

TEST_F(FailuresTest, NothingIsHeardForTheTimeOfTheSettings) {
  const SshTestServer server({.password = "x"});
  prompts_.ExpectSecret(QString(), QStringLiteral("x"));
  const std::unique_ptr<SftpChannel> channel =
      ConnectorOf(server.Machine(), PlaceOf(server), QStringLiteral("Timeout=1"))->Connect();
  EXPECT_EQ(Greet(*channel).sliced(4, 5), kVersion3);
  QByteArray nothing;
  try {
    static_cast<void>(channel->Exchange(nothing));
    FAIL() << "something has come";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kTimeOut);
  }
  // It is still there.
  channel->KeepAlive();
  EXPECT_TRUE(channel->Poll(nothing).isEmpty());
}

/// Cancels as soon as something waits for it, and measures how long `connect` takes from there.
template <class Work>
qint64 TimeOfCancel(TestControl& control, const Work& work) {
  std::chrono::steady_clock::time_point cancelled;
  std::thread canceller([&control, &cancelled] {
    while (control.Registrations() == 0) {
      std::this_thread::yield();
    }
    // Well into the wait.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    cancelled = std::chrono::steady_clock::now();
    control.Cancel();
  });
  try {
    work();
    ADD_FAILURE() << "it was not cancelled";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kCancelled) << failure.Description().toStdString();
  }
  canceller.join();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - cancelled)
      .count();
}

TEST_F(FailuresTest, CancelEndsAnyWaitAtOnce) {
  const Stub silent(QByteArray(), Stub::Then::IsSilent);
  EXPECT_LT(
      TimeOfCancel(*control_, [&] { static_cast<void>(ConnectorOf(silent.Machine(), Place())->Connect()); }),
      1000);

  const SshTestServer server({.password = "x"});
  control_ = std::make_shared<TestControl>(&prompts_);
  prompts_.ExpectSecret(QString(), QStringLiteral("x"));
  const std::unique_ptr<SftpChannel> channel = ConnectorOf(server.Machine(), PlaceOf(server))->Connect();
  EXPECT_EQ(Greet(*channel).sliced(4, 5), kVersion3);
  EXPECT_LT(TimeOfCancel(*control_,
                         [&] {
                           QByteArray nothing;
                           static_cast<void>(channel->Exchange(nothing));
                         }),
            1000);
}

TEST_F(FailuresTest, CancelIsHeardWhileTheServerWritesErrorsWithoutEnd) {
  const SshTestServer server(
      {.password = "x", .subsystem = SshTestServer::Options::Subsystem::WritesErrorsWithoutEnd});
  prompts_.ExpectSecret(QString(), QStringLiteral("x"));
  const std::unique_ptr<SftpChannel> channel = ConnectorOf(server.Machine(), PlaceOf(server))->Connect();
  EXPECT_LT(TimeOfCancel(*control_,
                         [&] {
                           QByteArray nothing;
                           for (;;) {
                             static_cast<void>(channel->Poll(nothing));
                           }
                         }),
            5000);
}

TEST_F(FailuresTest, NoAlgorithmIsInCommon) {
  Sshd::Options options;
  options.hostKeys = QStringList{QStringLiteral("rsa")};
  options.configuration = QStringList{QStringLiteral("KexAlgorithms diffie-hellman-group14-sha1")};
  const Sshd sshd(options);
  const RunTimeError failure = FailureOf(*ConnectorOf(sshd));
  EXPECT_EQ(failure.Number(), error::kNotSupported);
  EXPECT_TRUE(failure.Description().startsWith(
      QStringLiteral("The controller and this program have no algorithm in common for the key exchange. The "
                     "controller offers: diffie-hellman-group14-sha1")))
      << failure.Description().toStdString();
  EXPECT_TRUE(failure.Description().contains(QStringLiteral("This program offers: curve25519-sha256, ")));
  EXPECT_TRUE(failure.Description().contains(QStringLiteral("The option OldAlgorithms=Yes allows older")));
}

TEST_F(FailuresTest, NoHostKeyAlgorithmIsInCommon) {
  Sshd::Options options;
  options.hostKeys = QStringList{QStringLiteral("rsa")};
  options.configuration = QStringList{QStringLiteral("HostKeyAlgorithms ssh-rsa")};
  const Sshd sshd(options);
  const RunTimeError failure = FailureOf(*ConnectorOf(sshd));
  EXPECT_EQ(failure.Number(), error::kNotSupported);
  EXPECT_TRUE(failure.Description().contains(
      QStringLiteral("in common for the host key. The controller offers: ssh-rsa. This program offers: ")))
      << failure.Description().toStdString();
}

TEST_F(FailuresTest, TheServerEndsTheLogOnWithItsWords) {
  Sshd::Options options;
  options.configuration = QStringList{QStringLiteral("MaxAuthTries 1")};
  const Sshd sshd(options);
  SshPlace place = sshd.Place();
  const QString other = sshd.At(QStringLiteral("other"));
  Sshd::MakeKey(other, QStringLiteral("ed25519"));
  place.keyFiles = QStringList{other};
  const RunTimeError failure = FailureOf(*ConnectorOf(sshd, place));
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_TRUE(
      failure.Description().contains(QStringLiteral("It has ended the connection: \"Too many authentication "
                                                    "failures\"")))
      << failure.Description().toStdString();
}

}  // namespace
}  // namespace trevane::test
