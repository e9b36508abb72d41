#include "engine/providers/curl/FtpOptions.h"

#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlHandles.h"
#include "engine/providers/curl/OneLine.h"

#include <QString>
#include <QUrl>

#include <chrono>

namespace trevane::curl {
namespace {

constexpr long kBufferBytes = 512L * 1024;
constexpr long kForEver = 1000000;

void SetTlsOptions(CURL* easy, const FtpSettings& settings) {
  SetOption(easy, CURLOPT_USE_SSL, long(CURLUSESSL_ALL));
  SetOption(easy, CURLOPT_FTPSSLAUTH, long(CURLFTPAUTH_TLS));
  SetOption(easy, CURLOPT_SSLVERSION,
            long(CURL_SSLVERSION_DEFAULT) |
                long(settings.tlsMost == FtpSettings::TlsMost::Tls12 ? CURL_SSLVERSION_MAX_TLSv1_2
                                                                     : CURL_SSLVERSION_MAX_TLSv1_3));
  // CertificateCheck looks at both.
  SetOption(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  SetOption(easy, CURLOPT_SSL_VERIFYHOST, 0L);
  SetOption(easy, CURLOPT_CAINFO, static_cast<const char*>(nullptr));
  SetOption(easy, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  SetOption(easy, CURLOPT_SSL_SESSIONID_CACHE, 1L);
}

}  // namespace

QByteArray UrlOf(const FtpSettings& settings) {
  QByteArray host = QUrl::toAce(settings.host);
  if (settings.host.contains(QLatin1Char(':'))) {
    host = '[' + settings.host.toLatin1().replace("%", "%25") + ']';
  } else if (host.isEmpty()) {
    host = settings.host.toUtf8();
  }
  return (settings.tls == FtpSettings::Tls::Implicit ? QByteArrayLiteral("ftps://")
                                                     : QByteArrayLiteral("ftp://")) +
         host + ':' + QByteArray::number(settings.port) + '/';
}

void SetFtpOptions(CURL* easy, const FtpSettings& settings, const FtpLogOn& logOn) {
  const QByteArray user = logOn.user.toUtf8();
  if (HoldsLineBreak(user) || HoldsLineBreak(logOn.password.Bytes())) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("User and password cannot hold a line break"));
  }
  const auto longest = std::chrono::milliseconds(std::chrono::seconds(settings.timeout));
  SetOption(easy, CURLOPT_NOSIGNAL, 1L);
  // A host that is looked for is not waited for at the end.
  SetOption(easy, CURLOPT_QUICK_EXIT, 1L);
  SetOption(easy, CURLOPT_PROTOCOLS_STR, "ftp,ftps");
  SetOption(easy, CURLOPT_PROXY, "");
  SetOption(easy, CURLOPT_NOPROXY, "*");
  SetOption(easy, CURLOPT_PATH_AS_IS, 1L);
  SetOption(easy, CURLOPT_USERNAME, user.constData());
  const bool isNameless = user == "anonymous" && logOn.password.Bytes().isEmpty();
  SetOption(easy, CURLOPT_PASSWORD, isNameless ? "anonymous@" : logOn.password.CString());
  SetOption(easy, CURLOPT_FTP_FILEMETHOD, long(CURLFTPMETHOD_NOCWD));
  SetOption(easy, CURLOPT_FTP_USE_EPSV, 1L);
  SetOption(easy, CURLOPT_FTP_SKIP_PASV_IP, 1L);
  if (settings.active) {
    SetOption(easy, CURLOPT_FTPPORT, "-");
  }
  SetOption(easy, CURLOPT_TRANSFERTEXT, 0L);
  // Saves a round trip: SIZE before each download.
  SetOption(easy, CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
  SetOption(easy, CURLOPT_BUFFERSIZE, kBufferBytes);
  SetOption(easy, CURLOPT_UPLOAD_BUFFERSIZE, kBufferBytes);
  SetOption(easy, CURLOPT_TCP_NODELAY, 1L);
  SetOption(easy, CURLOPT_TCP_KEEPALIVE, 1L);
  SetOption(easy, CURLOPT_MAXAGE_CONN, kForEver);
  SetOption(easy, CURLOPT_CONNECTTIMEOUT_MS, long(longest.count()));
  SetOption(easy, CURLOPT_ACCEPTTIMEOUT_MS, long(longest.count()));
  // LineWatch counts silence, over everything that comes and goes; the library's own count must not end
  // first.
  SetOption(easy, CURLOPT_SERVER_RESPONSE_TIMEOUT, long(settings.timeout) + 600);
  if (settings.tls != FtpSettings::Tls::Off) {
    SetTlsOptions(easy, settings);
  }
}

}  // namespace trevane::curl
