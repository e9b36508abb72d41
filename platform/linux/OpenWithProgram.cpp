#include "platform/OpenWithProgram.h"

#include "base/NameCodec.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QSocketNotifier>
#include <QThread>

#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane {
namespace {

constexpr char kOpener[] = "xdg-open";

QByteArray FindOpener() {
  for (const QByteArray& folder : qgetenv("PATH").split(':')) {
    const QByteArray path = folder + '/' + kOpener;
    struct stat status {};
    if (folder.startsWith('/') && ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode) &&
        ::access(path.constData(), X_OK) == 0) {
      return path;
    }
  }
  return {};
}

// The exit codes that the opener documents: no such file, no tool found, the action failed.
constexpr int kFirstFailure = 2;
constexpr int kLastFailure = 4;
/// One that ends later has opened the file: it is the program itself, or has waited for it.
constexpr qint64 kFailsWithin = 10'000;  // milliseconds

OpenFailureListener& Listener() {
  static OpenFailureListener listener;
  return listener;
}

QString ReasonOf(int code) {
  switch (code) {
    case 2:
      return QStringLiteral("The program that opens files found no such file.");
    case 3:
      return QStringLiteral("A tool that opens files is not installed.");
    default:
      return QStringLiteral("No program opened the file.");
  }
}

/// A process that has ended stays in the system's table until it is asked for. One is left for whom the
/// system can watch nothing; the next open asks for it.
struct UnwatchedProcesses {
  std::mutex mutex;
  std::vector<pid_t> processes;
};

UnwatchedProcesses& Unwatched() {
  static UnwatchedProcesses unwatched;
  return unwatched;
}

void AskForUnwatched() {
  const std::lock_guard lock(Unwatched().mutex);
  std::erase_if(Unwatched().processes,
                [](pid_t process) { return ::waitpid(process, nullptr, WNOHANG) != 0; });
}

void Watch(pid_t process, const QString& path) {
  // The event loop that sees it end is that of the window's thread.
  QCoreApplication* const application = QCoreApplication::instance();
  if (application != nullptr && application->thread() != QThread::currentThread()) {
    QMetaObject::invokeMethod(
        application, [process, path] { Watch(process, path); }, Qt::QueuedConnection);
    return;
  }
  const int fd = int(::syscall(SYS_pidfd_open, process, 0));
  if (fd < 0 || QCoreApplication::instance() == nullptr) {
    if (fd >= 0) {
      ::close(fd);
    }
    const std::lock_guard lock(Unwatched().mutex);
    Unwatched().processes.push_back(process);
    return;
  }
  QElapsedTimer since;
  since.start();
  auto* const end = new QSocketNotifier(fd, QSocketNotifier::Read, QCoreApplication::instance());
  QObject::connect(end, &QSocketNotifier::activated, end, [=] {
    int status = 0;
    const bool known = ::waitpid(process, &status, WNOHANG) == process && WIFEXITED(status);
    end->setEnabled(false);
    end->deleteLater();
    ::close(fd);
    const int code = known ? WEXITSTATUS(status) : 0;
    if (code >= kFirstFailure && code <= kLastFailure && !since.hasExpired(kFailsWithin) && Listener()) {
      Listener()(path, ReasonOf(code));
    }
  });
}

// Starts a program that outlives this one; 0, or the error of the call that failed. The arguments go as
// bytes: a name that is no text in this locale must arrive as it is.
int Start(const QByteArray& program, const QByteArray& argument, const QByteArray& folder, pid_t& child) {
  std::array<int, 2> report{};
  if (::pipe2(report.data(), O_CLOEXEC) != 0) {
    return errno;
  }
  std::array<char*, 3> arguments{const_cast<char*>(program.constData()),
                                 const_cast<char*>(argument.constData()), nullptr};
  child = ::fork();
  if (child == 0) {
    // Only calls that are safe after a fork. A session of its own: what ends this program does not end it.
    ::setsid();
    if (::chdir(folder.constData()) != 0) {
      [[maybe_unused]] const int ignored = ::chdir("/");
    }
    const int null = ::open("/dev/null", O_RDWR | O_NOCTTY);
    if (null >= 0) {
      ::dup2(null, STDIN_FILENO);
    }
    ::execv(program.constData(), arguments.data());
    const int error = errno;
    [[maybe_unused]] const ssize_t ignored = ::write(report[1], &error, sizeof error);
    ::_exit(127);
  }
  int error = child < 0 ? errno : 0;
  ::close(report[1]);
  if (child > 0) {
    // Ends at once when the program runs: its end of the pipe is closed then.
    ssize_t got = 0;
    while ((got = ::read(report[0], &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (got != ssize_t(sizeof error)) {
      error = 0;
    } else {
      while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
      }
    }
  }
  ::close(report[0]);
  return error;
}

}  // namespace

void SetOpenFailureListener(OpenFailureListener listener) {
  Listener() = std::move(listener);
}

OpenOutcome OpenWithProgram(const QString& path) {
  const QByteArray bytes = EncodeText(path);
  struct stat status {};
  if (!bytes.startsWith('/') || bytes.contains('\0') || ::stat(bytes.constData(), &status) != 0) {
    return {OpenOutcome::Code::NotFound, QStringLiteral("There is no such file.")};
  }
  const QByteArray opener = FindOpener();
  if (opener.isEmpty()) {
    return {OpenOutcome::Code::NoProgram,
            QStringLiteral("No program that opens files was found (xdg-open is not installed).")};
  }
  const auto slash = bytes.lastIndexOf('/');
  AskForUnwatched();
  pid_t process = 0;
  const int error = Start(opener, bytes, slash == 0 ? QByteArrayLiteral("/") : bytes.first(slash), process);
  if (error != 0) {
    return {OpenOutcome::Code::Failed, QString::fromLocal8Bit(std::strerror(error))};
  }
  Watch(process, path);
  return {};
}

}  // namespace trevane
