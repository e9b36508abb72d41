#include "platform/OpenWithProgram.h"

#include "platform/NameCodec.h"

#include <QByteArrayList>

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
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

// Starts a program that nobody waits for; 0, or the error of the call that failed. The arguments go as bytes:
// a name that is no text in this locale must arrive as it is.
int StartDetached(const QByteArray& program, const QByteArray& argument, const QByteArray& folder) {
  std::array<int, 2> report{};
  if (::pipe2(report.data(), O_CLOEXEC) != 0) {
    return errno;
  }
  std::array<char*, 3> arguments{const_cast<char*>(program.constData()),
                                 const_cast<char*>(argument.constData()), nullptr};
  const pid_t child = ::fork();
  if (child == 0) {
    // Only calls that are safe after a fork. The grandchild has no parent to wait for it.
    ::setsid();
    const pid_t grandchild = ::fork();
    int error = grandchild < 0 ? errno : 0;
    if (grandchild == 0) {
      if (::chdir(folder.constData()) != 0) {
        [[maybe_unused]] const int ignored = ::chdir("/");
      }
      const int null = ::open("/dev/null", O_RDWR);
      if (null >= 0) {
        ::dup2(null, STDIN_FILENO);
      }
      ::execv(program.constData(), arguments.data());
      error = errno;
    }
    if (error != 0) {
      [[maybe_unused]] const ssize_t ignored = ::write(report[1], &error, sizeof error);
    }
    ::_exit(0);
  }
  int error = child < 0 ? errno : 0;
  ::close(report[1]);
  if (child > 0) {
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    // Ends at once when the program runs: its end of the pipe is closed then.
    ssize_t got = 0;
    while ((got = ::read(report[0], &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (got != ssize_t(sizeof error)) {
      error = 0;
    }
  }
  ::close(report[0]);
  return error;
}

}  // namespace

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
  const int error = StartDetached(opener, bytes, slash == 0 ? QByteArrayLiteral("/") : bytes.first(slash));
  if (error != 0) {
    return {OpenOutcome::Code::Failed, QString::fromLocal8Bit(std::strerror(error))};
  }
  return {};
}

}  // namespace trevane
