#pragma once

#include "engine/providers/curl/CurlFailures.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <QString>

#include <curl/curl.h>

namespace trevane {

class CertificateCheck;

namespace curl {

class ReplyReader;

/// How the library has ended a log-on or a transfer, and what is known beside its number.
struct LineEnd {
  CURLcode result = CURLE_OK;
  /// All that the server has said in it; outlives this.
  const ReplyReader& replies;
  /// Null without TLS.
  const CertificateCheck* certificates = nullptr;
  /// The library's own words, for people; may be empty.
  QString reason = {};
  bool isCancelled = false;
  bool isSilentTooLong = false;
  /// The system's number of why no connection could be opened; 0 for none.
  long systemNumber = 0;
};

/// Whether the library keeps the control connection after such an end.
[[nodiscard]] bool IsControlKept(CURLcode result) noexcept;

/// "10.0.0.1, port 21": the path in the text of a failure of the whole line.
[[nodiscard]] QString PlaceOf(const FtpSettings& settings);

/// Fails with kLineLost.
[[noreturn]] void FailLost(const FtpSettings& settings, const QString& sentence);
/// Fails with error::kTimeOut.
[[noreturn]] void FailSilent(const FtpSettings& settings);
/// Fails with kLineLost where one of the replies is the end of the connection.
void RequireNotEnded(const FtpSettings& settings, const ReplyReader& replies);

/// What the end of a log-on that has not succeeded means: CertificateRefused, kUnknownHost, kRefused and the
/// other numbers of the network, error::kTimeOut, error::kCancelled, error::kNotSupported, kServerBusy,
/// error::kLogonFailure, error::kAccessDenied, or kLineLost.
[[noreturn]] void FailLogOn(const FtpSettings& settings, const LineEnd& end);
/// What the end of a transfer or command without a refusal of the server means: error::kTimeOut,
/// error::kNotSupported or kLineLost.
[[noreturn]] void FailTransfer(const FtpSettings& settings, const LineEnd& end);

}  // namespace curl
}  // namespace trevane
