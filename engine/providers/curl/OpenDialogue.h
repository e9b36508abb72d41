#pragma once

#include "engine/providers/curl/CurlDialogue.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

namespace trevane {

class CallControl;

/// A dialogue that is logged on, and what is known of its connection.
struct OpenDialogue {
  std::unique_ptr<FtpDialogue> dialogue;
  QByteArray greeting = {};
  /// As CurlDialogue::TlsInUse.
  QString tls = {};
  ShownCertificate certificate = {};
  QString address = {};
};

/// Connects and logs on once. Fails as CurlDialogue does.
using DialogueOpener =
    std::function<OpenDialogue(const FtpSettings&, const FtpLogOn&, const std::shared_ptr<CallControl>&)>;

/// The opener of the network.
[[nodiscard]] OpenDialogue OpenCurlDialogue(const FtpSettings& settings, const FtpLogOn& logOn,
                                            const std::shared_ptr<CallControl>& control);

}  // namespace trevane
