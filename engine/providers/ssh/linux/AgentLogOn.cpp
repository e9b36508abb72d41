#include "engine/providers/ssh/AgentLogOn.h"

#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <ctime>

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace trevane {
namespace {

/// The library writes to an agent that may be gone, which ends the program where nobody looks away.
class WithoutPipeSignal final {
 public:
  WithoutPipeSignal() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals_, &old_);
  }
  ~WithoutPipeSignal() {
    const timespec none{};
    while (sigtimedwait(&signals_, nullptr, &none) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &old_, nullptr);
  }
  WithoutPipeSignal(const WithoutPipeSignal&) = delete;
  WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

 private:
  sigset_t signals_{};
  sigset_t old_{};
};

int ConnectAgent(const QString& agent) {
  const QByteArray path = QFile::encodeName(agent);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.isEmpty() || static_cast<std::size_t>(path.size()) >= sizeof address.sun_path) {
    return -1;
  }
  std::copy(path.begin(), path.end(), address.sun_path);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

}  // namespace

int LogOnWithAgent(SshSession& session, const QString& agent) {
  const int fd = ConnectAgent(agent);
  if (fd < 0) {
    return SSH_AUTH_DENIED;
  }
  const WithoutPipeSignal quiet;
  // The library waits for the agent itself, for as long as that likes, and closes the socket at its end.
  const net::Socket own = net::Duplicate(fd);
  const auto close = qScopeGuard([own] { net::Close(own); });
  ssh_set_agent_socket(session.Raw(), fd);
  const std::shared_ptr<void> cancel = session.Line().ShutdownOnCancel(own);
  const int answer =
      session.Run(SSH_AUTH_AGAIN, [&session] { return ssh_userauth_agent(session.Raw(), nullptr); });
  session.Line().RequireNotCancelled();
  return answer;
}

}  // namespace trevane
