#include "platform/TerminationRequests.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace trevane {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

// A handler may do next to nothing: it writes a byte into a pipe that the event loop watches.
std::array<int, 2> pipeEnds{-1, -1};

extern "C" void TellEventLoop(int /*signal*/) {
  const char byte = 0;
  // A full pipe already holds a request.
  [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &byte, 1);
}

}  // namespace

TerminationRequests::TerminationRequests() {
  if (pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    return;
  }
  auto* notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [this] {
    std::array<char, 16> bytes{};
    while (read(pipeEnds[0], bytes.data(), bytes.size()) > 0) {
    }
    Q_EMIT Requested();
  });
  struct sigaction action {};
  action.sa_handler = TellEventLoop;
  action.sa_flags = SA_RESTART;
  for (const int signal : kSignals) {
    // A signal that was ignored at the start, as nohup does it, stays ignored.
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
      sigaction(signal, &action, nullptr);
    }
  }
}

TerminationRequests::~TerminationRequests() {
  for (const int signal : kSignals) {
    struct sigaction now {};
    if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler == TellEventLoop) {
      std::signal(signal, SIG_DFL);
    }
  }
  for (int& end : pipeEnds) {
    if (end >= 0) {
      close(end);
    }
    end = -1;
  }
}

}  // namespace trevane
