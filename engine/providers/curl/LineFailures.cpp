#include "engine/providers/curl/LineFailures.h"

#include "base/RunTimeError.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/certificates/CertificateCheck.h"
#include "engine/providers/curl/ReplyReader.h"
#include "engine/providers/curl/SocketCalls.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace trevane::curl {
namespace {

constexpr int kEnded = 221;
constexpr int kGone = 421;

qint32 NumberOfSystem(long number) {
  switch (CauseOf(number)) {
    case std::errc::connection_refused:
      return kRefused;
    case std::errc::network_unreachable:
      return error::kWin32Error + 1231;
    case std::errc::host_unreachable:
      return error::kWin32Error + 1232;
    default:
      return error::kTimeOut;
  }
}

QString ReasonOf(qint32 number) {
  switch (number) {
    case kRefused:
      return QStringLiteral("The connection was refused: nothing listens there, or a firewall forbids it");
    case error::kWin32Error + 1231:
      return QStringLiteral("The network cannot be reached");
    case error::kWin32Error + 1232:
      return QStringLiteral("The host cannot be reached");
    default:
      return QStringLiteral("The host has not answered in time");
  }
}

}  // namespace

bool IsControlKept(CURLcode result) noexcept {
  switch (result) {
    case CURLE_REMOTE_ACCESS_DENIED:
    case CURLE_FTP_WEIRD_PASV_REPLY:
    case CURLE_FTP_CANT_GET_HOST:
    case CURLE_FTP_COULDNT_SET_TYPE:
    case CURLE_PARTIAL_FILE:
    case CURLE_FTP_COULDNT_RETR_FILE:
    case CURLE_QUOTE_ERROR:
    case CURLE_UPLOAD_FAILED:
    case CURLE_FTP_PORT_FAILED:
    case CURLE_FTP_COULDNT_USE_REST:
    case CURLE_BAD_DOWNLOAD_RESUME:
    case CURLE_REMOTE_DISK_FULL:
    case CURLE_REMOTE_FILE_EXISTS:
    case CURLE_REMOTE_FILE_NOT_FOUND:
      return true;
    default:
      return false;
  }
}

QString PlaceOf(const FtpSettings& settings) {
  return QStringLiteral("%1, port %2").arg(settings.host).arg(settings.port);
}

void FailLost(const FtpSettings& settings, const QString& sentence) {
  Fail(kLineLost, sentence, PlaceOf(settings));
}

void FailSilent(const FtpSettings& settings) {
  Fail(error::kTimeOut, QStringLiteral("The controller has not answered for %1 s").arg(settings.timeout),
       PlaceOf(settings));
}

void RequireNotEnded(const FtpSettings& settings, const ReplyReader& replies) {
  for (const int code : {kGone, kEnded}) {
    if (const ftp::Reply* const reply = replies.Find(code)) {
      FailLost(settings, QStringLiteral("The server has ended the connection (%1)").arg(WordsOf(*reply)));
    }
  }
}

