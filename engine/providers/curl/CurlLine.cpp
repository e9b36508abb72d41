#include "engine/providers/curl/CurlLine.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/curl/CurlFailures.h"
#include "engine/providers/curl/IsAnswerTo.h"
#include "engine/providers/curl/PeekTlsWords.h"
#include "engine/remote/CallControl.h"

#include <QUrl>

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace trevane::curl {
namespace {

using namespace std::chrono_literals;

/// The longest wait without looking at the clock: as long as a limit of its own runs, a silence is none for
/// the window.
constexpr std::chrono::milliseconds kBeat = 1000ms;
/// The library may miss that a data connection is ready.
constexpr std::chrono::milliseconds kBeatWhileOpening = 5ms;
constexpr std::chrono::milliseconds kBeatAtEnd = 70ms;
/// A server that takes several commands at once answers the second one right behind the first.
constexpr std::chrono::milliseconds kNextAnswer = 1000ms;
constexpr long kBufferBytes = 512L * 1024;
constexpr long kForEver = 1000000;

bool HoldsLineBreak(QByteArrayView bytes) {
  return std::any_of(bytes.begin(), bytes.end(),
                     [](char each) { return each == '\r' || each == '\n' || each == '\0'; });
}

/// What the library refuses in an address.
void RequireAddressable(const QByteArray& path) {
  CurlLine::RequireOneLine(path);
  constexpr unsigned char kFirstPrintable = 0x20;
  const bool isPlain = std::none_of(
      path.begin(), path.end(), [](char each) { return static_cast<unsigned char>(each) < kFirstPrintable; });
  if (!isPlain || path.endsWith('/')) {
    throw RunTimeError(error::kInvalidName,
                       QStringLiteral("A name with control characters cannot be transferred over FTP"));
  }
}

bool IsControlKept(CURLcode result) {
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

/// The end of a transfer, in place of an answer to a command that has none.
bool IsOfTransfer(const ftp::Reply& reply) {
  constexpr int kCompleted = 226;
  constexpr int kAborted = 426;
  return reply.code == kCompleted || reply.code == kAborted;
}

constexpr int kPathTold = 257;

/// To a command without effect, which a server may not know.
bool IsOfNothing(const ftp::Reply& reply) {
  return (reply.code >= 200 && reply.code <= 202) || reply.code == 250 || reply.IsUnknownCommand();
}

/// To the question for the system.
bool IsOfSystem(const ftp::Reply& reply) {
  constexpr int kSystemTold = 215;
  return reply.code == kSystemTold || reply.IsUnknownCommand();
}

/// Whether records of TLS tell that it ends. What else they hold cannot be seen.
bool HoldsAlert(QByteArrayView records) {
  constexpr char kAlert = 0x15;
  constexpr qsizetype kHead = 5;
  while (records.size() >= kHead) {
    if (records[0] == kAlert) {
      return true;
    }
    const qsizetype length = static_cast<uchar>(records[3]) * 256 + static_cast<uchar>(records[4]);
    records = records.sliced(std::min(records.size(), kHead + length));
  }
  return false;
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

template <typename Value>
void CurlLine::Set(CURLoption option, Value value) {
  const CURLcode result = curl_easy_setopt(easy_.get(), option, value);
  if (result == CURLE_OUT_OF_MEMORY) {
    throw std::bad_alloc();
  }
  if (result != CURLE_OK) {
    throw RunTimeError(
        error::kNotSupported,
        QStringLiteral("The library for FTP lacks what is needed: option %1").arg(int(option)));
  }
}

CurlLine::CurlLine(const FtpSettings& settings, const FtpLogOn& logOn, std::shared_ptr<CallControl> control)
    : settings_(settings), control_(std::move(control)), longest_(std::chrono::seconds(settings.timeout)) {
  StartLibrary();
  RequireNotCancelled();
  multi_.reset(curl_multi_init());
  easy_.reset(curl_easy_init());
  if (!multi_ || !easy_) {
    throw std::bad_alloc();
  }
  try {
    SetUp(logOn);
    LogOn();
  } catch (...) {
    Abort();
    throw;
  }
}

CurlLine::~CurlLine() {
  if (!isBroken_ && !isUnderWay_ && !IsCancelled()) {
    // A server that is not told holds the place of this client for a while.
    try {
      Begin({}, {QByteArrayLiteral("*QUIT")}, nullptr);
      Perform();
      DriveBriefly();
    } catch (const std::exception&) {
      // It is closed all the same.
    }
  }
  Abort();
  easy_.reset();
  multi_.reset();
}

void CurlLine::SetUp(const FtpLogOn& logOn) {
  const QByteArray user = logOn.user.toUtf8();
  if (HoldsLineBreak(user) || HoldsLineBreak(logOn.password.Bytes())) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("User and password cannot hold a line break"));
  }
  QByteArray host = QUrl::toAce(settings_.host);
  if (settings_.host.contains(QLatin1Char(':'))) {
    host = '[' + settings_.host.toLatin1().replace("%", "%25") + ']';
  } else if (host.isEmpty()) {
    host = settings_.host.toUtf8();
  }
  url_ = (settings_.tls == FtpSettings::Tls::Implicit ? QByteArrayLiteral("ftps://")
                                                      : QByteArrayLiteral("ftp://")) +
         host + ':' + QByteArray::number(settings_.port) + '/';

  Set(CURLOPT_ERRORBUFFER, reason_.data());
  Set(CURLOPT_NOSIGNAL, 1L);
  // A host that is looked for is not waited for at the end.
  Set(CURLOPT_QUICK_EXIT, 1L);
  Set(CURLOPT_PROTOCOLS_STR, "ftp,ftps");
  Set(CURLOPT_PROXY, "");
  Set(CURLOPT_NOPROXY, "*");
  Set(CURLOPT_PATH_AS_IS, 1L);
  Set(CURLOPT_USERNAME, user.constData());
  const bool isNameless = user == "anonymous" && logOn.password.Bytes().isEmpty();
  Set(CURLOPT_PASSWORD, isNameless ? "anonymous@" : logOn.password.CString());
  Set(CURLOPT_FTP_FILEMETHOD, long(CURLFTPMETHOD_NOCWD));
  Set(CURLOPT_FTP_USE_EPSV, 1L);
  Set(CURLOPT_FTP_SKIP_PASV_IP, 1L);
  if (settings_.active) {
    Set(CURLOPT_FTPPORT, "-");
  }
  Set(CURLOPT_TRANSFERTEXT, 0L);
  // Saves a round trip: SIZE before each download.
  Set(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
  Set(CURLOPT_BUFFERSIZE, kBufferBytes);
  Set(CURLOPT_UPLOAD_BUFFERSIZE, kBufferBytes);
  Set(CURLOPT_TCP_NODELAY, 1L);
  Set(CURLOPT_TCP_KEEPALIVE, 1L);
  Set(CURLOPT_MAXAGE_CONN, kForEver);
  Set(CURLOPT_CONNECTTIMEOUT_MS, long(longest_.count()));
  Set(CURLOPT_ACCEPTTIMEOUT_MS, long(longest_.count()));
  // Silence is counted here, over everything that comes and goes; the library's own count must not end first.
  Set(CURLOPT_SERVER_RESPONSE_TIMEOUT, long(settings_.timeout) + 600);

  Set(CURLOPT_HEADERFUNCTION, &CurlLine::OnReply);
  Set(CURLOPT_HEADERDATA, this);
  Set(CURLOPT_WRITEFUNCTION, &CurlLine::OnBytes);
  Set(CURLOPT_WRITEDATA, this);
  Set(CURLOPT_READFUNCTION, &CurlLine::OnNeed);
  Set(CURLOPT_READDATA, this);
  Set(CURLOPT_XFERINFOFUNCTION, &CurlLine::OnProgress);
  Set(CURLOPT_XFERINFODATA, this);
  Set(CURLOPT_NOPROGRESS, 0L);
  Set(CURLOPT_SOCKOPTFUNCTION, &CurlLine::OnSocket);
  Set(CURLOPT_SOCKOPTDATA, this);
  Set(CURLOPT_CLOSESOCKETFUNCTION, &CurlLine::OnClose);
  Set(CURLOPT_CLOSESOCKETDATA, this);
  if (settings_.tls != FtpSettings::Tls::Off) {
    certificates_ =
        std::make_unique<CertificateCheck>(settings_.host, settings_.caFile, logOn.trustedFingerprint);
    SetUpTls();
  }
}

void CurlLine::SetUpTls() {
  Set(CURLOPT_USE_SSL, long(CURLUSESSL_ALL));
  Set(CURLOPT_FTPSSLAUTH, long(CURLFTPAUTH_TLS));
  Set(CURLOPT_SSLVERSION,
      long(CURL_SSLVERSION_DEFAULT) |
          long(settings_.tlsMost == FtpSettings::TlsMost::Tls12 ? CURL_SSLVERSION_MAX_TLSv1_2
                                                                : CURL_SSLVERSION_MAX_TLSv1_3));
  // Both are checked here, with the certificates of this object.
  Set(CURLOPT_SSL_VERIFYPEER, 1L);
  Set(CURLOPT_SSL_VERIFYHOST, 0L);
  Set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
  Set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  Set(CURLOPT_SSL_SESSIONID_CACHE, 1L);
  Set(CURLOPT_SSL_CTX_FUNCTION, &CurlLine::OnTls);
  Set(CURLOPT_SSL_CTX_DATA, this);
  // It tells which commands it sends.
  Set(CURLOPT_DEBUGFUNCTION, &CurlLine::OnSent);
  Set(CURLOPT_DEBUGDATA, this);
  Set(CURLOPT_VERBOSE, 1L);
}

void CurlLine::LogOn() {
  Begin({}, {QByteArrayLiteral("*FEAT")}, nullptr);
  DriveUntil([] { return false; });
  if (!replies_.Replies().empty()) {
    greeting_ = replies_.Replies().front().text;
  }
  if (result_ != CURLE_OK) {
    ThrowLogOnFailure();
  }
  RequireAlive();
  isLoggedOn_ = true;
  tellsFolder_ = replies_.Find(kPathTold) != nullptr;
  ReadFeatures();
  char* text = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_FTP_ENTRY_PATH, &text);
  start_ = text == nullptr || *text == '\0' ? QByteArrayLiteral("/") : QByteArray(text);
  text = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_PRIMARY_IP, &text);
  address_ = QString::fromLatin1(text);
}

void CurlLine::ReadFeatures() {
  constexpr int kFeatures = 211;
  const ftp::Reply reply = replies_.Last();
  if (reply.code != kFeatures) {
    return;
  }
  QByteArrayList lines = reply.text.split('\n');
  if (lines.size() > 2) {
    // The first one and the last one are words around them.
    lines.removeFirst();
    lines.removeLast();
    for (const QByteArray& line : std::as_const(lines)) {
      if (const QByteArray feature = line.trimmed(); !feature.isEmpty()) {
        features_ << feature;
      }
    }
  }
}

void CurlLine::ThrowLogOnFailure() {
  isBroken_ = true;
  const QString at = Place();
  if (certificates_ && !certificates_->Refusal().isEmpty()) {
    throw CertificateRefused(certificates_->Shown(),
                             QStringLiteral("%1: %2").arg(certificates_->Refusal(), at));
  }
  constexpr int kNeedAccount = 332;
  constexpr int kNotLoggedOn = 530;
  constexpr int kWrongUser = 430;
  constexpr int kEnded = 221;
  constexpr int kGone = 421;
  constexpr int kLaterOn = 120;
  constexpr int kWantsPassword = 331;
  const std::vector<ftp::Reply>& replies = replies_.Replies();
  // The library says good-bye after a refusal, and the server answers that, too.
  const auto refused = std::find_if(replies.begin(), replies.end(), [](const ftp::Reply& reply) {
    return reply.code == kGone || reply.code == kEnded || reply.code == kNeedAccount ||
           reply.code == kLaterOn || reply.code == kNotLoggedOn || reply.code == kWrongUser;
  });
  const auto last = std::find_if(replies.rbegin(), replies.rend(),
                                 [](const ftp::Reply& reply) { return reply.code >= 400; });
  const ftp::Reply reply = refused != replies.end() ? *refused
                           : last != replies.rend() ? *last
                                                    : replies_.Last();
  const QString words = WordsOf(reply);
  const bool tookPassword = std::any_of(replies.begin(), replies.end(),
                                        [](const ftp::Reply& each) { return each.code == kWantsPassword; });
  switch (result_) {
    case CURLE_COULDNT_RESOLVE_HOST:
      Fail(kUnknownHost, QStringLiteral("The host is unknown"), settings_.host);
    case CURLE_COULDNT_CONNECT: {
      long number = 0;
      curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &number);
      const qint32 failure = NumberOfSystem(number);
      Fail(failure, ReasonOf(failure), at);
    }
    case CURLE_USE_SSL_FAILED:
      Fail(error::kNotSupported,
           QStringLiteral("The server has no encrypted connections by TLS (%1)").arg(words), at);
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CIPHER:
      Fail(error::kNotSupported,
           QStringLiteral("No encrypted connection could be agreed on with the server (%1)")
               .arg(QString::fromUtf8(reason_.data()).simplified()),
           at);
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_ABORTED_BY_CALLBACK:
      if (reply.code != kGone && !IsCancelled()) {
        ThrowSilence();
      }
      break;
    default:
      break;
  }
  if (reply.code == 0 ||
      (reply.code < 400 && reply.code != kEnded && reply.code != kNeedAccount && reply.code != kLaterOn)) {
    if (IsCancelled()) {
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
  if (result_ == CURLE_LOGIN_DENIED) {
    Fail(error::kLogonFailure, QStringLiteral("The server refuses user or password (%1)").arg(words), at);
  }
  Fail(error::kAccessDenied, QStringLiteral("The server refuses the connection (%1)").arg(words), at);
}

QString CurlLine::Place() const {
  return QStringLiteral("%1, port %2").arg(settings_.host).arg(settings_.port);
}

// What the library calls.

size_t CurlLine::OnReply(char* bytes, size_t size, size_t count, void* self) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  try {
    line.Touch();
    line.replies_.Add({bytes, qsizetype(size) * qsizetype(count)});
    if (line.HasBegun()) {
      line.gate_.NoteBegun();
    }
    return size * count;
  } catch (const std::exception&) {
    return 0;
  }
}

size_t CurlLine::OnBytes(char* bytes, size_t size, size_t count, void* self) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  try {
    line.Touch();
    constexpr int kRestarts = 350;
    if (line.needsRestart_ && line.replies_.Find(kRestarts) == nullptr) {
      // These are bytes of the beginning.
      return 0;
    }
    if (line.flow_ == nullptr || line.flow_->Put({bytes, qsizetype(size) * qsizetype(count)})) {
      return size * count;
    }
    return CURL_WRITEFUNC_PAUSE;
  } catch (const std::exception&) {
    return 0;
  }
}

