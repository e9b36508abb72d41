#pragma once

#include <QByteArray>

#include <memory>

#include <openssl/ssl.h>

namespace trevane::test {

/// A key and a certificate of "localhost" and 127.0.0.1 that is signed by itself, made anew for each object.
class FtpTestKeys final {
 public:
  FtpTestKeys();
  ~FtpTestKeys();
  FtpTestKeys(const FtpTestKeys&) = delete;
  FtpTestKeys& operator=(const FtpTestKeys&) = delete;

  struct FreeContext {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  };
  using Context = std::unique_ptr<SSL_CTX, FreeContext>;

  /// For the sockets of a server that share their sessions. Without sessions none is ever resumed.
  [[nodiscard]] Context MakeContext(bool upToTls12, bool hasSessions) const;
  /// SHA-256 of the whole certificate.
  [[nodiscard]] QByteArray Fingerprint() const;
  [[nodiscard]] QByteArray CertificatePem() const;
  [[nodiscard]] QByteArray KeyPem() const;

 private:
  EVP_PKEY* key_ = nullptr;
  X509* certificate_ = nullptr;
};

}  // namespace trevane::test
