#include "tests/support/ftp/FtpTestServer.h"

#include "tests/support/ftp/FtpTestData.h"
#include "tests/support/ftp/FtpTestSession.h"
#include "tests/support/ftp/FtpTestSocket.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test {
namespace {

void Raise(int event) {
  const quint64 one = 1;
  (void)!::write(event, &one, sizeof one);
}

/// A client that is gone ends a write with an error, not the whole program.
void BlockBrokenPipe() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

struct FtpTestServer::Client {
  /// Can be read when its line is to end.
  int stop = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  std::atomic<bool> hasEnded = false;
  std::thread thread = {};
  FtpTestSocket socket = {};
};

FtpTestServer::FtpTestServer(FtpVices vices)
    : script_(std::move(vices)),
      listening_(ListenAtLoopback(port_)),
      stop_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      contexts_(std::make_shared<FtpTestContexts>()) {
  accepting_ = std::thread([this] { Accept(); });
}

FtpTestServer::~FtpTestServer() {
  Raise(stop_);
  accepting_.join();
  DropAll();
  Collect(true);
  ::close(listening_);
  ::close(stop_);
}

void FtpTestServer::Accept() {
  BlockBrokenPipe();
  for (;;) {
    std::array<pollfd, 2> fds{{{listening_, POLLIN, 0}, {stop_, POLLIN, 0}}};
    if (::poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) {
      return;
    }
    if (fds[1].revents != 0) {
      return;
    }
    const int line = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    if (line < 0) {
      continue;
    }
    Collect(false);
    auto client = std::make_unique<Client>();
    client->socket = FtpTestSocket(line, client->stop);
    int place = 0;
    script_.Count([&](FtpTestCounts& counts) {
      ++counts.connections;
      place = ++counts.clients;
    });
    Client& mine = *client;
    const std::lock_guard lock(mutex_);
    clients_.push_back(std::move(client));
    mine.thread = std::thread([this, &mine, place] { Serve(mine, place); });
  }
}

void FtpTestServer::Serve(Client& client, int place) {
  BlockBrokenPipe();
  {
    FtpTestSession session(script_, tree_, Contexts(), std::move(client.socket), client.stop, place);
    session.Run();
  }
  client.hasEnded = true;
}

void FtpTestServer::Collect(bool all) {
  std::vector<std::unique_ptr<Client>> ended;
  {
    const std::lock_guard lock(mutex_);
    for (auto client = clients_.begin(); client != clients_.end();) {
      if (all || (*client)->hasEnded) {
        ended.push_back(std::move(*client));
        client = clients_.erase(client);
      } else {
        ++client;
      }
    }
  }
  for (const std::unique_ptr<Client>& client : ended) {
    client->thread.join();
    ::close(client->stop);
  }
}

std::shared_ptr<FtpTestContexts> FtpTestServer::Contexts() const {
  const std::lock_guard lock(mutex_);
  return contexts_;
}

QByteArray FtpTestServer::Fingerprint() const {
  return Contexts()->keys.Fingerprint();
}

QByteArray FtpTestServer::CertificatePem() const {
  return Contexts()->keys.CertificatePem();
}

void FtpTestServer::ChangeCertificate() {
  auto contexts = std::make_shared<FtpTestContexts>();
  const std::lock_guard lock(mutex_);
  contexts_ = std::move(contexts);
}

void FtpTestServer::DropAll() {
  const std::lock_guard lock(mutex_);
  for (const std::unique_ptr<Client>& client : clients_) {
    Raise(client->stop);
  }
}

}  // namespace trevane::test