size_t CurlLine::OnNeed(char* bytes, size_t size, size_t count, void* self) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  try {
    const qsizetype got = line.flow_ == nullptr || line.hasSpoken_
                              ? 0
                              : line.flow_->Get(bytes, qsizetype(size) * qsizetype(count));
    if (got == Flow::kLater) {
      return CURL_READFUNC_PAUSE;
    }
    if (got == 0) {
      line.isAllGiven_ = true;
      line.AllowForWhatIsHeld();
    }
    return size_t(got);
  } catch (const std::exception&) {
    return CURL_READFUNC_ABORT;
  }
}

int CurlLine::OnProgress(void* self, curl_off_t /*downMost*/, curl_off_t down, curl_off_t /*upMost*/,
                         curl_off_t up) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  if (line.moved_ != down + up) {
    line.moved_ = down + up;
    line.Touch();
  }
  // The library waits by itself for the last reply of a transfer, and calls this once a second.
  if (line.IsCancelled() || line.IsSilentTooLong()) {
    return 1;
  }
  if (line.control_) {
    line.control_->Alive();
  }
  return 0;
}

int CurlLine::OnSocket(void* self, curl_socket_t socket, curlsocktype purpose) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  KeepFromPrograms(Socket(socket));
  if (purpose != CURLSOCKTYPE_IPCXN) {
    // The library closes it by itself.
    return CURL_SOCKOPT_OK;
  }
  if (line.isLoggedOn_ && (line.settings_.active || !line.isTransfer_ || line.replies_.Replies().empty())) {
    // It has found the control connection dead: a new one is nobody's wish.
    line.isBroken_ = true;
    return CURL_SOCKOPT_ERROR;
  }
  try {
    line.sockets_.Add(Socket(socket));
    // A cancel of just now has not seen it.
    return line.IsCancelled() ? CURL_SOCKOPT_ERROR : CURL_SOCKOPT_OK;
  } catch (const std::exception&) {
    return CURL_SOCKOPT_ERROR;
  }
}

