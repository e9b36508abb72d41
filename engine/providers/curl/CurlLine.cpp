#include "engine/providers/curl/CurlLine.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/curl/CurlFailures.h"
#include "engine/providers/curl/FeaturesOf.h"
#include "engine/providers/curl/Flow.h"
#include "engine/providers/curl/FtpOptions.h"
#include "engine/providers/curl/IsAnswerTo.h"
#include "engine/providers/curl/OneLine.h"
#include "engine/providers/curl/PeekTlsWords.h"
#include "engine/providers/curl/UnaskedWords.h"

#include <chrono>
#include <exception>
#include <new>
#include <utility>

namespace trevane::curl {
namespace {

using namespace std::chrono_literals;

/// The library may miss that a data connection is ready.
constexpr std::chrono::milliseconds kBeatWhileOpening = 5ms;
constexpr std::chrono::milliseconds kBeatAtEnd = 70ms;

/// The end of a transfer, in place of an answer to a command that has none.
bool IsOfTransfer(const ftp::Reply& reply) {
  constexpr int kCompleted = 226;
  constexpr int kAborted = 426;
  return reply.code == kCompleted || reply.code == kAborted;
}

constexpr int kPathTold = 257;

}  // namespace

CurlLine::CurlLine(const FtpSettings& settings, const FtpLogOn& logOn, std::shared_ptr<CallControl> control)
    : settings_(settings), watch_(settings_, std::move(control)), url_(UrlOf(settings)) {
  StartLibrary();
  watch_.RequireNotCancelled();
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
  if (!isBroken_ && !isUnderWay_ && !watch_.IsCancelled()) {
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
  SetFtpOptions(easy_.get(), settings_, logOn);
  Set(CURLOPT_ERRORBUFFER, reason_.data());
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
    Set(CURLOPT_SSL_CTX_FUNCTION, &CurlLine::OnTls);
    Set(CURLOPT_SSL_CTX_DATA, this);
    // It tells which commands it sends.
    Set(CURLOPT_DEBUGFUNCTION, &CurlLine::OnSent);
    Set(CURLOPT_DEBUGDATA, this);
    Set(CURLOPT_VERBOSE, 1L);
  }
}

void CurlLine::LogOn() {
  Begin({}, {QByteArrayLiteral("*FEAT")}, nullptr);
  DriveUntil([] { return false; });
  if (!replies_.Replies().empty()) {
    greeting_ = replies_.Replies().front().text;
  }
  if (result_ != CURLE_OK) {
    isBroken_ = true;
    FailLogOn(settings_, End());
  }
  RequireAlive();
  isLoggedOn_ = true;
  tellsFolder_ = replies_.Find(kPathTold) != nullptr;
  features_ = FeaturesOf(replies_.Last());
  char* text = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_FTP_ENTRY_PATH, &text);
  start_ = text == nullptr || *text == '\0' ? QByteArrayLiteral("/") : QByteArray(text);
  text = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_PRIMARY_IP, &text);
  address_ = QString::fromLatin1(text);
}

LineEnd CurlLine::End() const {
  LineEnd end{result_, replies_, certificates_.get()};
  end.reason = QString::fromUtf8(reason_.data()).simplified();
  end.isCancelled = watch_.IsCancelled();
  end.isSilentTooLong = watch_.IsSilentTooLong();
  curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &end.systemNumber);
  return end;
}

// What the library calls.

size_t CurlLine::OnReply(char* bytes, size_t size, size_t count, void* self) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  try {
    line.watch_.Touch();
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
    line.watch_.Touch();
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
      line.watch_.AllowForWhatIsHeld();
    }
    return size_t(got);
  } catch (const std::exception&) {
    return CURL_READFUNC_ABORT;
  }
}

int CurlLine::OnProgress(void* self, curl_off_t /*downMost*/, curl_off_t down, curl_off_t /*upMost*/,
                         curl_off_t up) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  line.watch_.NoteMoved(down + up);
  // The library waits by itself for the last reply of a transfer, and calls this once a second.
  if (line.watch_.IsCancelled() || line.watch_.IsSilentTooLong()) {
    return 1;
  }
  line.watch_.TellAlive();
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
    return line.watch_.IsCancelled() ? CURL_SOCKOPT_ERROR : CURL_SOCKOPT_OK;
  } catch (const std::exception&) {
    return CURL_SOCKOPT_ERROR;
  }
}

