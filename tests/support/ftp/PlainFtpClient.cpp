#include "tests/support/ftp/PlainFtpClient.h"

#include <gtest/gtest.h>

#include <array>

#include <netinet/in.h>
#include <openssl/err.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Seconds; only a server that hangs needs them.
constexpr int kLongest = 60;

}  // namespace

int PlainFtpClient::ConnectTo(quint16 port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const timeval longest{kLongest, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &longest, sizeof longest);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

PlainFtpClient::PlainFtpClient(quint16 port) {
  control_.fd = ConnectTo(port);
  greeting_ = Reply();
}

PlainFtpClient::~PlainFtpClient() {
  Close(control_);
  SSL_CTX_free(context_);
}

void PlainFtpClient::Close(Line& line) {
  if (line.tls != nullptr) {
    SSL_shutdown(line.tls);
    SSL_free(line.tls);
    ERR_clear_error();
  }
  if (line.fd >= 0) {
    ::close(line.fd);
  }
  line = {};
}

int PlainFtpClient::ReadFrom(const Line& line, char* to, int most) {
  if (line.tls == nullptr) {
    return static_cast<int>(::recv(line.fd, to, static_cast<size_t>(most), 0));
  }
  const int got = SSL_read(line.tls, to, most);
  return got > 0 || SSL_get_error(line.tls, got) == SSL_ERROR_ZERO_RETURN ? got : -1;
}

void PlainFtpClient::Send(const QByteArray& line) {
  const QByteArray bytes = line + "\r\n";
  if (control_.tls != nullptr) {
    SSL_write(control_.tls, bytes.constData(), static_cast<int>(bytes.size()));
  } else {
    ::send(control_.fd, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
  }
}

QByteArray PlainFtpClient::ReadLine() {
  for (;;) {
    const qsizetype end = unread_.indexOf("\r\n");
    if (end >= 0) {
      const QByteArray line = unread_.first(end);
      unread_.remove(0, end + 2);
      return line;
    }
    std::array<char, 4096> bytes{};
    const int got = ReadFrom(control_, bytes.data(), static_cast<int>(bytes.size()));
    if (got <= 0) {
      return "<none>";
    }
    unread_.append(bytes.data(), got);
  }
}

QByteArray PlainFtpClient::Reply() {
  const QByteArray first = ReadLine();
  QByteArray all = first;
  if (first.size() > 3 && first[3] == '-') {
    const QByteArray last = first.first(3) + ' ';
    for (QByteArray line = ReadLine();; line = ReadLine()) {
      all += '\n' + line;
      if (line.startsWith(last) || line == "<none>") {
        break;
      }
    }
  }
  return all;
}

QByteArray PlainFtpClient::Ask(const QByteArray& line) {
  Send(line);
  return Reply();
}

void PlainFtpClient::LogOn() {
  EXPECT_EQ(Ask("USER joe").first(3), "331");
  EXPECT_EQ(Ask("PASS secret").first(3), "230");
  EXPECT_EQ(Ask("TYPE I").first(3), "200");
}

PlainFtpClient::Line PlainFtpClient::OpenData() {
  const QByteArray reply = Ask("EPSV");
  const QByteArrayList parts = reply.split('|');
  return {ConnectTo(static_cast<quint16>(parts.value(3).toInt())), nullptr};
}

bool PlainFtpClient::Protect(Line& line) {
  if (control_.tls == nullptr) {
    return true;
  }
  line.tls = SSL_new(context_);
  SSL_set_fd(line.tls, line.fd);
  if (resumes_) {
    SSL_set_session(line.tls, SSL_get0_session(control_.tls));
  }
  return SSL_connect(line.tls) == 1;
}

QByteArray PlainFtpClient::Fetch(const QByteArray& command, QByteArray* end) {
  Line data = OpenData();
  const QByteArray start = Ask(command);
  QByteArray bytes;
  if (!start.startsWith('1')) {
    Close(data);
    return start;
  }
  if (Protect(data)) {
    std::array<char, 16384> piece{};
    int got = ReadFrom(data, piece.data(), static_cast<int>(piece.size()));
    for (; got > 0; got = ReadFrom(data, piece.data(), static_cast<int>(piece.size()))) {
      bytes.append(piece.data(), got);
    }
    if (got < 0) {
      bytes += "<broken>";
    }
  }
  Close(data);
  const QByteArray last = Reply();
  if (end != nullptr) {
    *end = last;
  }
  return bytes;
}

QByteArray PlainFtpClient::Store(const QByteArray& path, const QByteArray& content) {
  Line data = OpenData();
  const QByteArray start = Ask("STOR " + path);
  if (start.startsWith('1')) {
    if (Protect(data)) {
      if (data.tls != nullptr) {
        SSL_write(data.tls, content.constData(), static_cast<int>(content.size()));
      } else {
        ::send(data.fd, content.constData(), static_cast<size_t>(content.size()), MSG_NOSIGNAL);
      }
    }
    Close(data);
    return Reply();
  }
  Close(data);
  return start;
}

bool PlainFtpClient::StartTls(int mostVersion) {
  if (!Ask("AUTH TLS").startsWith("234")) {
    return false;
  }
  context_ = SSL_CTX_new(TLS_client_method());
  SSL_CTX_set_max_proto_version(context_, mostVersion);
  control_.tls = SSL_new(context_);
  SSL_set_fd(control_.tls, control_.fd);
  return SSL_connect(control_.tls) == 1 && Ask("PBSZ 0").startsWith("200") && Ask("PROT P").startsWith("200");
}

QByteArray PlainFtpClient::Fingerprint() const {
  X509* const certificate = SSL_get1_peer_certificate(control_.tls);
  QByteArray bytes(EVP_MAX_MD_SIZE, '\0');
  unsigned int size = 0;
  X509_digest(certificate, EVP_sha256(), reinterpret_cast<unsigned char*>(bytes.data()), &size);
  X509_free(certificate);
  return bytes.first(size);
}

QByteArray PlainFtpClient::TlsVersion() const {
  return SSL_get_version(control_.tls);
}

}  // namespace trevane::test