int CurlLine::OnClose(void* self, curl_socket_t socket) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  try {
    if (socket == line.controlSocket_ && !line.isAborting_ && line.isTransfer_ && line.isUnderWay_ &&
        !line.certificates_ && line.HasBegun() && !line.IsCancelled() && !line.IsSilentTooLong()) {
      // The data connection has failed, mostly since the server has ended it: it tells why.
      const QByteArray words = ReadLastWords(Socket(socket), line.settings_.patience);
      for (const QByteArray& each : words.split('\n')) {
        if (!each.isEmpty()) {
          line.replies_.Add(each);
          line.hasLastWords_ = true;
        }
      }
    } else if (socket != line.controlSocket_) {
      line.NoteLastWords();
    }
  } catch (const std::exception&) {
    line.hasLastWords_ = false;
  }
  line.sockets_.Remove(Socket(socket));
  if (socket == line.controlSocket_) {
    line.controlSocket_ = CURL_SOCKET_BAD;
  }
  Close(Socket(socket));
  return 0;
}

CURLcode CurlLine::OnTls(CURL* /*easy*/, void* context, void* self) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  line.certificates_->Install(static_cast<SSL_CTX*>(context));
  if (line.isLoggedOn_) {
    line.gate_.Guard(static_cast<SSL_CTX*>(context));
  }
  return CURLE_OK;
}

