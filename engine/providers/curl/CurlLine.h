#pragma once

#include "engine/providers/certificates/CertificateCheck.h"
#include "engine/providers/curl/ControlWords.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "engine/providers/curl/CurlHandles.h"
#include "engine/providers/curl/HandshakeGate.h"
#include "engine/providers/curl/OpenSockets.h"
#include "engine/providers/curl/ReplyReader.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace trevane::curl {

/// What stands at this end of a data connection.
class Flow {
 public:
  Flow() = default;
  virtual ~Flow() = default;
  Flow(const Flow&) = delete;
  Flow& operator=(const Flow&) = delete;

  /// Takes what has come; false where it can take nothing now: it is offered again after Resume.
  [[nodiscard]] virtual bool Put(QByteArrayView bytes) = 0;
  /// Fills in at most `most` bytes; 0 at the end, kLater where there is nothing now.
  [[nodiscard]] virtual qsizetype Get(char* bytes, qsizetype most) = 0;

  static constexpr qsizetype kLater = -1;
};

/// The connection that a dialogue speaks over: one thing at a time, driven by whoever waits for it. One
/// thread's alone.
class CurlLine final {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// Connects and logs on; see CurlDialogue.
  CurlLine(const FtpSettings& settings, const FtpLogOn& logOn, std::shared_ptr<CallControl> control);
  ~CurlLine();
  CurlLine(const CurlLine&) = delete;
  CurlLine& operator=(const CurlLine&) = delete;

  /// One command without a data connection.
  [[nodiscard]] ftp::Reply Ask(const QByteArray& command);
  /// As FtpDialogue::TakesTogether.
  [[nodiscard]] bool TakesTogether();
  /// Commands without data connections in one segment, past the library; not over TLS. A reply for each.
  [[nodiscard]] std::vector<ftp::Reply> AskTogether(const QByteArrayList& commands);
  /// Begin a transfer; `flow` outlives it. `command` answers over a data connection.
  void BeginText(const QByteArray& command, Flow* flow);
  void BeginRetrieve(const QByteArray& path, qint64 offset, Flow* flow);
  void BeginStore(const QByteArray& path, Flow* flow);
  /// Drives the transfer until `isEnough` or its end. Fails with error::kCancelled or error::kTimeOut, and
  /// with kLineLost where it ended without a reply.
  void DriveUntil(const std::function<bool()>& isEnough);
  /// Drives what can be done without waiting.
  void DriveNow();
  /// The flow may take or give again.
  void Resume();
  [[nodiscard]] bool IsUnderWay() const noexcept { return isUnderWay_; }
  /// What the server has said of the transfer that has ended.
  [[nodiscard]] ftp::Reply Outcome();
  /// The last reply so far is that of a server that has begun the transfer.
  [[nodiscard]] bool HasBegun() const;
  /// The server has spoken on the control connection while content went to it: it has ended the transfer.
  [[nodiscard]] bool HasSpoken() const noexcept { return hasSpoken_; }
  /// Ends a transfer in the middle: its data connection is shut. The line stays usable where the server
  /// answers at once, else it is broken.
  void BreakOff() noexcept;
  /// Closes without another word.
  void Abort() noexcept;

  /// The transfer has ended, and the server has not begun it.
  [[nodiscard]] bool WasRefused() const;
  /// Fails where the transfer has ended with the line; a reply is no failure.
  void RequireOutcome();
  /// The server calls a transfer complete that it has not read to its end.
  [[noreturn]] void FailShort();
  /// The server takes REST.
  [[nodiscard]] bool KnowsRestart() const noexcept { return knowsRestart_; }
  void NoteRestart() noexcept { knowsRestart_ = true; }
  /// Fails with error::kInvalidName for bytes that would be more than one command.
  static void RequireOneLine(QByteArrayView bytes);

  /// Commands about sizes and offsets count bytes only then.
  void RequireBinary();
  /// Fails with providererror::kBusy while a transfer is under way, with kLineLost when the line is broken.
  void RequireFree() const;
  void RequireNotCancelled() const;

  [[nodiscard]] bool IsBroken() const noexcept { return isBroken_; }
  /// Between two calls: the server has ended the line. Nothing was sent since.
  [[nodiscard]] bool HasEnded() const noexcept;
  void BeginPutBack() noexcept { ++putBacks_; }
  void EndPutBack() noexcept { --putBacks_; }
  [[nodiscard]] const QByteArrayList& Features() const noexcept { return features_; }
  [[nodiscard]] const QByteArray& Start() const noexcept { return start_; }
  [[nodiscard]] const QByteArray& Greeting() const noexcept { return greeting_; }
  [[nodiscard]] const QString& Address() const noexcept { return address_; }
  [[nodiscard]] const CertificateCheck* Certificates() const noexcept { return certificates_.get(); }