int CurlLine::OnClose(void* self, curl_socket_t socket) noexcept {
  auto& line = *static_cast<CurlLine*>(self);
  try {
    if (socket == line.controlSocket_ && !line.isAborting_ && line.isTransfer_ && line.isUnderWay_ &&
        !line.certificates_ && line.HasBegun() && !line.watch_.IsCancelled() &&
        !line.watch_.IsSilentTooLong()) {
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

void CurlLine::RequireFree() const {
  if (isUnderWay_) {
    Fail(providererror::kBusy, QStringLiteral("A transfer is under way on this connection"),
         PlaceOf(settings_));
  }
  if (isBroken_) {
    Fail(kLineLost, QStringLiteral("The connection was lost"), PlaceOf(settings_));
  }
  watch_.RequireNotCancelled();
}

template <typename Act>
auto CurlLine::OrAbort(Act act) {
  try {
    return act();
  } catch (const RunTimeError&) {
    Abort();
    throw;
  }
}

void CurlLine::RequireAlive() {
  OrAbort([this] { RequireNotEnded(settings_, replies_); });
}

void CurlLine::ThrowLost(const QString& reason) {
  Abort();
  FailLost(settings_, reason);
}

bool CurlLine::HasEnded() const noexcept {
  return isLoggedOn_ && !isBroken_ && !isUnderWay_ && controlSocket_ != CURL_SOCKET_BAD &&
         HasUnaskedWords(multi_.get(), Socket(controlSocket_)) &&
         IsUnaskedEnd(Socket(controlSocket_), certificates_ != nullptr);
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
  result_ = CURLE_OK;
  reason_.front() = '\0';

  before_ = MakeList(before);
  Set(CURLOPT_URL, (url_ + path).constData());
  Set(CURLOPT_UPLOAD, 0L);
  Set(CURLOPT_NOBODY, isTransfer_ ? 0L : 1L);
  Set(CURLOPT_CUSTOMREQUEST, static_cast<const char*>(nullptr));
  Set(CURLOPT_QUOTE, isTransfer_ ? nullptr : before_.get());
  Set(CURLOPT_PREQUOTE, isTransfer_ ? before_.get() : nullptr);
  watch_.Begin();
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
  if (isLoggedOn_ && controlSocket_ != CURL_SOCKET_BAD && !certificates_ &&
      HasUnaskedWords(multi_.get(), Socket(controlSocket_))) {
    // Nothing was asked, so what has come is the end, and the library would connect anew.
    ThrowLost(TakeUnaskedWords(Socket(controlSocket_), settings_.patience));
  }
}

ControlExchange CurlLine::BeginExchange() {
  RequireFree();
  RequireKnownStep();
  RequireNothingUnread();
  replies_.Clear();
  return {multi_.get(), Socket(controlSocket_), settings_, replies_, watch_};
}

bool CurlLine::TakesTogether() {
  if (certificates_ || !tellsFolder_) {
    return false;
  }
  ControlExchange exchange = BeginExchange();
  const std::shared_ptr<void> cancel = WakeOnCancel();
  const ControlExchange::Answer answer = OrAbort([&] { return exchange.Probe(); });
  if (answer == ControlExchange::Answer::Late) {
    Abort();
  }
  return answer == ControlExchange::Answer::EachCommand;
}

std::vector<ftp::Reply> CurlLine::AskTogether(const QByteArrayList& commands) {
  ControlExchange exchange = BeginExchange();
  const std::shared_ptr<void> cancel = WakeOnCancel();
  std::vector<ftp::Reply> replies = OrAbort([&] { return exchange.Ask(commands); });
  for (std::size_t i = 0; i < replies.size(); ++i) {
    if (IsOfTransfer(replies[i]) || !IsAnswerTo(commands[qsizetype(i)], replies[i])) {
      RequireInStep();
      break;
    }
  }
  return replies;
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
      hasSpoken_ || !HasBegun() || controlSocket_ == CURL_SOCKET_BAD || watch_.IsCancelled() ||
      watch_.IsSilentTooLong()) {
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

void CurlLine::PollControl(std::chrono::milliseconds most) {
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
  const std::chrono::milliseconds most = isOpening ? kBeatWhileOpening : watch_.Beat();
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
  OrAbort([this] { watch_.RequireGoesOn(); });
}

std::shared_ptr<void> CurlLine::WakeOnCancel() {
  return watch_.OnCancel([this] {
    sockets_.ShutdownAll();
    curl_multi_wakeup(multi_.get());
  });
}

void CurlLine::DriveUntil(const std::function<bool()>& isEnough) {
  watch_.BeginWait();
  const std::shared_ptr<void> cancel = WakeOnCancel();
  for (;;) {
    Perform();
    if (!isUnderWay_) {
      if (result_ == CURLE_OK || !watch_.IsCancelled()) {
        return;
      }
      Guard();
    }
    if (isEnough()) {
      return;
    }
    Guard();
    Poll();
    watch_.TellAlive();
  }
}

void CurlLine::DriveNow() {
  if (isUnderWay_) {
    watch_.BeginWait();
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

bool CurlLine::WasRefused() const {
  return !replies_.TellsOfBegin();
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
  Abort();
  watch_.RequireNotCancelled();
  FailTransfer(settings_, End());
}

void CurlLine::DriveBriefly() {
  watch_.BeginMoment(settings_.patience);
  while (isUnderWay_ && watch_.IsInMoment() && !watch_.IsCancelled()) {
    Perform();
    if (isUnderWay_) {
      curl_multi_poll(multi_.get(), nullptr, 0, int(kBeatAtEnd.count()), nullptr);
    }
  }
  watch_.EndMoment();
}

void CurlLine::BreakOff() noexcept {
  if (!isUnderWay_) {
    return;
  }
  try {
    if (HasBegun() && !watch_.IsCancelled() && controlSocket_ != CURL_SOCKET_BAD && !settings_.active &&
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