int CurlLine::OnSent(CURL* /*easy*/, curl_infotype kind, char* bytes, size_t size, void* self) noexcept {
  if (kind == CURLINFO_HEADER_OUT) {
    static_cast<CurlLine*>(self)->gate_.NoteSent({bytes, qsizetype(size)});
  }
  return 0;
}

// Driving.

void CurlLine::Touch() {
  lastByte_ = Clock::now();
  if (control_) {
    control_->Alive();
  }
}

bool CurlLine::IsCancelled() const {
  return control_ && putBacks_ == 0 && control_->IsCancelled();
}

bool CurlLine::IsSilentTooLong() const {
  const Clock::time_point now = Clock::now();
  return now - lastByte_ > longest_ + allowance_ || (deadline_ && now > *deadline_);
}

void CurlLine::AllowForWhatIsHeld() {
  // So much may be in the system's own buffers, and goes no faster than what has gone before.
  constexpr curl_off_t kMostHeld = curl_off_t(4) * 1024 * 1024;
  constexpr Milliseconds kMost = 5min;
  if (moved_ > 0) {
    const double share = double(std::min(moved_, kMostHeld)) / double(moved_);
    const auto elapsed = std::chrono::duration<double, std::milli>(Clock::now() - begun_);
    allowance_ = std::min(kMost, Milliseconds(qint64(elapsed.count() * share)));
  }
}

void CurlLine::RequireNotCancelled() const {
  if (IsCancelled()) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
}

