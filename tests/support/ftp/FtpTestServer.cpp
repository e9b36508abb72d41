#include "tests/support/ftp/FtpTestServer.h"

#include "tests/support/ftp/FtpTestSession.h"
#include "tests/support/ftp/FtpTestSocket.h"

#include <array>
#include <utility>

namespace trevane::test {

struct FtpTestServer::Client {
  /// Can be read when its line is to end.
  sockets::Handle stop = sockets::MakeEvent();
  std::atomic<bool> hasEnded = false;
  std::thread thread = {};
  FtpTestSocket socket = {};
};

FtpTestServer::FtpTestServer(FtpVices vices)
    : script_(std::move(vices)),
      listening_(sockets::Listen(port_)),
      stop_(sockets::MakeEvent()),
      contexts_(std::make_shared<FtpTestContexts>()) {
  accepting_ = std::thread([this] { Accept(); });
}

FtpTestServer::~FtpTestServer() {
  sockets::Raise(stop_);
  accepting_.join();
  DropAll();
  Collect(true);
  sockets::Close(listening_);
  sockets::Close(stop_);
}

void FtpTestServer::Accept() {
  sockets::BlockBrokenPipe();
  for (;;) {
    using sockets::Until;
    const std::array<sockets::Waited, 2> all{{{stop_, Until::Readable}, {listening_, Until::Readable}}};
    if (sockets::Wait(all, -1) != 1) {
      return;
    }
    const sockets::Handle line = sockets::Accept(listening_);
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
  sockets::BlockBrokenPipe();
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
    sockets::Close(client->stop);
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
    sockets::Raise(client->stop);
  }
}

}  // namespace trevane::test
