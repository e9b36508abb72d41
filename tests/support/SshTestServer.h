#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace trevane::test {

struct SshTestServerOptions {
  struct Question {
    QByteArray prompt;
    QByteArray answer;
    bool isShown = false;
  };

  QByteArray user = "joe";
  /// Empty: the method is not offered.
  QByteArray password = {};
  /// Asked all at once, and followed by a request without any; none: the method is not offered.
  std::vector<Question> questions = {};
  QByteArray instruction = {};
  /// So often wrong answers are followed by the same questions in place of a refusal.
  int mostRepeats = 0;
  /// Asked all at once after right answers to the others.
  std::vector<Question> laterQuestions = {};
  /// How a wrong password or answer ends: refused, or the session with it.
  enum class Wrong { IsRefused, IsRefusedAndEnds, EndsWithWords, EndsSilently };
  Wrong wrong = Wrong::IsRefused;
  /// "ssh-ed25519 AAAA..."; empty: the method is not offered.
  QByteArray publicKey = {};
  /// The key alone is not enough.
  bool wantsBoth = false;
  /// Shown before the log-on.
  QByteArray banner = {};
  /// More connections than these are ended: with words after the keys were exchanged, or without any before.
  int mostSessions = 1000;
  bool endsWithWords = false;
  enum class Subsystem { Sftp, Refused, EndsAtOnce, WritesErrorsWithoutEnd };
  Subsystem subsystem = Subsystem::Sftp;
  /// What one that ends writes for people before.
  QByteArray lastText = {};
};

/// A server of our own on a free port of 127.0.0.1, for what others do not let a test ask for. Its files are
/// those of this computer, by the unpacked sftp-server. Runs in threads of its own until it is destroyed.
class SshTestServer final {
 public:
  using Options = SshTestServerOptions;

  explicit SshTestServer(Options options);
  /// Ends all connections.
  ~SshTestServer();
  SshTestServer(const SshTestServer&) = delete;
  SshTestServer& operator=(const SshTestServer&) = delete;

  [[nodiscard]] quint16 Port() const noexcept { return port_; }
  [[nodiscard]] QString Machine() const { return QStringLiteral("127.0.0.1:%1").arg(port_); }
  /// As it stands in a file of known hosts, with the server's name.
  [[nodiscard]] QByteArray KnownHostsLine() const { return hostLine_; }

  /// How often something was tried: passwords, answers, offered keys and signatures.
  [[nodiscard]] int Passwords() const noexcept { return passwords_; }
  [[nodiscard]] int Answers() const noexcept { return answers_; }
  [[nodiscard]] int OfferedKeys() const noexcept { return offeredKeys_; }
  [[nodiscard]] int Signatures() const noexcept { return signatures_; }
  [[nodiscard]] int Sessions() const noexcept { return sessions_; }
  /// Ends the lines of all clients without a word.
  void DropAll();

 private:
  class Client;
  struct Keys;

  void Accept();

  const Options options_;
  const std::unique_ptr<Keys> keys_;
  QByteArray hostLine_;
  int listening_ = -1;
  quint16 port_ = 0;
  std::atomic<bool> isEnding_ = false;
  std::atomic<int> passwords_ = 0;
  std::atomic<int> answers_ = 0;
  std::atomic<int> offeredKeys_ = 0;
  std::atomic<int> signatures_ = 0;
  std::atomic<int> sessions_ = 0;
  std::atomic<int> open_ = 0;
  std::mutex mutex_;
  std::vector<int> lines_;
  std::vector<std::thread> threads_;
  std::thread accepting_;
};

}  // namespace trevane::test
