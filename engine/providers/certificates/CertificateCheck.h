#pragma once

#include "engine/providers/certificates/ShownCertificate.h"

#include <QByteArray>
#include <QString>

#include <memory>

#include <openssl/ssl.h>

namespace trevane {

/// Decides whether the certificates of a server are trusted: of its control connection, and of each data
/// connection, which must show the same one. One thread's alone.
class CertificateCheck final {
 public:
  /// `caFile` holds certificates to trust for this server; empty for those of the system alone. Fails with
  /// error::kInvalidParameter where it cannot be read.
  CertificateCheck(QString host, const QString& caFile, QByteArray trustedFingerprint);
  CertificateCheck(const CertificateCheck&) = delete;
  CertificateCheck& operator=(const CertificateCheck&) = delete;

  /// For each new connection, before it begins.
  void Install(SSL_CTX* context);

  /// That of the control connection.
  [[nodiscard]] const ShownCertificate& Shown() const noexcept { return shown_; }
  /// The text of a refusal; empty while none was refused.
  [[nodiscard]] const QString& Refusal() const noexcept { return refusal_; }
  /// Version and cipher of the control connection.
  [[nodiscard]] const QString& InUse() const noexcept { return inUse_; }

 private:
  struct StoreEnd {
    void operator()(X509_STORE* store) const noexcept { X509_STORE_free(store); }
  };

  static int Verify(X509_STORE_CTX* chain, void* self) noexcept;
  static void NoteState(const SSL* connection, int where, int value) noexcept;

  [[nodiscard]] bool IsTrusted(X509_STORE_CTX* chain);
  [[nodiscard]] QString ReasonAgainst(X509_STORE_CTX* chain, X509* certificate) const;
  void ReadCaFile(const QString& path);

  const QString host_;
  const QByteArray trusted_;
  const std::unique_ptr<X509_STORE, StoreEnd> store_;
  ShownCertificate shown_;
  QString refusal_;
  QString inUse_;
};

}  // namespace trevane
