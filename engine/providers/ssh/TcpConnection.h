#pragma once

#include "engine/providers/ssh/SocketCalls.h"

#include <QString>
#include <QtGlobal>

#include <chrono>
#include <memory>

namespace trevane {
class CallControl;
}

namespace trevane::net {

class WakeUp;

/// A line to a host, all of whose waits end at once when the running call is cancelled. One thread's alone.
class TcpConnection final {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// `control` may be null: nothing is cancelled then. `longest` is the longest time of connecting and of
  /// silence.
  TcpConnection(std::shared_ptr<CallControl> control, Milliseconds longest);
  ~TcpConnection();
  TcpConnection(const TcpConnection&) = delete;
  TcpConnection& operator=(const TcpConnection&) = delete;

  /// Tries all addresses of the host, a new one every 250 ms. Fails with the reason, error::kTimeOut or
  /// error::kCancelled.
  void Connect(const QString& host, quint16 port);
  /// The address that has answered.
  [[nodiscard]] const QString& Address() const noexcept { return address_; }
  [[nodiscard]] Socket Handle() const noexcept { return socket_; }

  /// Returns when something has come or, with `writing`, can be sent. Fails with error::kTimeOut after the
  /// silence, or with error::kCancelled.
  void Wait(bool writing);

  /// Fails with error::kCancelled where the running call is cancelled.
  void RequireNotCancelled() const;
  /// In between nothing is cancelled. They nest.
  void BeginPutBack() noexcept { ++putBacks_; }
  void EndPutBack() noexcept { --putBacks_; }
  /// Something was heard.
  void Alive() const;
  /// Shuts `socket`, of any kind, down as soon as the running call is cancelled while the returned object
  /// lives.
  [[nodiscard]] std::shared_ptr<void> ShutdownOnCancel(Socket socket) const;

 private:
  struct Attempt;
  class Attempts;

  /// As the public one, until `end` only; returns at it without a failure.
  void WaitFor(std::vector<Watched>& watched, std::chrono::steady_clock::time_point end);
  [[nodiscard]] Resolved ResolveHost(const QString& host, quint16 port,
                                     std::chrono::steady_clock::time_point end);

  const std::shared_ptr<CallControl> control_;
  const Milliseconds longest_;
  const std::shared_ptr<WakeUp> wake_;
  int putBacks_ = 0;
  Socket socket_ = kNoSocket;
  QString address_;
  /// For texts.
  QString place_;
};

}  // namespace trevane::net
