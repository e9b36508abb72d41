#include "engine/providers/ssh/OpenSftp.h"
#include "engine/remote/RemoteContext.h"
#include "engine/remote/RemoteFileSystem.h"
#include "platform/SecretStore.h"
#include "tests/engine/providers/ssh/SshdWorld.h"
#include "tests/support/SshTestServer.h"
#include "tests/support/TestFiles.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace trevane::test {
namespace {

/// A store that is used on one thread alone.
class OneThreadsStore final : public SecretStore {
 public:
  [[nodiscard]] Condition Look() override {
    Visit();
    return {true};
  }
  [[nodiscard]] std::optional<Secret> Find(const QString& /*account*/) override {
    Visit();
    return kept_;
  }
  void Keep(const QString& /*account*/, const Secret& secret) override {
    Visit();
    kept_ = secret;
  }
  void Forget(const QString& /*account*/) override {
    Visit();
    kept_.reset();
  }
  [[nodiscard]] int Visits() const { return visits_; }

 private:
  void Visit() {
    ++visits_;
    EXPECT_EQ(std::this_thread::get_id(), own_);
  }

  const std::thread::id own_ = std::this_thread::get_id();
  std::optional<Secret> kept_;
  int visits_ = 0;
};

/// A controller over SSH whose calls run on a thread of its own, as the program has it.
class RemoteSftpTest : public SshdWorld {
 protected:
  ~RemoteSftpTest() override { EXPECT_TRUE(context_.controllers->StopAll(std::chrono::seconds(20))); }

  [[nodiscard]] std::unique_ptr<RemoteFileSystem> Connect(const SshTestServer& server) {
    SshPlace place;
    place.knownHosts = folder_.filePath(QStringLiteral("known_hosts"));
    place.userName = QStringLiteral("joe");
    place.store = &store_;
    return std::make_unique<RemoteFileSystem>(
        context_, RemoteConnection::Opening{
                      QStringLiteral("Cell 4"),
                      [place, secrets = std::make_shared<SecretMemory>()](const FileSystemRequest& request) {
                        return OpenSftp(request, place, secrets);
                      },
                      {server.Machine(), QStringLiteral("Timeout=5")}});
  }
  [[nodiscard]] QString Top() const { return folder_.path().sliced(1).replace(u'/', u'\\'); }

  QTemporaryDir folder_;
  OneThreadsStore store_;
  WindowQueue queue_;
  BlockingWaiter waiter_;
  RemoteContext context_{queue_, waiter_, &prompts_};
};

TEST_F(RemoteSftpTest, AsksOnTheWindowsThreadAndConnectsAgainWithoutAQuestion) {
  SshTestServer server({.password = "swordfish"});
  prompts_.onQuestion = [own = std::this_thread::get_id()](const AskedQuestion&) {
    EXPECT_EQ(std::this_thread::get_id(), own);
  };
  prompts_.ExpectChoice(0);
  prompts_.ExpectSecret(QString(), QStringLiteral("wrong"));
  prompts_.ExpectSecret(QString(), QStringLiteral("swordfish"));
  WriteFile(folder_.filePath(QStringLiteral("file")), "content");
  const std::unique_ptr<RemoteFileSystem> files = Connect(server);
  EXPECT_TRUE(files->Find(Top() + QStringLiteral("\\file")).has_value());
  EXPECT_EQ(prompts_.Asked().size(), 3U);
  EXPECT_GT(store_.Visits(), 0);

  // The line dies: the host key is known by now, and what was typed is still in memory.
  server.DropAll();
  EXPECT_TRUE(files->Find(Top() + QStringLiteral("\\file")).has_value());
  EXPECT_EQ(prompts_.Asked().size(), 3U);
  EXPECT_EQ(server.Sessions(), 2);
}

TEST_F(RemoteSftpTest, ConnectsToNothingWhereTheUserGivesNoPassword) {
  const SshTestServer server({.password = "swordfish"});
  prompts_.ExpectChoice(0);
  prompts_.ExpectCancelledSecret(QString());
  try {
    static_cast<void>(Connect(server));
    FAIL() << "it has connected";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kCancelled);
  }
  EXPECT_EQ(server.Sessions(), 1);
}

}  // namespace
}  // namespace trevane::test
