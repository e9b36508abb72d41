#pragma once

#include "engine/providers/certificates/ShownCertificate.h"
#include "engine/providers/certificates/TrustedCertificates.h"

#include <QString>

#include <utility>

namespace trevane {

class CallControl;

/// Whether a certificate for which nobody vouches may be trusted; asks the user where it is not known.
class TrustCheck final {
 public:
  /// `host` is the name of the server for people. `control` may be null: nobody is asked then.
  TrustCheck(TrustedCertificates& trusted, QString host, CallControl* control)
      : trusted_(trusted), host_(std::move(host)), control_(control) {}
  TrustCheck(const TrustCheck&) = delete;
  TrustCheck& operator=(const TrustCheck&) = delete;

  /// Returns when it is trusted, with a sentence for people where that could not be stored; the user has seen
  /// it. Fails for a certificate that has changed, and with error::kCancelled where the user does not trust
  /// it.
  [[nodiscard]] QString Require(const ShownCertificate& shown);

 private:
  void RequireUnchanged(const ShownCertificate& shown) const;
  [[nodiscard]] bool IsAccepted(const ShownCertificate& shown) const;

  TrustedCertificates& trusted_;
  const QString host_;
  CallControl* const control_;
};

}  // namespace trevane
