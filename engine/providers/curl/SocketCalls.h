#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <chrono>
#include <system_error>

namespace trevane::curl {

/// A socket of the system, wide enough for each.
using Socket = qintptr;

/// Ends a wait on the socket; it stays open.
void Shutdown(Socket socket) noexcept;
/// The same, and the other end is told at once when the socket is closed, even where it waits for room to
/// send.
void EndAtOnce(Socket socket) noexcept;
/// After either the library reads the end of the content; else a failure, after which it gives up the control
/// connection, too.
[[nodiscard]] bool ReadsAnEndThen() noexcept;
void Close(Socket socket) noexcept;
/// Programs that are started by this one do not hold the connection open.
void KeepFromPrograms(Socket socket) noexcept;
/// What has come, at most `most` bytes, without taking it; how many. 0 where there is none.
[[nodiscard]] qsizetype Peek(Socket socket, char* bytes, qsizetype most) noexcept;
/// How many bytes the system has taken, without waiting: 0 where it takes none now, -1 where the line has
/// ended.
[[nodiscard]] qsizetype SendSome(Socket socket, QByteArrayView bytes) noexcept;
/// How many bytes have come into `bytes`, likewise.
[[nodiscard]] qsizetype ReceiveSome(Socket socket, char* bytes, qsizetype most) noexcept;
/// Whether bytes, or the end, have come by then.
[[nodiscard]] bool AwaitBytes(Socket socket, std::chrono::milliseconds longest) noexcept;
/// What comes until a line without a hyphen behind its code, the end of the line or the end of the time.
[[nodiscard]] QByteArray ReadLastWords(Socket socket, std::chrono::milliseconds longest);
/// Why a connection could not be opened, by the system's own number.
[[nodiscard]] std::errc CauseOf(long number) noexcept;

}  // namespace trevane::curl
