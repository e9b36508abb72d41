#pragma once

#include "engine/providers/ssh/SshHandles.h"

#include <QString>

#include <memory>

namespace trevane {

class CallControl;
class KnownHosts;

/// Whether the host key of a server may be trusted; asks the user where it is not known.
class HostKeyCheck final {
 public:
  /// `host` is the name of the server for people. `control` may be null: nobody is asked then.
  HostKeyCheck(const KnownHosts& known, QString host, CallControl* control)
      : known_(known), host_(std::move(host)), control_(control) {}
  HostKeyCheck(const HostKeyCheck&) = delete;
  HostKeyCheck& operator=(const HostKeyCheck&) = delete;

  /// Returns when the key is trusted, with a sentence for people where it could not be stored. Fails for a
  /// key that has changed or was revoked, and with error::kCancelled where the user does not trust it.
  [[nodiscard]] QString Require(ssh_key key) const;

 private:
  [[nodiscard]] bool IsAccepted(ssh_key key) const;

  const KnownHosts& known_;
  const QString host_;
  CallControl* const control_;
};

}  // namespace trevane