void CurlLine::RequireFree() const {
  if (isUnderWay_) {
    Fail(providererror::kBusy, QStringLiteral("A transfer is under way on this connection"), Place());
  }
  if (isBroken_) {
    Fail(kLineLost, QStringLiteral("The connection was lost"), Place());
  }
  RequireNotCancelled();
}

void CurlLine::RequireAlive() {
  constexpr int kEnded = 221;
  constexpr int kGone = 421;
  for (const int code : {kGone, kEnded}) {
    if (const ftp::Reply* const reply = replies_.Find(code)) {
      ThrowLost(QStringLiteral("The server has ended the connection (%1)").arg(WordsOf(*reply)));
    }
  }
}

void CurlLine::ThrowLost(const QString& reason) {
  Abort();
  Fail(kLineLost, reason, Place());
}

void CurlLine::ThrowUnasked() {
  constexpr int kEnded = 221;
  constexpr int kGone = 421;
  ReplyReader words;
  for (const QByteArray& line : ReadLastWords(Socket(controlSocket_), settings_.patience).split('\n')) {
    words.Add(line);
  }
  const ftp::Reply reply = words.Replies().empty() ? ftp::Reply{} : words.Replies().front();
  const QString end = QStringLiteral("The server has ended the connection");
  if (reply.code == 0) {
    ThrowLost(end);
  }
  ThrowLost(reply.code == kEnded || reply.code == kGone
                ? end + QStringLiteral(" (%1)").arg(WordsOf(reply))
                : QStringLiteral("The server has answered without being asked (%1)").arg(WordsOf(reply)));
}

void CurlLine::ThrowSilence() {
  Abort();
  Fail(error::kTimeOut, QStringLiteral("The controller has not answered for %1 s").arg(settings_.timeout),
       Place());
}

bool CurlLine::HasEnded() const noexcept {
  if (!isLoggedOn_ || isBroken_ || isUnderWay_ || controlSocket_ == CURL_SOCKET_BAD) {
    return false;
  }
  curl_waitfd waiting{controlSocket_, CURL_WAIT_POLLIN, 0};
  curl_multi_poll(multi_.get(), &waiting, 1, 0, nullptr);
  if (waiting.revents == 0) {
    return false;
  }
  // Another answer that nobody has asked for is told.
  constexpr qsizetype kWords = 512;
  std::array<char, kWords> bytes{};
  const QByteArrayView come(bytes.data(), Peek(Socket(controlSocket_), bytes.data(), kWords));
  return come.isEmpty() ||
         (certificates_ ? HoldsAlert(come) : come.startsWith("421") || come.startsWith("221"));
}

void CurlLine::Begin(const QByteArray& path, const QByteArrayList& before, Flow* flow) {
  RequireNothingUnread();
  replies_.Clear();
  gate_.Close();
  flow_ = flow;
  isTransfer_ = flow != nullptr;
  isUpload_ = false;
  needsRestart_ = false;
  hasSpoken_ = false;
  hasLastWords_ = false;
  isAllGiven_ = false;
  lastWords_.clear();
  allowance_ = Milliseconds(0);
  moved_ = 0;
  result_ = CURLE_OK;
  reason_.front() = '\0';

  before_ = MakeList(before);
  Set(CURLOPT_URL, (url_ + path).constData());
  Set(CURLOPT_UPLOAD, 0L);
  Set(CURLOPT_NOBODY, isTransfer_ ? 0L : 1L);
  Set(CURLOPT_CUSTOMREQUEST, static_cast<const char*>(nullptr));
  Set(CURLOPT_QUOTE, isTransfer_ ? nullptr : before_.get());
  Set(CURLOPT_PREQUOTE, isTransfer_ ? before_.get() : nullptr);
  begun_ = lastByte_ = Clock::now();
}

ftp::Reply CurlLine::Ask(const QByteArray& command) {
  RequireOneLine(command);
  RequireFree();
  if (!certificates_ && controlSocket_ != CURL_SOCKET_BAD) {
    // Past the library an answer that comes twice is seen.
    return AskTogether({command}).front();
  }
  RequireKnownStep();
  const ftp::Reply reply = AskOnce(command);
  if (IsOfTransfer(reply) || !IsAnswerTo(command, reply)) {
    RequireInStep();
  }
  return reply;
}

ftp::Reply CurlLine::AskOnce(const QByteArray& command) {
  Begin({}, {'*' + command}, nullptr);
  DriveUntil([] { return false; });
  return Outcome();
}

void CurlLine::RequireKnownStep() {
  if (std::exchange(doubtsStep_, false)) {
    RequireInStep();
  }
}

void CurlLine::RequireInStep() {
  const ftp::Reply reply = AskOnce(QByteArrayLiteral("PWD"));
  const bool mayNotKnowIt = start_ == "/" && reply.IsUnknownCommand();
  if (reply.code != kPathTold && !mayNotKnowIt) {
    ThrowLost(QStringLiteral("The server has answered once more than it was asked (%1)").arg(WordsOf(reply)));
  }
}

