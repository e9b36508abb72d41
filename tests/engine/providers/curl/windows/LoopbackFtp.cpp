#include "tests/engine/providers/curl/windows/LoopbackFtp.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

#include <windows.h>

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <winsock2.h>

namespace trevane::test {
namespace {

template <auto Free>
struct Freed {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};

/// A socket that listens on a free port of 127.0.0.1.
class Listener {
 public:
  Listener() : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(socket_, any, length), 0);
    EXPECT_EQ(listen(socket_, 1), 0);
    EXPECT_EQ(getsockname(socket_, any, &length), 0);
    port_ = ntohs(address.sin_port);
  }
  ~Listener() { closesocket(socket_); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  [[nodiscard]] int Port() const { return port_; }
  [[nodiscard]] SOCKET Accept() const { return accept(socket_, nullptr, nullptr); }

 private:
  SOCKET socket_;
  int port_ = 0;
};

}  // namespace

class LoopbackFtp::Server final {
 public:
  Server(Tls tls, QByteArray content) : tls_(tls), content_(std::move(content)) {
    if (tls_ == Tls::Implicit) {
      MakeCertificate();
      context_.reset(SSL_CTX_new(TLS_server_method()));
      EXPECT_EQ(SSL_CTX_use_certificate(context_.get(), certificate_.get()), 1);
      EXPECT_EQ(SSL_CTX_use_PrivateKey(context_.get(), key_.get()), 1);
    }
    thread_ = std::thread([this] { Serve(); });
  }
  ~Server() { thread_.join(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  [[nodiscard]] bool HasTls() const { return tls_ == Tls::Implicit; }
  [[nodiscard]] int Port() const { return control_.Port(); }

 private:
  void MakeCertificate();
  void Serve();
  void Talk();
  [[nodiscard]] bool Read(QByteArray& line);
  void Write(const QByteArray& line);
  void Send();

  Tls tls_;
  QByteArray content_;
  Listener control_;
  Listener data_;
  std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>> key_;
  std::unique_ptr<X509, Freed<X509_free>> certificate_;
  std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>> context_;
  SOCKET client_ = INVALID_SOCKET;
  std::unique_ptr<SSL, Freed<SSL_free>> line_;
  std::thread thread_;
};

void LoopbackFtp::Server::MakeCertificate() {
  key_.reset(EVP_EC_gen("P-256"));
  certificate_.reset(X509_new());
  X509* const made = certificate_.get();
  X509_set_version(made, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(made), 1);
  X509_gmtime_adj(X509_getm_notBefore(made), -60);
  X509_gmtime_adj(X509_getm_notAfter(made), 3600);
  X509_set_pubkey(made, key_.get());
  X509_NAME* const name = X509_get_subject_name(made);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("a controller"),
                             -1, -1, 0);
  X509_set_issuer_name(made, name);
  EXPECT_GT(X509_sign(made, key_.get(), EVP_sha256()), 0);
}

void LoopbackFtp::Server::Serve() {
  client_ = control_.Accept();
  if (HasTls()) {
    line_.reset(SSL_new(context_.get()));
    SSL_set_fd(line_.get(), static_cast<int>(client_));
  }
  if (!line_ || SSL_accept(line_.get()) == 1) {
    Talk();
  }
  closesocket(client_);
}

void LoopbackFtp::Server::Talk() {
  Write("220 ready");
  for (QByteArray command; Read(command);) {
    if (command.startsWith("USER")) {
      Write("331 the password");
    } else if (command.startsWith("PASS")) {
      Write("230 come in");
    } else if (command.startsWith("PWD")) {
      Write("257 \"/\"");
    } else if (command.startsWith("EPSV")) {
      Write("229 (|||" + QByteArray::number(data_.Port()) + "|)");
    } else if (command.startsWith("SIZE")) {
      Write("213 " + QByteArray::number(content_.size()));
    } else if (command.startsWith("RETR")) {
      Send();
    } else if (command.startsWith("QUIT")) {
      Write("221 bye");
      break;
    } else {
      Write("200 well");
    }
  }
}

void LoopbackFtp::Server::Send() {
  const SOCKET data = data_.Accept();
  Write("150 here it comes");
  EXPECT_EQ(send(data, content_.constData(), static_cast<int>(content_.size()), 0), content_.size());
  shutdown(data, SD_SEND);
  closesocket(data);
  Write("226 that was all");
}

bool LoopbackFtp::Server::Read(QByteArray& line) {
  line.clear();
  while (!line.endsWith('\n')) {
    char byte = 0;
    const int count = line_ ? SSL_read(line_.get(), &byte, 1) : recv(client_, &byte, 1, 0);
    if (count != 1) {
      return false;
    }
    line += byte;
  }
  return true;
}

void LoopbackFtp::Server::Write(const QByteArray& line) {
  const QByteArray bytes = line + "\r\n";
  const int length = static_cast<int>(bytes.size());
  const int written =
      line_ ? SSL_write(line_.get(), bytes.constData(), length) : send(client_, bytes.constData(), length, 0);
  EXPECT_EQ(written, length);
}

LoopbackFtp::LoopbackFtp(Tls tls, QByteArray content)
    : server_(std::make_unique<Server>(tls, std::move(content))) {}

LoopbackFtp::~LoopbackFtp() = default;

std::string LoopbackFtp::Url() const {
  const std::string scheme = server_->HasTls() ? "ftps" : "ftp";
  return scheme + "://127.0.0.1:" + std::to_string(server_->Port()) + "/program.mod";
}

}  // namespace trevane::test
