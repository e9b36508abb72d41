#include "tests/fileops/TransferWorld.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

const QString kC = QStringLiteral("Workspace\\My Computer\\C:");

/// What transfers to a slow controller cost that keeps nothing in memory and overlaps nothing.
class TransferRoundTripTest : public testing::Test {
 protected:
  TransferRoundTripTest() {
    device_.memory->AddFolder(QStringLiteral("in"));
    device_.faulty = std::make_shared<FaultyFileSystem>(server_->Open());
    world_.Connect(QStringLiteral("Device"), device_);
  }

  /// Without listings.
  qsizetype Cost() {
    QStringList calls = server_->Calls();
    server_->ClearCalls();
    calls.removeIf([](const QString& call) { return call.startsWith(QStringLiteral("List ")); });
    calls_ = calls.join(QStringLiteral(", ")).toStdString();
    return calls.size();
  }

  TransferWorld world_;
  EngineWorld::Machine device_ = EngineWorld::MakeMachine({});
  std::shared_ptr<ScriptedServer> server_ = std::make_shared<ScriptedServer>(
      device_.memory, ScriptedOptions{.identities = ScriptedOptions::Identities::None});
  const QString into_ = QStringLiteral("Workspace\\Device\\in");
  std::string calls_;
};

TEST_F(TransferRoundTripTest, AFileOfAFolderCostsSixCalls) {
  for (int i = 0; i < 100; ++i) {
    world_.local.memory->AddFile(QStringLiteral("C:\\tree\\f%1").arg(i), QByteArray(4096, 'x'));
  }
  world_.SelectFolder(kC, QStringLiteral("tree"));
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Copy(into_));
  EXPECT_LE(Cost(), 600) << calls_.substr(0, 2000);
}

TEST_F(TransferRoundTripTest, AFileOfTheSetCostsSixCalls) {
  for (int i = 0; i < 100; ++i) {
    const QString name = QStringLiteral("f%1").arg(i);
    world_.local.memory->AddFile(QStringLiteral("C:\\set\\") + name, QByteArray(4096, 'x'));
    world_.Select(kC + QStringLiteral("\\set"), name);
  }
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Copy(into_));
  EXPECT_LE(Cost(), 600) << calls_.substr(0, 2000);
}

}  // namespace
}  // namespace trevane::test