void CurlLine::RequireNothingUnread() {
  if (isLoggedOn_ && controlSocket_ != CURL_SOCKET_BAD && !certificates_) {
    // Nothing was asked, so what has come is the end, and the library would connect anew.
    curl_waitfd waiting{controlSocket_, CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi_.get(), &waiting, 1, 0, nullptr);
    if (waiting.revents != 0) {
      ThrowUnasked();
    }
  }
}

bool CurlLine::TakesTogether() {
  if (certificates_ || !tellsFolder_) {
    return false;
  }
  RequireFree();
  RequireKnownStep();
  ControlWords words(Socket(controlSocket_), replies_);
  RequireNothingUnread();
  replies_.Clear();
  const std::shared_ptr<void> cancel = WakeOnCancel();
  words.Say({QByteArrayLiteral("NOOP"), QByteArrayLiteral("PWD")});
  static_cast<void>(AwaitReplies(words, 1));
  const bool takesBoth = AwaitReplies(words, 2, kNextAnswer);
  if (!takesBoth) {
    // The answer to a third one, of another kind, shows whether the second one was read at all.
    words.Say({QByteArrayLiteral("SYST")});
    static_cast<void>(AwaitReplies(words, 2));
  }
  const std::vector<ftp::Reply>& replies = replies_.Replies();
  const bool isLate = !takesBoth && replies[1].code == kPathTold;
  if (isLate && !AwaitReplies(words, 3, kNextAnswer)) {
    // It is one answer behind from here on.
    Abort();
    return false;
  }
  const bool isInStep = IsOfNothing(replies[0]) &&
                        (takesBoth ? replies[1].code == kPathTold : IsOfSystem(replies.back())) &&
                        replies.size() == (isLate ? 3U : 2U) && !words.HasPart();
  if (!isInStep) {
    ThrowLost(QStringLiteral("The server answers other commands than it was asked (%1)")
                  .arg(WordsOf(replies.back())));
  }
  return takesBoth;
}

std::vector<ftp::Reply> CurlLine::AskTogether(const QByteArrayList& commands) {
  RequireFree();
  RequireKnownStep();
  RequireNothingUnread();
  replies_.Clear();
  ControlWords words(Socket(controlSocket_), replies_);
  const std::shared_ptr<void> cancel = WakeOnCancel();
  words.Say(commands);
  static_cast<void>(AwaitReplies(words, std::size_t(commands.size())));
  std::vector<ftp::Reply> replies = replies_.Replies();
  const bool isInStep =
      replies.size() == std::size_t(commands.size()) && !words.HasPart() &&
      std::none_of(replies.begin(), replies.end(), [](const ftp::Reply& reply) { return reply.code < 200; });
  if (!isInStep) {
    ThrowLost(QStringLiteral("The server has answered more often than it was asked (%1)")
                  .arg(WordsOf(replies.back())));
  }
  for (std::size_t i = 0; i < replies.size(); ++i) {
    if (IsOfTransfer(replies[i]) || !IsAnswerTo(commands[qsizetype(i)], replies[i])) {
      RequireInStep();
      break;
    }
  }
  return replies;
}

bool CurlLine::AwaitReplies(ControlWords& words, std::size_t count, std::optional<Milliseconds> most) {
  lastByte_ = Clock::now();
  // What a transfer before was given more is no matter of a command.
  allowance_ = Milliseconds(0);
  // Not an optional: the compiler cannot see that it is read only where it is set.
  const Clock::time_point end = most ? lastByte_ + *most : Clock::time_point::max();
  for (;;) {
    const ControlWords::State state = words.Exchange();
    if (state == ControlWords::State::Moved) {
      Touch();
    }
    RequireAlive();
    if (replies_.Replies().size() >= count) {
      return true;
    }
    Guard();
    if (state == ControlWords::State::Ended) {
      ThrowLost(QStringLiteral("The connection was lost"));
    }
    Milliseconds longest = std::min(kBeat, longest_);
    if (most) {
      const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now());
      if (left.count() <= 0) {
        return false;
      }
      longest = std::min(longest, left);
    }
    curl_waitfd waiting{controlSocket_, short(CURL_WAIT_POLLIN | (words.HasToSend() ? CURL_WAIT_POLLOUT : 0)),
                        0};
    curl_multi_poll(multi_.get(), &waiting, 1, int(longest.count()), nullptr);
    if (control_) {
      control_->Alive();
    }
  }
}

void CurlLine::RequireBinary() {
  if (real_ != Kind::Binary && Ask(QByteArrayLiteral("TYPE I")).IsDone()) {
    real_ = Kind::Binary;
  }
}

void CurlLine::BeginText(const QByteArray& command, Flow* flow) {
  RequireOneLine(command);
  RequireFree();
  RequireKnownStep();
  Begin({}, {}, flow);
  Set(CURLOPT_CUSTOMREQUEST, command.constData());
  if (believed_ != Kind::Text) {
    // The library lists in text only.
    real_ = Kind::Text;
  }
  believed_ = Kind::Text;
}

