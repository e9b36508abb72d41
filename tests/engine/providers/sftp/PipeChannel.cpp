#include "tests/engine/providers/sftp/PipeChannel.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/CallControl.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane::test {
namespace {

constexpr qint32 kConnectionLost = error::kWin32Error + 64;
constexpr int kSilence = 10000;

}  // namespace

QString SftpServerProgram() {
  const QString program =
      qEnvironmentVariable("TREVANE_SSH_SERVERS") + QStringLiteral("/usr/lib/openssh/sftp-server");
  return QFileInfo(program).isExecutable() ? program : QString();
}

QString NoSftpServerText() {
  return QStringLiteral("no sftp-server: ./test.sh fetches it and names its folder in TREVANE_SSH_SERVERS");
}

PipeChannel::PipeChannel(const QString& program, std::shared_ptr<CallControl> control)
    : control_(std::move(control)) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    Fail(providererror::kGeneralFailure, program);
  }
  socket_ = ends[0];
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
  QByteArray path = QFile::encodeName(program);
  std::array<char*, 2> arguments{path.data(), nullptr};
  const int code = ::posix_spawn(&server_, path.constData(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(ends[1]);
  if (code != 0) {
    ::close(socket_);
    Fail(error::kNotFound, program);
  }
  ::fcntl(socket_, F_SETFL, O_NONBLOCK);
  if (control_) {
    std::array<int, 2> wake{};
    if (::pipe2(wake.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
      wakeRead_ = wake[0];
      wakeWrite_ = wake[1];
    }
  }
}

PipeChannel::~PipeChannel() {
  wake_.reset();
  ::close(socket_);
  ::kill(server_, SIGKILL);
  int status = 0;
  while (::waitpid(server_, &status, 0) < 0 && errno == EINTR) {
  }
  if (wakeRead_ >= 0) {
    ::close(wakeRead_);
    ::close(wakeWrite_);
  }
}

bool PipeChannel::TryBoth(QByteArray& unsent, QByteArray& received) {
  bool done = false;
  if (!unsent.isEmpty()) {
    const ssize_t sent =
        ::send(socket_, unsent.constData(), static_cast<size_t>(unsent.size()), MSG_NOSIGNAL);
    if (sent > 0) {
      unsent.remove(0, sent);
      done = true;
    } else if (sent < 0 && errno != EAGAIN && errno != EINTR) {
      throw ProviderError(kConnectionLost, {});
    }
  }
  constexpr qsizetype kMost = 1024 * 1024;
  QByteArray buffer(kMost, Qt::Uninitialized);
  const ssize_t came = ::recv(socket_, buffer.data(), static_cast<size_t>(buffer.size()), 0);
  if (came == 0 || (came < 0 && errno != EAGAIN && errno != EINTR)) {
    throw ProviderError(kConnectionLost, {});
  }
  if (came > 0) {
    buffer.truncate(came);
    received = buffer;
    done = true;
  }
  return done;
}

QByteArray PipeChannel::Poll(QByteArray& unsent) {
  QByteArray received;
  static_cast<void>(TryBoth(unsent, received));
  return received;
}

QByteArray PipeChannel::Exchange(QByteArray& unsent) {
  const bool isCancellable = control_ && putBacks_ == 0;
  std::shared_ptr<void> wake;
  if (isCancellable) {
    std::array<char, 16> old{};
    while (::read(wakeRead_, old.data(), old.size()) > 0) {
    }
    wake = control_->OnCancel([this] { static_cast<void>(!::write(wakeWrite_, "c", 1)); });
  }
  QByteArray received;
  while (!TryBoth(unsent, received)) {
    if (isCancellable && control_->IsCancelled()) {
      throw ProviderError(error::kCancelled, {});
    }
    std::array<pollfd, 2> waits{
        pollfd{socket_, static_cast<short>(unsent.isEmpty() ? POLLIN : POLLIN | POLLOUT), 0},
        pollfd{isCancellable ? wakeRead_ : -1, POLLIN, 0}};
    if (::poll(waits.data(), waits.size(), kSilence) == 0) {
      throw ProviderError(error::kTimeOut, {});
    }
  }
  if (control_) {
    control_->Alive();
  }
  return received;
}

}  // namespace trevane::test
