#pragma once

#include <QtGlobal>

#include <cstdint>
#include <span>

namespace trevane::test::sockets {

/// A socket or an event of the system; below 0: none. Calls never block but Wait.
using Handle = int;

/// At a free port of 127.0.0.1, and the port.
[[nodiscard]] Handle Listen(quint16& port);
/// To that port of 127.0.0.1; none where nobody listens.
[[nodiscard]] Handle Connect(quint16 port);
/// The next one who has come; none where nobody has.
[[nodiscard]] Handle Accept(Handle listening);
void Close(Handle handle);
/// The other end sees a reset.
void Break(Handle socket);

/// How many bytes; 0 at the end, below 0 for a failure.
[[nodiscard]] qsizetype Receive(Handle socket, char* to, qsizetype most);
[[nodiscard]] qsizetype Send(Handle socket, const char* from, qsizetype size);
/// Whether the thread's last failure is none: the call is to be repeated after a wait.
[[nodiscard]] bool WouldBlock();
/// A client that is gone ends a write of this thread with a failure, not the whole program.
void BlockBrokenPipe();

/// Can be read from Raise on.
[[nodiscard]] Handle MakeEvent();
void Raise(Handle event);

/// `Gone`: the other end has ended. Of Windows this is not seen behind bytes that were not received.
enum class Until : std::uint8_t { Readable, Writable, Gone };
struct Waited {
  Handle handle = -1;
  Until until = Until::Readable;
};
/// The place of the first one that is ready or broken, below 0 when the time is over. Those that are none are
/// passed over. Milliseconds; below 0: no limit.
[[nodiscard]] int Wait(std::span<const Waited> all, int timeout);

}  // namespace trevane::test::sockets