void CurlLine::BeginRetrieve(const QByteArray& path, qint64 offset, Flow* flow) {
  RequireAddressable(path);
  RequireFree();
  RequireKnownStep();
  QByteArrayList before;
  if (offset > 0) {
    before << "*REST " + QByteArray::number(offset);
  }
  Begin(path.toPercentEncoding(), before, flow);
  needsRestart_ = offset > 0;
  believed_ = real_ = Kind::Binary;
}

void CurlLine::BeginStore(const QByteArray& path, Flow* flow) {
  RequireAddressable(path);
  RequireFree();
  RequireKnownStep();
  Begin(path.toPercentEncoding(), {}, flow);
  Set(CURLOPT_UPLOAD, 1L);
  Set(CURLOPT_INFILESIZE_LARGE, curl_off_t(-1));
  isUpload_ = heedsWords_ = true;
  believed_ = real_ = Kind::Binary;
}

void CurlLine::NoteLastWords() {
  if (!certificates_ || isAborting_ || !isTransfer_ || !isUpload_ || !isUnderWay_ || isAllGiven_ ||
      hasSpoken_ || !HasBegun() || IsCancelled() || IsSilentTooLong()) {
    return;
  }
  curl_tlssessioninfo* tls = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_TLS_SSL_PTR, &tls);
  if (tls != nullptr && tls->backend == CURLSSLBACKEND_OPENSSL && tls->internals != nullptr) {
    lastWords_ = PeekTlsWords(static_cast<SSL*>(tls->internals), Socket(controlSocket_), settings_.patience);
  }
}

void CurlLine::Perform() {
  if (!isUnderWay_) {
    if (curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK) {
      throw std::bad_alloc();
    }
    isUnderWay_ = true;
  }
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
  int left = 0;
  while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg == CURLMSG_DONE) {
      NoteEnd(message->data.result);
      return;
    }
  }
}

void CurlLine::NoteEnd(CURLcode result) {
  result_ = result;
  if (result != CURLE_OK && !IsControlKept(result) && !hasLastWords_) {
    for (const QByteArray& words : std::as_const(lastWords_).split('\n')) {
      if (!words.isEmpty()) {
        replies_.Add(words);
        hasLastWords_ = true;
      }
    }
  }
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl_easy_getinfo(easy_.get(), CURLINFO_ACTIVESOCKET, &socket);
  curl_multi_remove_handle(multi_.get(), easy_.get());
  isUnderWay_ = false;
  controlSocket_ = socket;
  sockets_.KeepOnly(Socket(socket));
  const int code = replies_.Last().code;
  const bool isInStep = code >= 200 && (result == CURLE_OK || (code >= 400 && IsControlKept(result)));
  if (socket == CURL_SOCKET_BAD || !isInStep || gate_.HasLostStep()) {
    // The next reply would be taken for that of another command.
    isBroken_ = true;
  }
  // Some servers tell of such an end a second time.
  doubtsStep_ = isTransfer_ && code >= 400 && !WasRefused();
  if (replies_.Find(227) != nullptr && !isBroken_) {
    // EPSV was refused: it need not be tried again.
    Set(CURLOPT_FTP_USE_EPSV, 0L);
  }
}

void CurlLine::PollControl(Milliseconds most) {
  // Alone: a data connection that has ended is ready all the time.
  const Multi none(curl_multi_init());
  curl_waitfd waiting{controlSocket_, CURL_WAIT_POLLIN, 0};
  curl_multi_poll(none.get(), &waiting, 1, int(most.count()), nullptr);
}

void CurlLine::Poll() {
  const bool isOpening = isTransfer_ && !HasBegun();
  if (isOpening && gate_.HoldsEnd()) {
    PollControl(kBeatWhileOpening);
    return;
  }
  curl_waitfd waiting{controlSocket_, CURL_WAIT_POLLIN, 0};
  const bool listens =
      isUpload_ && !certificates_ && controlSocket_ != CURL_SOCKET_BAD && HasBegun() && heedsWords_;
  const Milliseconds most = isOpening ? kBeatWhileOpening : std::min(kBeat, longest_);
  curl_multi_poll(multi_.get(), listens ? &waiting : nullptr, listens ? 1 : 0, int(most.count()), nullptr);
  if (listens && waiting.revents != 0) {
    // Some say before the data come that all of them have come.
    char first = '\0';
    static_cast<void>(Peek(Socket(controlSocket_), &first, 1));
    hasSpoken_ = first == '4' || first == '5';
    heedsWords_ = false;
    if (hasSpoken_) {
      Resume();
    }
  }
}

void CurlLine::Guard() {
  if (IsCancelled()) {
    Abort();
    RequireNotCancelled();
  }
  if (IsSilentTooLong()) {
    ThrowSilence();
  }
}

std::shared_ptr<void> CurlLine::WakeOnCancel() {
  if (!control_ || putBacks_ > 0) {
    return nullptr;
  }
  return control_->OnCancel([this] {
    sockets_.ShutdownAll();
    curl_multi_wakeup(multi_.get());
  });
}

