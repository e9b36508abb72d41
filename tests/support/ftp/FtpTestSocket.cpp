#include "tests/support/ftp/FtpTestSocket.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Milliseconds for the greeting of TLS and for what the other end takes.
constexpr int kLongest = 30'000;

}  // namespace

FtpTestSocket::FtpTestSocket(int fd, int stop) : fd_(fd), stop_(stop) {
  ::fcntl(fd_, F_SETFL, ::fcntl(fd_, F_GETFL) | O_NONBLOCK);
  const int on = 1;
  ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

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

FtpTestSocket::Result FtpTestSocket::Wait(short events, int timeout) {
  std::array<pollfd, 3> fds{{{fd_, events, 0}, {stop_, POLLIN, 0}, {watched_, POLLRDHUP, 0}}};
  int ready = 0;
  do {
    ready = ::poll(fds.data(), fds.size(), timeout);
  } while (ready < 0 && errno == EINTR);
  if (ready == 0) {
    return Result::TimedOut;
  }
  if (ready < 0 || fds[1].revents != 0) {
    return Result::Ended;
  }
  // What has come is read before an end counts.
  return fds[0].revents != 0 ? Result::Done : Result::Ended;
}

bool FtpTestSocket::WantsMore(int result) {
  switch (SSL_get_error(tls_, result)) {
    case SSL_ERROR_WANT_READ:
      return Wait(POLLIN, kLongest) == Result::Done;
    case SSL_ERROR_WANT_WRITE:
      return Wait(POLLOUT, kLongest) == Result::Done;
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
    ssize_t got = 0;
    bool again = false;
    if (tls_ != nullptr) {
      got = SSL_read(tls_, piece.data(), static_cast<int>(most));
      again = got <= 0 && SSL_get_error(tls_, static_cast<int>(got)) == SSL_ERROR_WANT_READ;
    } else {
      got = ::recv(fd_, piece.data(), static_cast<size_t>(most), 0);
      again = got < 0 && (errno == EAGAIN || errno == EINTR);
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
    const Result waited = Wait(POLLIN, static_cast<int>(left));
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
    const ssize_t now =
        ::send(fd_, bytes.constData() + sent, static_cast<size_t>(bytes.size() - sent), MSG_NOSIGNAL);
    if (now > 0) {
      sent += now;
    } else if ((errno != EAGAIN && errno != EINTR) || Wait(POLLOUT, kLongest) != Result::Done) {
      return false;
    }
  }
  return true;
}

void FtpTestSocket::Stall() {
  // What comes is left unread.
  if (fd_ >= 0) {
    (void)Wait(POLLRDHUP, -1);
  }
}

void FtpTestSocket::Close(bool abruptly) {
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
  if (fd_ >= 0) {
    ::close(fd_);
    fd_ = -1;
  }
}

void FtpTestSocket::Break() {
  if (fd_ >= 0) {
    const linger reset{1, 0};
    ::setsockopt(fd_, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  }
  Close(true);
}

}  // namespace trevane::test
