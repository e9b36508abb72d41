#include "engine/model/IxoController.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoFiles.h"
#include "engine/substitute/SubstituteWorkspace.h"
#include "tests/engine/remote/RemoteWorld.h"

#include <algorithm>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

const QString kSlow = QStringLiteral("Slow");

/// A controller that is opened through the engine.
struct SlowWorld : RemoteWorld {
  SubstituteWorkspace workspace{
      {server->AsProvider(kSlow),
       {QStringLiteral("Quick"),
        [](const FileSystemRequest&) { return std::make_shared<MemoryFileSystem>(); }}},
      &context};

  std::shared_ptr<IxoController> Add(const QString& name) {
    return workspace.AddController(name, kSlow, QString(), QString());
  }
};

TEST(SlowProvidersTest, ConnectingRunsOnTheControllersThread) {
  SlowWorld world;
  const auto controller = world.Add(QStringLiteral("Robot"));
  EXPECT_EQ(controller->Name(), QStringLiteral("Robot"));
  EXPECT_NE(world.server->CalledOn().front(), std::this_thread::get_id());
}

TEST(SlowProvidersTest, ConnectingCanBeCancelled) {
  for (const Hearing hearing : {Hearing::ObeysCancel, Hearing::Deaf}) {
    SlowWorld world;
    world.server->HangAtOpening(hearing);
    world.waiter.SetTurn([&](RunningCall& call) {
      if (!call.IsCancelled()) {
        world.server->WaitUntilHanging();
        call.Cancel();
      }
      return hearing == Hearing::Deaf;
    });
    EXPECT_EQ(FailureOf([&] { (void)world.Add(QStringLiteral("Robot")); }).Number(), error::kCancelled);
    EXPECT_NE(FailureOf([&] { (void)world.workspace.Controllers()->Item(qint32{1}); }).Number(), 0);
  }
}

TEST(SlowProvidersTest, ASilentControllerIsNamedWhenConnecting) {
  SlowWorld world;
  world.server->HangAtOpening(Hearing::ObeysCancel);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled()) {
      world.server->WaitUntilHanging();
    }
    return !call.IsCancelled();
  });
  const RunTimeError failure = FailureOf([&] { (void)world.Add(QStringLiteral("Robot")); });
  EXPECT_EQ(failure.Number(), error::kTimeOut);
  EXPECT_EQ(failure.Description(), QStringLiteral("The controller Robot has not answered for 10 seconds"));
}

TEST(SlowProvidersTest, ARemovedControllerEndsOnItsThread) {
  SlowWorld world;
  (void)world.Add(QStringLiteral("Robot"));
  EXPECT_EQ(world.server->LiveConnections(), 1);
  const int waits = world.waiter.Waits();
  world.workspace.Controllers()->Remove(QStringLiteral("Robot"));
  EXPECT_EQ(world.waiter.Waits(), waits);
  ASSERT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
  EXPECT_EQ(world.server->LiveConnections(), 0);
  EXPECT_NE(world.server->EndedOn().front(), std::this_thread::get_id());
}

TEST(SlowProvidersTest, ControllersAreOpenedEightAtOnceAndInOrder) {
  SlowWorld world;
  std::vector<ControllerRequest> requests;
  for (int i = 0; i < 20; ++i) {
    requests.push_back({QStringLiteral("R%1").arg(i), i == 3 ? QStringLiteral("Quick") : kSlow, {}, {}});
  }
  requests[5].provider = QStringLiteral("Unknown");
  size_t most = 0;
  world.waiter.SetTurn([&](RunningCall& call) {
    const auto& parts = call.Parts();
    most = std::max<size_t>(
        most, static_cast<size_t>(std::count_if(parts.begin(), parts.end(),
                                                [](const auto& part) { return !part->IsOver(); })));
    return false;
  });
  const std::vector<ControllerResult> results = world.workspace.AddControllers(requests);
  EXPECT_EQ(world.waiter.Waits(), 1);
  EXPECT_LE(most, 8U);
  ASSERT_EQ(results.size(), 20U);
  qint32 before = 0;
  for (size_t i = 0; i < results.size(); ++i) {
    if (i == 5) {
      EXPECT_EQ(results[i].failure->Number(), error::kInvalidParameter);
      continue;
    }
    ASSERT_TRUE(results[i].controller);
    EXPECT_EQ(results[i].controller->Name(), QStringLiteral("R%1").arg(i));
    EXPECT_GT(results[i].controller->Index(), before);
    before = results[i].controller->Index();
  }
  EXPECT_EQ(world.server->Openings(), 18);
}

TEST(SlowProvidersTest, CancelEndsAllThatAreNotOpenYet) {
  SlowWorld world;
  std::vector<ControllerRequest> requests;
  for (int i = 0; i < 12; ++i) {
    requests.push_back({QStringLiteral("R%1").arg(i), kSlow, {}, {}});
  }
  world.server->HangAtOpening(Hearing::ObeysCancel);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled()) {
      world.server->WaitUntilHanging();
      call.Cancel();
    }
    return false;
  });
  const std::vector<ControllerResult> results = world.workspace.AddControllers(requests);
  ASSERT_EQ(results.size(), 12U);
  int failed = 0;
  for (const ControllerResult& result : results) {
    if (result.failure) {
      EXPECT_EQ(result.failure->Number(), error::kCancelled);
      ++failed;
    }
  }
  EXPECT_GE(failed, 1);
}

}  // namespace
}  // namespace trevane::test
