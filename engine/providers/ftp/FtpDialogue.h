#pragma once

#include "engine/providers/ftp/FtpReply.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <cstddef>
#include <memory>
#include <vector>

namespace trevane {

/// The content of a file while it comes. Destroyed before its end it breaks the transfer off.
class FtpDownload {
 public:
  FtpDownload() = default;
  virtual ~FtpDownload() = default;
  FtpDownload(const FtpDownload&) = delete;
  FtpDownload& operator=(const FtpDownload&) = delete;

  /// The next bytes, at most `most`; none when the data connection has ended.
  [[nodiscard]] virtual QByteArray Read(qint64 most) = 0;
  /// After the end: what the server says of the transfer (226 where it sent all of it).
  [[nodiscard]] virtual ftp::Reply Finish() = 0;
};

/// The content of a file while it goes. Destroyed without Finish it breaks the transfer off, and part of the
/// content may stand on the server.
class FtpUpload {
 public:
  FtpUpload() = default;
  virtual ~FtpUpload() = default;
  FtpUpload(const FtpUpload&) = delete;
  FtpUpload& operator=(const FtpUpload&) = delete;

  /// The server has refused it at once, so that nothing was touched; Finish tells how.
  [[nodiscard]] virtual bool WasRefused() const { return false; }
  /// Returns before all of it has gone, and takes little memory all the same. A server that has ended the
  /// transfer is no failure here: Finish tells what it says.
  virtual void Write(const QByteArray& piece) = 0;
  /// Sends the rest, and the end; what the server says of the transfer.
  [[nodiscard]] virtual ftp::Reply Finish() = 0;
};

/// One logged-on control connection and the data connections that it opens, always in binary. One thread's
/// alone, and one thing at a time: while a transfer is under way, every other call fails with
/// providererror::kBusy.
///
/// A refusal of the server is a reply and no failure. A call fails with kWin32Error + 64 (connection lost)
/// when the line is lost, or the server ends it (221, 421) or was seen to answer what it was not asked, with
/// error::kTimeOut after the silence that the settings allow, with error::kCancelled when the running call is
/// cancelled; after each of them the dialogue is broken. Paths and names are bytes of the server. A command
/// with CR, LF or NUL in it fails with error::kInvalidName before anything is sent.
class FtpDialogue {
 public:
  FtpDialogue() = default;
  virtual ~FtpDialogue() = default;
  FtpDialogue(const FtpDialogue&) = delete;
  FtpDialogue& operator=(const FtpDialogue&) = delete;

  /// One command without a data connection ("SIZE /a").
  [[nodiscard]] virtual ftp::Reply Command(const QByteArray& command) = 0;
  /// Several in a row; ends after the first one that is refused (400 and above). A reply for each that was
  /// sent.
  [[nodiscard]] virtual std::vector<ftp::Reply> Commands(const QByteArrayList& commands) = 0;

  /// Whether the server answers each of several commands that come in one segment. It is asked by harmless
  /// ones, which can take a second longer than an answer. The line may be broken afterwards. A dialogue that
  /// cannot send them so answers false and asks nothing.
  [[nodiscard]] virtual bool TakesTogether() { return false; }
  /// Several in one segment, only where the server takes that. All of them are sent, whatever is answered to
  /// those in front. A reply for each. After a failure any of them may have been carried out.
  [[nodiscard]] virtual std::vector<ftp::Reply> Together(const QByteArrayList& commands) {
    std::vector<ftp::Reply> replies;
    replies.reserve(static_cast<std::size_t>(commands.size()));
    for (const QByteArray& command : commands) {
      replies.push_back(Command(command));
    }
    return replies;
  }

  struct Text {
    /// That of the transfer, or the refusal.
    ftp::Reply reply;
    /// With "\n" at the ends of lines.
    QByteArray bytes = {};
    /// There were more bytes than `most`; the transfer was broken off.
    bool isTooLarge = false;
  };
  /// A command that answers over a data connection ("MLSD /a", "LIST").
  [[nodiscard]] virtual Text ReadText(const QByteArray& command, qint64 most) = 0;

  /// The content of a file from `offset` on (REST, where that is above 0). Null where the server refuses;
  /// `refusal` tells then.
  [[nodiscard]] virtual std::unique_ptr<FtpDownload> Retrieve(const QByteArray& path, qint64 offset,
                                                              ftp::Reply& refusal) = 0;
  /// New content for a file (STOR): what stands there is overwritten. A refusal is told by Finish at the
  /// latest.
  [[nodiscard]] virtual std::unique_ptr<FtpUpload> Store(const QByteArray& path) = 0;

  /// What the server has answered to FEAT, a line each without blanks in front; empty where it has none.
  [[nodiscard]] virtual const QByteArrayList& Features() const = 0;
  /// The folder of the log-on, as PWD tells it; "/" where it tells none.
  [[nodiscard]] virtual const QByteArray& Start() const = 0;
  /// Nothing can be asked over this line any more.
  [[nodiscard]] virtual bool IsBroken() const noexcept = 0;

  /// Until EndPutBack a cancel of the running call ends nothing: what a cancelled call has changed is
  /// restored, and what it has left is taken away. They nest.
  virtual void BeginPutBack() noexcept = 0;
  virtual void EndPutBack() noexcept = 0;
};

}  // namespace trevane
