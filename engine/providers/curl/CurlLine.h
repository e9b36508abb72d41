#pragma once

#include "engine/providers/certificates/CertificateCheck.h"
#include "engine/providers/curl/ControlExchange.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "engine/providers/curl/CurlHandles.h"
#include "engine/providers/curl/HandshakeGate.h"
#include "engine/providers/curl/LineFailures.h"
#include "engine/providers/curl/LineWatch.h"
#include "engine/providers/curl/OpenSockets.h"
#include "engine/providers/curl/ReplyReader.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace trevane::curl {

class Flow;

/// The connection that a dialogue speaks over: one thing at a time, driven by whoever waits for it. One
/// thread's alone.
class CurlLine final {
 public:
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
  /// Begin a transfer; `flow` outlives it. `command` answers over a data connection; `offset` is in bytes.
  /// They fail with error::kInvalidName for what cannot be told to a server, and as RequireFree.
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
  /// Closes without another word, at any time; the line is broken then.
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

  /// Commands about sizes and offsets count bytes only then.
  void RequireBinary();
  /// Fails with providererror::kBusy while a transfer is under way, with kLineLost when the line is broken.
  void RequireFree() const;

  [[nodiscard]] bool IsBroken() const noexcept { return isBroken_; }
  /// Between two calls: the server has ended the line. Nothing was sent since.
  [[nodiscard]] bool HasEnded() const noexcept;
  /// What follows is not cancelled: LineWatch::BeginPutBack.
  void BeginPutBack() noexcept { watch_.BeginPutBack(); }
  void EndPutBack() noexcept { watch_.EndPutBack(); }
  /// The lines of the server's answer to FEAT; none where it does not know it.
  [[nodiscard]] const QByteArrayList& Features() const noexcept { return features_; }
  /// The folder of the log-on, as bytes of the server.
  [[nodiscard]] const QByteArray& Start() const noexcept { return start_; }
  [[nodiscard]] const QByteArray& Greeting() const noexcept { return greeting_; }
  [[nodiscard]] const QString& Address() const noexcept { return address_; }
  /// Null without TLS; the line owns it.
  [[nodiscard]] const CertificateCheck* Certificates() const noexcept { return certificates_.get(); }

 private:
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
  void Set(CURLoption option, Value value) {
    SetOption(easy_.get(), option, value);
  }
  void SetUp(const FtpLogOn& logOn);
  void LogOn();
  /// What the library and the server have said of the end.
  [[nodiscard]] LineEnd End() const;
  void Begin(const QByteArray& path, const QByteArrayList& before, Flow* flow);
  [[nodiscard]] ftp::Reply AskOnce(const QByteArray& command);
  /// Fails with kLineLost where the next answer would be that to something else: asked where that may be.
  void RequireKnownStep();
  void RequireInStep();
  /// Ends waits where the running call is cancelled, as long as the result lives.
  [[nodiscard]] std::shared_ptr<void> WakeOnCancel();
  /// Fails with kLineLost where something has come that nobody has asked for.
  void RequireNothingUnread();
  /// Past the library; not over TLS.
  [[nodiscard]] ControlExchange BeginExchange();
  /// The data connection of an upload over TLS is closed before all has gone, mostly since the server has
  /// ended it: it tells why, and nobody can read that when the line is closed.
  void NoteLastWords();
  void Perform();
  void NoteEnd(CURLcode result);
  void Poll();
  void PollControl(std::chrono::milliseconds most);
  /// To the end or for a moment, whichever comes first.
  void DriveBriefly();
  void Guard();
  /// What `act` returns; the line is closed before a failure of `act` goes on.
  template <typename Act>
  auto OrAbort(Act act);
  void RequireAlive();
  [[noreturn]] void ThrowLost(const QString& reason);
  [[noreturn]] void ThrowFailure();

  const FtpSettings settings_;
  LineWatch watch_;
  const QByteArray url_;
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
  Kind believed_ = Kind::Unknown;
  Kind real_ = Kind::Unknown;
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
