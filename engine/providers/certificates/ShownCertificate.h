#pragma once

#include "base/RunTimeError.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <utility>

namespace trevane {

/// The certificate that a server has shown, for people.
struct ShownCertificate {
  /// SHA-256 of the whole certificate, 32 bytes.
  QByteArray fingerprint;
  QString subject = {};
  QString issuer = {};
  QDateTime validFrom = {};
  QDateTime validUntil = {};
  /// Why it is not trusted by itself, a clause without a full stop ("it is signed by itself"); empty where
  /// the certificates of the system or of CaFile vouch for it and it names the host.
  QString reason = {};
};

/// The server's certificate is not trusted; nothing but the greeting of TLS was sent to it.
class CertificateRefused final : public RunTimeError {
 public:
  CertificateRefused(ShownCertificate shown, const QString& text)
      : RunTimeError(error::kWin32Error + 1397, text), shown_(std::move(shown)) {}
  [[nodiscard]] const ShownCertificate& Shown() const noexcept { return shown_; }

 private:
  ShownCertificate shown_;
};

}  // namespace trevane
