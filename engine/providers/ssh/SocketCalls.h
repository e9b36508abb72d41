#pragma once

#include "engine/providers/ssh/NetFailure.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <chrono>
#include <cstdint>
#include <vector>

/// What this program asks of the system's network. All sockets are closed in programs that are started, and
/// none of these calls waits unless it says so.
namespace trevane::net {

using Socket = std::intptr_t;
inline constexpr Socket kNoSocket = -1;

/// An address as the system has it, and as people read it.
struct Address {
  QByteArray bytes;
  QString text;
};

struct Resolved {
  std::vector<Address> addresses;
  NetFailure failure = {};
};

/// Waits as long as the system does. From any thread.
[[nodiscard]] Resolved Resolve(const QString& host, quint16 port);

/// Begins to connect; the socket is writable when that has ended. kNoSocket with the failure where it could
/// not even begin.
[[nodiscard]] Socket StartConnecting(const Address& address, NetFailure& failure);
/// How the connecting of a writable socket has ended.
[[nodiscard]] NetFailure ConnectFailure(Socket socket);
/// Small pieces leave at once, and calls of it never wait.
void Prepare(Socket socket) noexcept;

/// A second name of the same socket: each is closed for itself. kNoSocket when the system has no more.
[[nodiscard]] Socket Duplicate(Socket socket) noexcept;
/// Ends what the socket receives and sends, under all its names; a call that waits for it returns. From any
/// thread.
void Shutdown(Socket socket) noexcept;
void Close(Socket socket) noexcept;

struct Watched {
  Socket socket = kNoSocket;
  bool writing = false;
  /// Set by Wait.
  bool isReady = false;
};

/// Waits until one of them can be read, or written where `writing`, or has failed.
void Wait(std::vector<Watched>& watched, std::chrono::milliseconds longest);

/// A pair of which the first is readable from PutByte to TakeBytes. kNoSocket twice when the system has no
/// more.
struct WakePair {
  Socket waiting = kNoSocket;
  Socket waking = kNoSocket;
};
[[nodiscard]] WakePair MakeWakePair() noexcept;
/// From any thread.
void PutByte(Socket waking) noexcept;
void TakeBytes(Socket waiting) noexcept;
void CloseWakePair(const WakePair& pair) noexcept;

}  // namespace trevane::net
