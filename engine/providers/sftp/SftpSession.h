#pragma once

#include "base/RunTimeError.h"
#include "engine/providers/sftp/SftpAnswer.h"
#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/sftp/SftpPacket.h"
#include "engine/providers/sftp/SftpStream.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

namespace trevane {
class CallControl;
}

namespace trevane::sftp {

class Session;

/// What came of a request: the value, or the status that stands in its place.
template <class Value>
struct Outcome {
  std::optional<Value> value;
  StatusAnswer status = {};

  explicit operator bool() const noexcept { return value.has_value(); }
  const Value* operator->() const { return &*value; }
  const Value& operator*() const& { return *value; }
  Value&& operator*() && { return *std::move(value); }
};

/// A request under way. Destroyed before its answer was taken, the answer is dropped whenever it comes; a
/// handle in it is closed. The session must outlive it.
class Request {
 public:
  Request() = default;
  Request(Session& session, quint32 id) noexcept : session_(&session), id_(id) {}
  ~Request();
  Request(Request&& other) noexcept : session_(std::exchange(other.session_, nullptr)), id_(other.id_) {}
  Request& operator=(Request&& other) noexcept;
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;

  /// The answer was not taken yet.
  [[nodiscard]] bool IsUnderWay() const noexcept { return session_ != nullptr; }
  /// Waiting takes no time.
  [[nodiscard]] bool IsAnswered() const noexcept;

  /// Waits for the answer and takes it. Fails as SftpChannel::Exchange does, and with kConnectionLost where
  /// the server sent an answer of another kind.
  [[nodiscard]] StatusAnswer Status();
  [[nodiscard]] Outcome<HandleAnswer> Handle() { return Take<HandleAnswer>(); }
  [[nodiscard]] Outcome<DataAnswer> Data() { return Take<DataAnswer>(); }
  [[nodiscard]] Outcome<NameAnswer> Names() { return Take<NameAnswer>(); }
  [[nodiscard]] Outcome<Attributes> Item() { return Take<Attributes>(); }
  [[nodiscard]] Outcome<ExtendedAnswer> Extended() { return Take<ExtendedAnswer>(); }

 private:
  [[nodiscard]] Answer Wait();
  [[noreturn]] void RefuseKind();
  template <class Value>
  [[nodiscard]] Outcome<Value> Take();

  Session* session_ = nullptr;
  quint32 id_ = 0;
};

/// What the server offers beyond the protocol's version 3.
struct Extensions {
  bool posixRename = false;
  bool hardLink = false;
  bool fsync = false;
  bool statvfs = false;
  bool limits = false;
  bool ownerNames = false;
};

/// The limits of the server, or what every server takes.
struct Limits {
  static constexpr quint32 kBlock = 32 * 1024;
  static constexpr int kHandles = 16;

  quint32 readBlock = kBlock;
  quint32 writeBlock = kBlock;
  /// Files and folders that are open at once; above 0.
  int handles = kHandles;
};

/// One connection: requests go out without waiting, answers come in any order.
class Session {
 public:
  /// Greets the server; fails as SftpChannel::Exchange does, and with error::kNotSupported where it does not
  /// speak this protocol. `control` may be null.
  Session(std::unique_ptr<SftpChannel> channel, std::shared_ptr<CallControl> control);
  ~Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  [[nodiscard]] const Extensions& Offers() const noexcept { return offers_; }
  [[nodiscard]] const Limits& Bounds() const noexcept { return limits_; }
  /// The server has refused to open more than what is open now.
  void LimitHandles() noexcept { limits_.handles = std::max(1, std::min(limits_.handles / 2, opened_)); }
  /// Where a log-on begins, as the server writes paths.
  [[nodiscard]] const QByteArray& Start() const noexcept { return start_; }

  /// The path that failures name from here on.
  void SetSubject(const QString& path) { subject_ = path; }

  Request Open(const QByteArray& path, quint32 flags, const Attributes& attributes = {});
  Request OpenFolder(const QByteArray& path) { return SendPath(PacketType::OpenDir, path); }
  Request Read(const QByteArray& handle, quint64 offset, quint32 length);
  Request Write(const QByteArray& handle, quint64 offset, QByteArrayView bytes);
  Request ReadFolder(const QByteArray& handle) { return SendPath(PacketType::ReadDir, handle); }
  Request SetItem(const QByteArray& handle, const Attributes& attributes);
  Request Fsync(const QByteArray& handle) { return SendExtended("fsync@openssh.com", handle); }
  Request Close(const QByteArray& handle) { return SendPath(PacketType::Close, handle); }

