#pragma once

#include "engine/providers/certificates/ShownCertificate.h"
#include "engine/providers/ftp/FtpDialogue.h"
#include "engine/providers/ftp/FtpSettings.h"
#include "platform/Secret.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace trevane {

class CallControl;

namespace curl {
class CurlLine;
}

/// How to open a dialogue, beside the settings.
struct FtpLogOn {
  /// "anonymous" for an anonymous log-on.
  QString user;
  Secret password = {};
  /// The fingerprint of the one certificate that is trusted for this host alone; empty for none.
  QByteArray trustedFingerprint = {};
};

/// A dialogue over libcurl. All its waits end at once when the running call is cancelled; it is never blocked
/// for long by a host that is looked for.
class CurlDialogue final : public FtpDialogue {
 public:
  /// Connects and logs on. Fails with the reason and the server's own words: CertificateRefused;
  /// error::kLogonFailure where the server refuses user or password; kWin32Error + 1238 where it takes no
  /// further client at present (a greeting of 221 or 421, or 530 that speaks of it), which may be tried
  /// again; the numbers of the network; error::kTimeOut; error::kCancelled; error::kNotSupported where it has
  /// no TLS but TLS is demanded. `control` may be null.
  CurlDialogue(const FtpSettings& settings, const FtpLogOn& logOn, std::shared_ptr<CallControl> control);
  ~CurlDialogue() override;
  CurlDialogue(const CurlDialogue&) = delete;
  CurlDialogue& operator=(const CurlDialogue&) = delete;

  [[nodiscard]] ftp::Reply Command(const QByteArray& command) override;
  [[nodiscard]] std::vector<ftp::Reply> Commands(const QByteArrayList& commands) override;
  /// Never over TLS: the library alone can speak there.
  [[nodiscard]] bool TakesTogether() override;
  [[nodiscard]] std::vector<ftp::Reply> Together(const QByteArrayList& commands) override;
  [[nodiscard]] Text ReadText(const QByteArray& command, qint64 most) override;
  [[nodiscard]] std::unique_ptr<FtpDownload> Retrieve(const QByteArray& path, qint64 offset,
                                                      ftp::Reply& refusal) override;
  [[nodiscard]] std::unique_ptr<FtpUpload> Store(const QByteArray& path) override;
  [[nodiscard]] const QByteArrayList& Features() const override;
  [[nodiscard]] const QByteArray& Start() const override;
  [[nodiscard]] bool IsBroken() const noexcept override;
  void BeginPutBack() noexcept override;
  void EndPutBack() noexcept override;

  /// The words with which the server has greeted.
  [[nodiscard]] const QByteArray& Greeting() const;
  /// Version and cipher of TLS ("TLSv1.2, ECDHE-RSA-AES256-GCM-SHA384"); empty without TLS.
  [[nodiscard]] QString TlsInUse() const;
  /// The certificate of the control connection; its fingerprint is empty without TLS.
  [[nodiscard]] const ShownCertificate& Certificate() const;
  /// The address that has answered.
  [[nodiscard]] QString Address() const;

 private:
  std::shared_ptr<curl::CurlLine> line_;
};

}  // namespace trevane