void FailLogOn(const FtpSettings& settings, const LineEnd& end) {
  const QString at = PlaceOf(settings);
  if (end.certificates != nullptr && !end.certificates->Refusal().isEmpty()) {
    throw CertificateRefused(end.certificates->Shown(),
                             QStringLiteral("%1: %2").arg(end.certificates->Refusal(), at));
  }
  constexpr int kNeedAccount = 332;
  constexpr int kNotLoggedOn = 530;
  constexpr int kWrongUser = 430;
  constexpr int kLaterOn = 120;
  constexpr int kWantsPassword = 331;
  const std::vector<ftp::Reply>& replies = end.replies.Replies();
  // The library says good-bye after a refusal, and the server answers that, too.
  const auto refused = std::find_if(replies.begin(), replies.end(), [](const ftp::Reply& reply) {
    return reply.code == kGone || reply.code == kEnded || reply.code == kNeedAccount ||
           reply.code == kLaterOn || reply.code == kNotLoggedOn || reply.code == kWrongUser;
  });
  const auto last = std::find_if(replies.rbegin(), replies.rend(),
                                 [](const ftp::Reply& reply) { return reply.code >= 400; });
  const ftp::Reply reply = refused != replies.end() ? *refused
                           : last != replies.rend() ? *last
                                                    : end.replies.Last();
  const QString words = WordsOf(reply);
  const bool tookPassword = std::any_of(replies.begin(), replies.end(),
                                        [](const ftp::Reply& each) { return each.code == kWantsPassword; });
  switch (end.result) {
    case CURLE_COULDNT_RESOLVE_HOST:
      Fail(kUnknownHost, QStringLiteral("The host is unknown"), settings.host);
    case CURLE_COULDNT_CONNECT: {
      const qint32 failure = NumberOfSystem(end.systemNumber);
      Fail(failure, ReasonOf(failure), at);
    }
    case CURLE_USE_SSL_FAILED:
      Fail(error::kNotSupported,
           QStringLiteral("The server has no encrypted connections by TLS (%1)").arg(words), at);
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CIPHER:
      Fail(error::kNotSupported,
           QStringLiteral("No encrypted connection could be agreed on with the server (%1)").arg(end.reason),
           at);
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_ABORTED_BY_CALLBACK:
      if (reply.code != kGone && !end.isCancelled) {
        FailSilent(settings);
      }
      break;
    default:
      break;
  }
  if (reply.code == 0 ||
      (reply.code < 400 && reply.code != kEnded && reply.code != kNeedAccount && reply.code != kLaterOn)) {
    if (end.isCancelled) {
      throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
    }
    Fail(kLineLost, QStringLiteral("The server has closed the connection without a word"), at);
  }
  if (reply.code == kEnded || reply.code == kLaterOn ||
      (reply.IsRefusedForNow() && reply.code != kWrongUser && !tookPassword) ||
      (reply.IsRefusedForNow() && SpeaksOfOtherClients(reply)) ||
      (reply.code == kNotLoggedOn && SpeaksOfOtherClients(reply))) {
    Fail(kServerBusy, QStringLiteral("The server takes no further client at present (%1)").arg(words), at);
  }
  if (reply.code == kNeedAccount) {
    Fail(error::kNotSupported,
         QStringLiteral("The server asks for an account beside user and password (%1)").arg(words), at);
  }
  if (reply.IsRefusedForNow() && reply.code != kWrongUser) {
    // Some refuse a wrong password like this, and lock the user out when it comes again and again.
    Fail(kLineLost, QStringLiteral("The server has ended the log-on (%1)").arg(words), at);
  }
  if (end.result == CURLE_LOGIN_DENIED) {
    Fail(error::kLogonFailure, QStringLiteral("The server refuses user or password (%1)").arg(words), at);
  }
  Fail(error::kAccessDenied, QStringLiteral("The server refuses the connection (%1)").arg(words), at);
}

void FailTransfer(const FtpSettings& settings, const LineEnd& end) {
  switch (end.result) {
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_FTP_ACCEPT_TIMEOUT:
      FailSilent(settings);
    case CURLE_ABORTED_BY_CALLBACK:
      if (end.isSilentTooLong) {
        FailSilent(settings);
      }
      break;
    case CURLE_COULDNT_CONNECT:
      FailLost(settings, QStringLiteral("No connection for the data could be opened"));
    case CURLE_FTP_COULDNT_RETR_FILE:
      if (end.replies.Last().IsDone() && !end.replies.TellsOfBegin()) {
        Fail(error::kNotSupported,
             QStringLiteral("The server sends data without announcing them, which cannot be read (%1)")
                 .arg(WordsOf(end.replies.Last())),
             PlaceOf(settings));
      }
      break;
    case CURLE_FTP_WEIRD_PASV_REPLY:
    case CURLE_FTP_WEIRD_227_FORMAT:
      FailLost(settings, QStringLiteral("The server tells no place for the data that can be read (%1)")
                             .arg(WordsOf(end.replies.Last())));
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
      if (end.certificates != nullptr && !end.certificates->Refusal().isEmpty()) {
        FailLost(settings, end.certificates->Refusal());
      }
      FailLost(
          settings,
          QStringLiteral("No encrypted connection for the data could be agreed on (%1)").arg(end.reason));
    default:
      break;
  }
  FailLost(settings, QStringLiteral("The connection was lost"));
}

}  // namespace trevane::curl