  Request Lstat(const QByteArray& path) { return SendPath(PacketType::Lstat, path); }
  Request Stat(const QByteArray& path) { return SendPath(PacketType::Stat, path); }
  Request SetStat(const QByteArray& path, const Attributes& attributes);
  Request Remove(const QByteArray& path) { return SendPath(PacketType::Remove, path); }
  Request RemoveFolder(const QByteArray& path) { return SendPath(PacketType::RmDir, path); }
  Request MakeFolder(const QByteArray& path, const Attributes& attributes);
  Request RealPath(const QByteArray& path) { return SendPath(PacketType::RealPath, path); }
  Request ReadLink(const QByteArray& path) { return SendPath(PacketType::ReadLink, path); }
  Request MakeLink(const QByteArray& path, const QByteArray& target);
  Request Rename(const QByteArray& from, const QByteArray& to);
  /// These only where they are offered.
  Request PosixRename(const QByteArray& from, const QByteArray& to);
  Request HardLink(const QByteArray& from, const QByteArray& to);
  Request Statvfs(const QByteArray& path) { return SendExtended("statvfs@openssh.com", path); }
  Request OwnerNames(quint32 user, quint32 group);

  /// Closes a handle without waiting.
  void Drop(const QByteArray& handle) noexcept;
  /// A handle counts as open until Drop or CountClosed.
  void CountOpened() noexcept { ++opened_; }
  void CountClosed() noexcept { --opened_; }
  [[nodiscard]] int OpenHandles() const noexcept { return opened_; }

  /// Sends what can be sent now and takes what has come, without waiting. What fails here fails in the next
  /// call, too.
  void Flush() noexcept;
  void KeepAlive() { channel_->KeepAlive(); }
  /// Nothing can be asked over this line any more.
  [[nodiscard]] bool IsBroken() const noexcept { return broken_.has_value(); }

  void BeginPutBack() noexcept;
  void EndPutBack() noexcept;

 private:
  friend class Request;

  struct Pending {
    bool isDropped = false;
    std::optional<Answer> answer = {};
  };

  [[nodiscard]] PacketWriter Begin(PacketType type);
  Request Send(PacketWriter& packet);
  Request SendPath(PacketType type, const QByteArray& path);
  Request SendExtended(const char* name, const QByteArray& argument);

  void Greet();
  void LearnLimits(Request& request);
  [[nodiscard]] Answer Await(quint32 id);
  void Forget(quint32 id) noexcept;
  [[nodiscard]] bool HasAnswer(quint32 id) const noexcept;
  /// Waits until bytes have gone or come.
  void Exchange();
  void Take(const QByteArray& bytes);
  void Dispatch(Answer&& answer);
  [[noreturn]] void Break(qint32 number, const QString& sentence);
  [[noreturn]] void Throw(const RunTimeError& failure) const;

  std::unique_ptr<SftpChannel> channel_;
  std::shared_ptr<CallControl> control_;
  Extensions offers_;
  Limits limits_;
  QByteArray start_;
  QString subject_;
  QByteArray unsent_;
  PacketStream stream_;
  QHash<quint32, Pending> pending_;
  quint32 lastId_ = 0;
  int opened_ = 0;
  int putBacks_ = 0;
  std::optional<RunTimeError> broken_;
};

/// While one exists a cancel ends no call. The session must outlive it; may be null.
class PutBack {
 public:
  explicit PutBack(Session* session) noexcept : session_(session) {
    if (session_ != nullptr) {
      session_->BeginPutBack();
    }
  }
  ~PutBack() {
    if (session_ != nullptr) {
      session_->EndPutBack();
    }
  }
  PutBack(const PutBack&) = delete;
  PutBack& operator=(const PutBack&) = delete;

 private:
  Session* session_;
};

/// An open file or folder; the destructor closes it without waiting.
class OpenHandle {
 public:
  OpenHandle() = default;
  OpenHandle(std::shared_ptr<Session> session, QByteArray handle)
      : session_(std::move(session)), handle_(std::move(handle)) {
    session_->CountOpened();
  }
  ~OpenHandle() { Reset(); }
  OpenHandle(OpenHandle&& other) noexcept = default;
  OpenHandle& operator=(OpenHandle&& other) noexcept;
  OpenHandle(const OpenHandle&) = delete;
  OpenHandle& operator=(const OpenHandle&) = delete;

  [[nodiscard]] bool IsOpen() const noexcept { return session_ != nullptr; }
  [[nodiscard]] const QByteArray& Get() const noexcept { return handle_; }
  /// Closes it; the answer tells whether all of it was stored.
  [[nodiscard]] Request Close();
  void Reset() noexcept;

 private:
  std::shared_ptr<Session> session_;
  QByteArray handle_;
};

}  // namespace trevane::sftp