 private:
  using Clock = std::chrono::steady_clock;
  /// What libcurl believes, and what holds on the server, of the kind of transfers.
  enum class Kind { Unknown, Text, Binary };

  static size_t OnReply(char* bytes, size_t size, size_t count, void* self) noexcept;
  static size_t OnBytes(char* bytes, size_t size, size_t count, void* self) noexcept;
  static size_t OnNeed(char* bytes, size_t size, size_t count, void* self) noexcept;
  static int OnProgress(void* self, curl_off_t downMost, curl_off_t down, curl_off_t upMost,
                        curl_off_t up) noexcept;
  static int OnSocket(void* self, curl_socket_t socket, curlsocktype purpose) noexcept;
  static int OnClose(void* self, curl_socket_t socket) noexcept;
  static CURLcode OnTls(CURL* easy, void* context, void* self) noexcept;
  static int OnSent(CURL* easy, curl_infotype kind, char* bytes, size_t size, void* self) noexcept;

  template <typename Value>
  void Set(CURLoption option, Value value);
  void SetUp(const FtpLogOn& logOn);
  void SetUpTls();
  void LogOn();
  [[noreturn]] void ThrowLogOnFailure();
  void ReadFeatures();
  void Begin(const QByteArray& path, const QByteArrayList& before, Flow* flow);
  [[nodiscard]] ftp::Reply AskOnce(const QByteArray& command);
  /// Fails with kLineLost where the next answer would be that to something else: asked where that may be.
  void RequireKnownStep();
  void RequireInStep();
  /// Ends waits where the running call is cancelled, as long as the result lives.
  [[nodiscard]] std::shared_ptr<void> WakeOnCancel();
  /// Fails with kLineLost where something has come that nobody has asked for.
  void RequireNothingUnread();
  /// Until so many replies have come; false where they have not within `most` from now.
  [[nodiscard]] bool AwaitReplies(ControlWords& words, std::size_t count,
                                  std::optional<Milliseconds> most = {});
  /// The data connection of an upload over TLS is closed before all has gone, mostly since the server has
  /// ended it: it tells why, and nobody can read that when the line is closed.
  void NoteLastWords();
  void Perform();
  void NoteEnd(CURLcode result);
  void Poll();
  void PollControl(Milliseconds most);
  /// To the end or for a moment, whichever comes first.
  void DriveBriefly();
  void Guard();
  void Touch();
  void AllowForWhatIsHeld();
  [[nodiscard]] bool IsCancelled() const;
  [[nodiscard]] bool IsSilentTooLong() const;
  void RequireAlive();
  [[noreturn]] void ThrowLost(const QString& reason);
  [[noreturn]] void ThrowFailure();
  [[noreturn]] void ThrowSilence();
  /// For what has come before anything was asked.
  [[noreturn]] void ThrowUnasked();
  [[nodiscard]] QString Place() const;

  const FtpSettings settings_;
  const std::shared_ptr<CallControl> control_;
  const Milliseconds longest_;
  QByteArray url_;
  std::unique_ptr<CertificateCheck> certificates_;
  OpenSockets sockets_;
  curl_socket_t controlSocket_ = CURL_SOCKET_BAD;
  std::array<char, CURL_ERROR_SIZE> reason_{};
  ReplyReader replies_;
  HandshakeGate gate_;
  List before_;
  Multi multi_;
  Easy easy_;

  Flow* flow_ = nullptr;
  CURLcode result_ = CURLE_OK;
  Clock::time_point lastByte_;
  Clock::time_point begun_;
  /// The end of a moment that something that ends on its own is given.
  std::optional<Clock::time_point> deadline_;
  /// Beyond the longest silence: what this computer still holds may take as long to arrive.
  Milliseconds allowance_{0};
  curl_off_t moved_ = 0;
  Kind believed_ = Kind::Unknown;
  Kind real_ = Kind::Unknown;
  int putBacks_ = 0;
  bool isUnderWay_ = false;
  bool isTransfer_ = false;
  bool isUpload_ = false;
  bool isLoggedOn_ = false;
  bool isBroken_ = false;
  bool isAborting_ = false;
  bool hasSpoken_ = false;
  bool heedsWords_ = false;
  bool hasLastWords_ = false;
  bool isAllGiven_ = false;
  QByteArray lastWords_;
  /// An answer that nobody has asked for may still come.
  bool doubtsStep_ = false;
  /// It has answered to PWD.
  bool tellsFolder_ = false;
  bool knowsRestart_ = false;
  bool needsRestart_ = false;

  QByteArrayList features_;
  QByteArray start_;
  QByteArray greeting_;
  QString address_;
};

}  // namespace trevane::curl
