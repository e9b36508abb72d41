#include "tests/engine/providers/local/linux/NativeHelpers.h"

#include "base/RunTimeError.h"

#include <cstdlib>

#include <grp.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane::test {
namespace {

constexpr int kExitOfFailure = 3;

// Follows a child from one stop at a system call to the next until it ends, and counts the stops. The child
// is killed when `atStop` returns false.
ChildEnd Trace(const std::function<void()>& work, int& stops, const std::function<bool(int, pid_t)>& atStop) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
      ::_exit(kExitOfFailure + 1);
    }
    ::raise(SIGSTOP);
    try {
      work();
    } catch (const RunTimeError&) {
      ::_exit(kExitOfFailure);
    }
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFSTOPPED(status)) {
    return ChildEnd::CannotTrace;
  }
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  for (;;) {
    ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status)) {
      return WEXITSTATUS(status) == 0 ? ChildEnd::Finished : ChildEnd::Failed;
    }
    if (WIFSIGNALED(status)) {
      return ChildEnd::Failed;
    }
    if (!atStop(++stops, child)) {
      ::kill(child, SIGKILL);
      ::waitpid(child, &status, 0);
      return ChildEnd::Killed;
    }
  }
}

}  // namespace

ChildEnd RunKilledAt(int call, const std::function<void()>& work) {
  int stops = 0;
  return Trace(work, stops, [call](int stop, pid_t) { return stop < call; });
}

ChildEnd RunInterruptedAt(int call, const std::function<void()>& work,
                          const std::function<void()>& interrupt) {
  int stops = 0;
  return Trace(work, stops, [&](int stop, pid_t) {
    if (stop == call) {
      interrupt();
    }
    return true;
  });
}

int CountSystemCalls(const std::function<void()>& work) {
  int nothing = 0;
  int all = 0;
  const auto goOn = [](int, pid_t) { return true; };
  if (Trace([] {}, nothing, goOn) != ChildEnd::Finished || Trace(work, all, goOn) != ChildEnd::Finished) {
    return -1;
  }
  return (all - nothing) / 2;
}

std::vector<long> SystemCallsOf(const std::function<void()>& work) {
  std::vector<long> numbers;
  int stops = 0;
  const ChildEnd end = Trace(work, stops, [&](int, pid_t child) {
    __ptrace_syscall_info info{};
    if (::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) > 0 &&
        info.op == PTRACE_SYSCALL_INFO_ENTRY) {
      numbers.push_back(static_cast<long>(info.entry.nr));
    }
    return true;
  });
  return end == ChildEnd::Finished ? numbers : std::vector<long>();
}

qint32 ErrorAsNobody(const std::function<void()>& work) {
  int ends[2] = {-1, -1};
  if (::pipe(ends) != 0) {
    std::abort();
  }
  const pid_t child = ::fork();
  if (child == 0) {
    qint32 number = 0;
    constexpr uid_t kNobody = 65534;
    if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) {
      number = -1;
    } else {
      try {
        work();
      } catch (const RunTimeError& failure) {
        number = failure.Number();
      }
    }
    ::_exit(::write(ends[1], &number, sizeof number) == sizeof number ? 0 : 1);
  }
  ::close(ends[1]);
  qint32 number = -1;
  if (::read(ends[0], &number, sizeof number) != sizeof number) {
    number = -1;
  }
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return number;
}

}  // namespace trevane::test
