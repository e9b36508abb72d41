#include "tests/support/ftp/FtpTestSocket.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <utility>

#include <openssl/err.h>

namespace trevane::test {
namespace {

/// Milliseconds for the greeting of TLS and for what the other end takes.
constexpr int kLongest = 30'000;

}  // namespace

FtpTestSocket::~FtpTestSocket() {
  Close(true);
}

FtpTestSocket::FtpTestSocket(FtpTestSocket&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)),
      stop_(other.stop_),
      watched_(other.watched_),
      tls_(std::exchange(other.tls_, nullptr)) {}

FtpTestSocket& FtpTestSocket::operator=(FtpTestSocket&& other) noexcept {
  if (this != &other) {
    Close(true);
    fd_ = std::exchange(other.fd_, -1);
    stop_ = other.stop_;
    watched_ = other.watched_;
    tls_ = std::exchange(other.tls_, nullptr);
  }
  return *this;
}

FtpTestSocket::Result FtpTestSocket::Wait(Until until, int timeout) {
  // What has come is read before the end of the other counts.
  const std::array<sockets::Waited, 3> all{{{stop_, Until::Readable}, {fd_, until}, {watched_, Until::Gone}}};
  const int ready = sockets::Wait(all, timeout);
  if (ready < 0) {
    return Result::TimedOut;
  }
  return ready == 1 ? Result::Done : Result::Ended;
}

bool FtpTestSocket::WantsMore(int result) {
  switch (SSL_get_error(tls_, result)) {
    case SSL_ERROR_WANT_READ:
      return Wait(Until::Readable, kLongest) == Result::Done;
    case SSL_ERROR_WANT_WRITE:
      return Wait(Until::Writable, kLongest) == Result::Done;
    default:
      ERR_clear_error();
      return false;
  }
}

bool FtpTestSocket::StartTls(SSL_CTX* context) {
  tls_ = SSL_new(context);
  SSL_set_fd(tls_, fd_);
  for (;;) {
    const int result = SSL_accept(tls_);
    if (result == 1) {
      return true;
    }
    if (!WantsMore(result)) {
      return false;
    }
  }
}

bool FtpTestSocket::WasResumed() const {
  return tls_ != nullptr && SSL_session_reused(tls_) == 1;
}

FtpTestSocket::Result FtpTestSocket::Read(QByteArray& bytes, qsizetype most, int timeout) {
  if (fd_ < 0) {
    return Result::Ended;
  }
  QElapsedTimer clock;
  clock.start();
  QByteArray piece(most, Qt::Uninitialized);
  for (;;) {
    qsizetype got = 0;
    bool again = false;
    if (tls_ != nullptr) {
      got = SSL_read(tls_, piece.data(), static_cast<int>(most));
      again = got <= 0 && SSL_get_error(tls_, static_cast<int>(got)) == SSL_ERROR_WANT_READ;
    } else {
      got = sockets::Receive(fd_, piece.data(), most);
      again = got < 0 && sockets::WouldBlock();
    }
    if (got > 0) {
      bytes.append(piece.constData(), got);
      return Result::Done;
    }
    if (!again) {
      ERR_clear_error();
      return Result::Ended;
    }
    const qint64 left = timeout < 0 ? -1 : std::max<qint64>(0, timeout - clock.elapsed());
    const Result waited = Wait(Until::Readable, static_cast<int>(left));
    if (waited != Result::Done) {
      return waited;
    }
  }
}

bool FtpTestSocket::Write(const QByteArray& bytes) {
  if (fd_ < 0) {
    return false;
  }
  for (qsizetype sent = 0; sent < bytes.size();) {
    if (tls_ != nullptr) {
      const int now = SSL_write(tls_, bytes.constData() + sent, static_cast<int>(bytes.size() - sent));
      if (now > 0) {
        sent += now;
      } else if (!WantsMore(now)) {
        return false;
      }
      continue;
    }
    const qsizetype now = sockets::Send(fd_, bytes.constData() + sent, bytes.size() - sent);
    if (now > 0) {
      sent += now;
    } else if (!sockets::WouldBlock() || Wait(Until::Writable, kLongest) != Result::Done) {
      return false;
    }
  }
  return true;
}

void FtpTestSocket::Stall() {
  // What comes is dropped: not every system tells of an end behind it.
  std::array<char, 4096> dropped{};
  while (fd_ >= 0 && Wait(Until::Readable, -1) == Result::Done &&
         sockets::Receive(fd_, dropped.data(), dropped.size()) > 0) {
  }
}

void FtpTestSocket::Close(bool abruptly) {
  EndTls(abruptly);
  if (fd_ >= 0) {
    sockets::Close(std::exchange(fd_, -1));
  }
}

void FtpTestSocket::Break() {
  EndTls(true);
  if (fd_ >= 0) {
    sockets::Break(std::exchange(fd_, -1));
  }
}

void FtpTestSocket::EndTls(bool abruptly) {
  if (tls_ != nullptr) {
    if (!abruptly && SSL_is_init_finished(tls_) == 1) {
      SSL_shutdown(tls_);
      ERR_clear_error();
    }
    // A session whose connection ends without the sign can be resumed all the same.
    SSL_set_shutdown(tls_, SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
    SSL_free(tls_);
    tls_ = nullptr;
  }
}

}  // namespace trevane::test
