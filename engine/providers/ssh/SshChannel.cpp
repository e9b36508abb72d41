#include "engine/providers/ssh/SshChannel.h"

#include "engine/files/ProviderError.h"

#include <algorithm>
#include <array>

#include <libssh/server.h>

namespace trevane {
namespace {

/// The library sizes the window of the channel by what it is asked to read: with less the server waits for
/// answers on a long line.
constexpr uint32_t kWindow = 4 * 1024 * 1024;  // bytes
/// What is handed over at once.
constexpr qsizetype kPiece = 256 * 1024;  // bytes
/// The library takes at most so much from the line in one step.
constexpr qsizetype kStep = 4096;         // bytes
constexpr qsizetype kLongestText = 1000;  // bytes

}  // namespace

SshChannel::SshChannel(std::unique_ptr<SshSession> session)
    : session_(std::move(session)),
      channel_(ssh_channel_new(session_->Raw())),
      buffer_(std::make_unique_for_overwrite<char[]>(kWindow)) {
  if (channel_ == nullptr) {
    throw RunTimeError(error::kWin32Error + 8, QStringLiteral("The system has no memory left"));
  }
  try {
    Open();
  } catch (...) {
    ssh_channel_free(channel_);
    throw;
  }
}

SshChannel::~SshChannel() {
  ssh_channel_free(channel_);
}

void SshChannel::Open() {
  if (session_->Run(SSH_AGAIN, [this] { return ssh_channel_open_session(channel_); }) != SSH_OK) {
    const QString words = session_->ServersLastWords();
    Fail(kNoSessionLeft,
         words.isEmpty()
             ? QStringLiteral("The server opens no further channel: %1").arg(session_->LibraryText())
             : QStringLiteral("The server has ended the connection: \"%1\"").arg(words),
         session_->Name());
  }
  if (session_->Run(SSH_AGAIN, [this] { return ssh_channel_request_sftp(channel_); }) != SSH_OK) {
    ThrowOpenFailure();
  }
}

void SshChannel::ThrowOpenFailure() const {
  if (ssh_is_connected(session_->Raw()) == 0) {
    ThrowLost();
  }
  // The library's own text is about memory here.
  Fail(error::kNotSupported,
       QStringLiteral("The server has SSH, but no SFTP: it refuses to start the subsystem \"sftp\""),
       session_->Name());
}

void SshChannel::ThrowLost() const {
  const QString words = session_->ServersLastWords();
  QString text = net::ReasonOf(net::kLineLost);
  if (!words.isEmpty()) {
    text = QStringLiteral("The server has ended the connection: \"%1\"").arg(words);
  } else if (!errorText_.isEmpty()) {
    text = QStringLiteral("The server has ended SFTP: %1").arg(QString::fromUtf8(errorText_).trimmed());
  } else if (ssh_is_connected(session_->Raw()) != 0) {
    text = QStringLiteral("The server has ended SFTP");
  }
  Fail(net::kLineLost, text, session_->Name());
}

bool SshChannel::Send(QByteArray& unsent) {
  const uint32_t window = ssh_channel_window_size(channel_);
  const bool isFull = (ssh_get_poll_flags(session_->Raw()) & SSH_WRITE_PENDING) != 0;
  if (unsent.isEmpty() || window == 0 || isFull) {
    return false;
  }
  const auto size = static_cast<uint32_t>(std::min<qsizetype>({unsent.size(), window, kPiece}));
  const int sent = ssh_channel_write(channel_, unsent.constData(), size);
  if (sent < 0) {
    ThrowLost();
  }
  unsent.remove(0, sent);
  return sent > 0;
}

QByteArray SshChannel::Take() {
  for (qsizetype taken = 0; taken < kPiece && session_->Pump(); taken += kStep) {
  }
  TakeErrorText();
  const int size = ssh_channel_read_timeout(channel_, buffer_.get(), kWindow, 0, 0);
  if (size > 0) {
    return {buffer_.get(), size};
  }
  const bool hasEnded = ssh_channel_is_eof(channel_) != 0 || ssh_channel_is_closed(channel_) != 0;
  if (size == SSH_ERROR || hasEnded || ssh_is_connected(session_->Raw()) == 0) {
    ThrowLost();
  }
  return {};
}

void SshChannel::TakeErrorText() {
  std::array<char, 4096> text{};
  // A server that never ends to write does not keep Cancel from being heard.
  for (qsizetype taken = 0; taken < kPiece && ssh_channel_poll(channel_, 1) > 0; taken += kStep) {
    const int size = ssh_channel_read_timeout(channel_, text.data(), text.size(), 1, 0);
    if (size <= 0) {
      return;
    }
    errorText_.append(text.data(), std::min<qsizetype>(size, kLongestText - errorText_.size()));
  }
}

QByteArray SshChannel::Poll(QByteArray& unsent) {
  session_->Line().RequireNotCancelled();
  while (Send(unsent)) {
  }
  QByteArray came = Take();
  if (!came.isEmpty()) {
    session_->Line().Alive();
  }
  // Taking has also emptied what was full before.
  while (Send(unsent)) {
  }
  return came;
}

QByteArray SshChannel::Exchange(QByteArray& unsent) {
  for (;;) {
    const qsizetype before = unsent.size();
    QByteArray came = Poll(unsent);
    if (!came.isEmpty() || unsent.size() < before) {
      return came;
    }
    session_->WaitForServer();
  }
}

void SshChannel::KeepAlive() {
  session_->Pump();
  // The first call takes the answer to the last sign, where that has come, and sends nothing then.
  ssh_send_keepalive(session_->Raw());
  ssh_send_keepalive(session_->Raw());
  if (ssh_is_connected(session_->Raw()) == 0) {
    ThrowLost();
  }
}

}  // namespace trevane
