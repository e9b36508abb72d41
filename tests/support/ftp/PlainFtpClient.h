#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <openssl/ssl.h>

namespace trevane::test {

/// A client that sends what it is told and knows nothing of the protocol but replies and EPSV. A server that
/// does not answer in time ends it.
class PlainFtpClient final {
 public:
  /// Connects to 127.0.0.1 and reads the greeting.
  explicit PlainFtpClient(quint16 port);
  ~PlainFtpClient();
  PlainFtpClient(const PlainFtpClient&) = delete;
  PlainFtpClient& operator=(const PlainFtpClient&) = delete;

  [[nodiscard]] const QByteArray& Greeting() const { return greeting_; }
  void Send(const QByteArray& line);
  /// All lines of the next reply with their codes, ends of lines as "\n", without the last; "<none>" when the
  /// line has ended.
  [[nodiscard]] QByteArray Reply();
  QByteArray Ask(const QByteArray& line);
  /// As joe.
  void LogOn();
  /// A command whose answer comes over a data connection: its bytes, or the refusal. `end` is the last reply.
  QByteArray Fetch(const QByteArray& line, QByteArray* end = nullptr);
  /// The last reply to STOR.
  QByteArray Store(const QByteArray& path, const QByteArray& content);

  /// AUTH TLS, and protected data. The certificate is not judged. False where it fails.
  [[nodiscard]] bool StartTls(int mostVersion = TLS1_2_VERSION);
  /// Data connections resume the session of the control connection.
  void SetResumes(bool resumes) { resumes_ = resumes; }
  [[nodiscard]] QByteArray Fingerprint() const;
  [[nodiscard]] QByteArray TlsVersion() const;

 private:
  struct Line {
    int fd = -1;
    SSL* tls = nullptr;
  };

  [[nodiscard]] static int ConnectTo(quint16 port);
  /// Below 0 where the line ended without a sign of TLS that it ends.
  [[nodiscard]] static int ReadFrom(const Line& line, char* to, int most);
  static void Close(Line& line);
  [[nodiscard]] QByteArray ReadLine();
  [[nodiscard]] Line OpenData();
  [[nodiscard]] bool Protect(Line& line);

  Line control_;
  SSL_CTX* context_ = nullptr;
  bool resumes_ = true;
  QByteArray unread_;
  QByteArray greeting_;
};

}  // namespace trevane::test