void CurlLine::DriveUntil(const std::function<bool()>& isEnough) {
  lastByte_ = Clock::now();
  const std::shared_ptr<void> cancel = WakeOnCancel();
  for (;;) {
    Perform();
    if (!isUnderWay_) {
      if (result_ == CURLE_OK || !IsCancelled()) {
        return;
      }
      Guard();
    }
    if (isEnough()) {
      return;
    }
    Guard();
    Poll();
    if (control_) {
      control_->Alive();
    }
  }
}

void CurlLine::DriveNow() {
  if (isUnderWay_) {
    lastByte_ = Clock::now();
    Guard();
    Perform();
  }
}

void CurlLine::Resume() {
  if (isUnderWay_) {
    curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
  }
}

bool CurlLine::HasBegun() const {
  const int code = replies_.Last().code;
  return code >= 100 && code < 200;
}

void CurlLine::RequireOneLine(QByteArrayView bytes) {
  if (bytes.isEmpty() || HoldsLineBreak(bytes)) {
    throw RunTimeError(error::kInvalidName,
                       QStringLiteral("A name with a line break cannot be told to an FTP server"));
  }
}

bool CurlLine::WasRefused() const {
  const std::vector<ftp::Reply>& replies = replies_.Replies();
  return std::none_of(replies.begin(), replies.end(),
                      [](const ftp::Reply& reply) { return reply.code >= 100 && reply.code < 200; });
}

void CurlLine::RequireOutcome() {
  static_cast<void>(Outcome());
}

void CurlLine::FailShort() {
  ThrowLost(QStringLiteral("The server has ended the transfer before all of it was sent"));
}

ftp::Reply CurlLine::Outcome() {
  RequireAlive();
  const ftp::Reply reply = replies_.Last();
  if (result_ == CURLE_OK) {
    return reply;
  }
  if (reply.code >= 400 && (hasLastWords_ || IsControlKept(result_))) {
    return reply;
  }
  ThrowFailure();
}

void CurlLine::ThrowFailure() {
  const CURLcode result = result_;
  Abort();
  RequireNotCancelled();
  const QString why = QString::fromUtf8(reason_.data()).simplified();
  switch (result) {
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_FTP_ACCEPT_TIMEOUT:
      ThrowSilence();
    case CURLE_ABORTED_BY_CALLBACK:
      if (IsSilentTooLong()) {
        ThrowSilence();
      }
      break;
    case CURLE_COULDNT_CONNECT:
      ThrowLost(QStringLiteral("No connection for the data could be opened"));
    case CURLE_FTP_COULDNT_RETR_FILE:
      if (replies_.Last().IsDone() && WasRefused()) {
        Fail(error::kNotSupported,
             QStringLiteral("The server sends data without announcing them, which cannot be read (%1)")
                 .arg(WordsOf(replies_.Last())),
             Place());
      }
      break;
    case CURLE_FTP_WEIRD_PASV_REPLY:
    case CURLE_FTP_WEIRD_227_FORMAT:
      ThrowLost(QStringLiteral("The server tells no place for the data that can be read (%1)")
                    .arg(WordsOf(replies_.Last())));
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
      if (certificates_ && !certificates_->Refusal().isEmpty()) {
        ThrowLost(certificates_->Refusal());
      }
      ThrowLost(QStringLiteral("No encrypted connection for the data could be agreed on (%1)").arg(why));
    default:
      break;
  }
  ThrowLost(QStringLiteral("The connection was lost"));
}

void CurlLine::DriveBriefly() {
  lastByte_ = Clock::now();
  deadline_ = lastByte_ + settings_.patience;
  while (isUnderWay_ && Clock::now() < *deadline_ && !IsCancelled()) {
    Perform();
    if (isUnderWay_) {
      curl_multi_poll(multi_.get(), nullptr, 0, int(kBeatAtEnd.count()), nullptr);
    }
  }
  deadline_.reset();
}

void CurlLine::BreakOff() noexcept {
  if (!isUnderWay_) {
    return;
  }
  try {
    if (HasBegun() && !IsCancelled() && controlSocket_ != CURL_SOCKET_BAD && !settings_.active &&
        (isUpload_ || ReadsAnEndThen())) {
      if (!isUpload_) {
        // To the library it looks as if all had come.
        sockets_.EndOthersAtOnce(Socket(controlSocket_));
      }
      Resume();
      DriveBriefly();
    }
  } catch (const std::exception&) {
    isBroken_ = true;
  }
  if (isUnderWay_) {
    Abort();
  }
  doubtsStep_ = true;
}

void CurlLine::Abort() noexcept {
  isBroken_ = true;
  isAborting_ = true;
  sockets_.ShutdownAll();
  if (isUnderWay_) {
    isUnderWay_ = false;
    curl_multi_remove_handle(multi_.get(), easy_.get());
  }
}

}  // namespace trevane::curl
