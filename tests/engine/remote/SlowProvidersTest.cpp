#include "engine/model/IxoController.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoFile.h"
#include "engine/model/IxoFiles.h"
#include "engine/remote/CallControl.h"
#include "engine/substitute/SubstituteWorkspace.h"
#include "tests/engine/remote/RemoteWorld.h"
#include "tests/support/ScriptedCells.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

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

TEST(SlowProvidersTest, TheConnectionsOfOneControllerShareWhatTheirOpenerHolds) {
  RemoteWorld world;
  // Such as a password that was typed: by controller.
  std::vector<std::weak_ptr<int>> held;
  std::mutex mutex;
  std::vector<const int*> used;
  Provider provider = world.server->AsProvider(kSlow);
  provider.newOpener = [&]() -> Provider::Opener {
    auto own = std::make_shared<int>();
    held.push_back(own);
    return [&, own](const FileSystemRequest& request) {
      const std::lock_guard lock(mutex);
      used.push_back(own.get());
      return world.server->Open(request.control);
    };
  };
  SubstituteWorkspace workspace({provider}, &world.context);
  const auto open = [&](const QString& name) {
    return workspace.AddController(name, kSlow, QString(), QString())->OpenFile(QString(), QString());
  };
  world.memory->AddFile(QStringLiteral("f"), "x");
  const auto first = open(QStringLiteral("R1"));
  const auto second = open(QStringLiteral("R2"));
  ASSERT_EQ(held.size(), 2U);
  world.server->DropAt(1);
  EXPECT_EQ(first->List().size(), 1U) << "over a new connection";
  ASSERT_EQ(used.size(), 3U);
  EXPECT_EQ(used[2], used[0]);
  EXPECT_NE(used[1], used[0]);
}

TEST(SlowProvidersTest, NothingOfARemovedControllerIsHeldAnyMore) {
  RemoteWorld world;
  std::weak_ptr<int> held;
  Provider provider = world.server->AsProvider(kSlow);
  provider.newOpener = [&]() -> Provider::Opener {
    auto own = std::make_shared<int>();
    held = own;
    return [&world, own](const FileSystemRequest& request) { return world.server->Open(request.control); };
  };
  SubstituteWorkspace workspace({provider}, &world.context);
  (void)workspace.AddController(QStringLiteral("R1"), kSlow, QString(), QString());
  EXPECT_FALSE(held.expired());
  workspace.Controllers()->Remove(QStringLiteral("R1"));
  ASSERT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
  EXPECT_TRUE(held.expired());
}

TEST(SlowProvidersTest, ConnectingCanBeCancelled) {
  for (const Hearing hearing : {Hearing::ObeysCancel, Hearing::Deaf}) {
    SlowWorld world;
    world.server->HangAtOpening(hearing);
    world.waiter.SetTurn([&](RunningCall& call) {
      if (!call.IsCancelled()) {
        if (!world.server->WaitUntilHanging(call)) {
          return false;
        }
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
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
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

/// Controllers that are opened together.
struct ManyWorld : RemoteWorld {
  ~ManyWorld() {
    cells->ReleaseAll();
    EXPECT_TRUE(context.controllers->StopAll(std::chrono::seconds(20)));
    EXPECT_EQ(cells->LiveConnections(), 0);
  }

  static QString Name(int number) { return QStringLiteral("R%1").arg(number, 2, 10, QLatin1Char('0')); }
  static std::vector<ControllerRequest> Requests(int count) {
    std::vector<ControllerRequest> requests;
    requests.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
      requests.push_back({Name(i), kSlow, Name(i), {}});
    }
    return requests;
  }

  std::shared_ptr<ScriptedCells> cells = std::make_shared<ScriptedCells>();
  int quickOpenings = 0;
  SubstituteWorkspace workspace{{cells->AsProvider(kSlow),
                                 {QStringLiteral("Quick"),
                                  [this](const FileSystemRequest&) {
                                    ++quickOpenings;
                                    return std::make_shared<MemoryFileSystem>();
                                  }}},
                                &context};
};

TEST(SlowProvidersTest, ControllersAreOpenedEightAtOnceAndInOrder) {
  ManyWorld world;
  std::vector<ControllerRequest> requests = ManyWorld::Requests(20);
  requests[3].provider = QStringLiteral("Quick");
  requests[5].provider = QStringLiteral("Unknown");
  for (int i = 0; i < 20; ++i) {
    world.cells->At(ManyWorld::Name(i)).HangAtOpening(Hearing::ObeysCancel);
  }
  QStringList first;
  world.waiter.SetTurn([&](RunningCall&) {
    if (first.isEmpty()) {
      for (const int i : {0, 1, 2, 4, 6, 7, 8, 9}) {
        world.cells->At(ManyWorld::Name(i)).WaitUntilHanging();
      }
      first = world.cells->Asked();
    }
    world.cells->ReleaseAll();
    return false;
  });
  const auto opening = world.workspace.OpenControllers(requests);
  EXPECT_TRUE(world.cells->Asked().isEmpty());
  qint32 before = 0;
  for (size_t i = 0; i < requests.size(); ++i) {
    if (i == 5) {
      EXPECT_EQ(FailureOf([&] { (void)opening->Take(i); }).Number(), error::kInvalidParameter);
      continue;
    }
    const auto controller = opening->Take(i);
    EXPECT_EQ(controller->Name(), requests[i].name);
    EXPECT_GT(controller->Index(), before);
    before = controller->Index();
    EXPECT_EQ(world.quickOpenings, i < 3 ? 0 : 1);
  }
  EXPECT_EQ(first, (QStringList{QStringLiteral("R00"), QStringLiteral("R01"), QStringLiteral("R02"),
                                QStringLiteral("R04"), QStringLiteral("R06"), QStringLiteral("R07"),
                                QStringLiteral("R08"), QStringLiteral("R09")}));
  EXPECT_EQ(world.cells->Asked().size(), 18);
}

TEST(SlowProvidersTest, WhatOneOfManyTellsIsWaitedFor) {
  ManyWorld world;
  std::atomic<bool> wasSeen = false;
  Provider talking{QStringLiteral("Talking"), {}, true};
  talking.open = [&wasSeen](const FileSystemRequest& request) {
    request.control->Tell(QStringLiteral("Busy"));
    while (!wasSeen && !request.control->IsCancelled()) {
      std::this_thread::yield();
    }
    return std::make_shared<MemoryFileSystem>();
  };
  SubstituteWorkspace workspace{{talking}, &world.context};
  world.waiter.SetTurn([&](RunningCall& call) {
    wasSeen = wasSeen || call.Told() == QStringLiteral("Busy");
    // Nobody wakes the window when a worker tells something.
    call.Queue().Posting()->Wake();
    return false;
  });
  const auto opening =
      workspace.OpenControllers({{QStringLiteral("Cell4"), talking.name, QStringLiteral("cell4"), {}}});
  EXPECT_EQ(opening->Take(0)->Name(), QStringLiteral("Cell4"));
  EXPECT_TRUE(wasSeen);
}

TEST(SlowProvidersTest, CancelEndsAllThatAreNotOpenYet) {
  for (const Hearing hearing : {Hearing::ObeysCancel, Hearing::Deaf}) {
    ManyWorld world;
    // The ninth begins when the eighth is open, since all others hang.
    for (const int i : {0, 1, 2, 3, 4, 5, 6, 8}) {
      world.cells->At(ManyWorld::Name(i)).HangAtOpening(hearing);
    }
    world.waiter.SetTurn([&](RunningCall& call) {
      if (world.cells->HangingConnections() == 8) {
        call.Cancel();
      }
      // Nobody wakes the window when a call begins to hang.
      call.Queue().Posting()->Wake();
      return false;
    });
    const auto opening = world.workspace.OpenControllers(ManyWorld::Requests(12));
    for (size_t i = 0; i < 12; ++i) {
      if (i == 7) {
        EXPECT_EQ(opening->Take(i)->Name(), ManyWorld::Name(7));
      } else {
        EXPECT_EQ(FailureOf([&] { (void)opening->Take(i); }).Number(), error::kCancelled);
      }
    }
    EXPECT_EQ(world.waiter.Waits(), 1);
    EXPECT_EQ(world.waiter.Now(), 0) << "nobody waits for those that are deaf";
    EXPECT_EQ(world.cells->Asked().size(), 9);
  }
}

TEST(SlowProvidersTest, SilentOnesAreGivenUpTogether) {
  ManyWorld world;
  for (const int i : {0, 1, 2, 4, 5, 6, 7, 8}) {
    world.cells->At(ManyWorld::Name(i)).HangAtOpening(i == 1 ? Hearing::Deaf : Hearing::ObeysCancel);
  }
  bool allHang = false;
  world.waiter.SetTurn([&](RunningCall& call) {
    call.Queue().Wake();
    // The ninth begins when the fourth is open.
    allHang = allHang || world.cells->At(ManyWorld::Name(8)).IsHanging();
    return allHang;
  });
  const auto opening = world.workspace.OpenControllers(ManyWorld::Requests(9));
  for (int i = 0; i < 9; ++i) {
    const RunTimeError failure = FailureOf([&] { (void)opening->Take(static_cast<size_t>(i)); });
    EXPECT_EQ(failure.Number(), i == 3 ? 0 : error::kTimeOut);
    EXPECT_EQ(failure.Description().contains(ManyWorld::Name(i)), i != 3);
  }
  EXPECT_LE(world.waiter.Now(), RunningCall::kLongestSilence + RunningCall::kLongestEnding + 2 * 100);
}

TEST(SlowProvidersTest, RootsAreLookedForSideBySide) {
  ManyWorld world;
  std::vector<ControllerRequest> requests = ManyWorld::Requests(3);
  for (int i = 0; i < 3; ++i) {
    world.cells->FilesAt(ManyWorld::Name(i)).AddFolder(QStringLiteral("first\\second"));
    world.cells->At(ManyWorld::Name(i)).HangAt(1, Hearing::ObeysCancel);
    requests[static_cast<size_t>(i)].root = QStringLiteral("/first/second/");
  }
  requests[2].root = QStringLiteral("none");
  bool released = false;
  world.waiter.SetTurn([&](RunningCall&) {
    for (int i = 0; i < 3 && !released; ++i) {
      world.cells->At(ManyWorld::Name(i)).WaitUntilHanging();
    }
    released = true;
    world.cells->ReleaseAll();
    return false;
  });
  const auto opening = world.workspace.OpenControllers(requests);
  for (int i = 0; i < 3; ++i) {
    const auto controller = opening->Take(static_cast<size_t>(i));
    const RunTimeError failure =
        FailureOf([&] { (void)controller->OpenFile(requests[static_cast<size_t>(i)].root, QString()); });
    EXPECT_EQ(failure.Number(), i == 2 ? error::kNotFound : 0);
    EXPECT_EQ(world.cells->At(ManyWorld::Name(i)).RoundTrips(), 1);
  }
}

TEST(SlowProvidersTest, OnesThatNobodyTakesAreThrownAway) {
  ManyWorld world;
  world.cells->At(ManyWorld::Name(1)).HangAtOpening(Hearing::Deaf);
  auto opening = world.workspace.OpenControllers(ManyWorld::Requests(3));
  EXPECT_EQ(opening->Take(0)->Name(), ManyWorld::Name(0));
  world.cells->At(ManyWorld::Name(1)).WaitUntilHanging();
  opening.reset();
  EXPECT_EQ(world.waiter.Now(), 0);
  EXPECT_TRUE(world.cells->At(ManyWorld::Name(1)).IsHanging());
  EXPECT_NE(FailureOf([&] { (void)world.workspace.Controllers()->Item(ManyWorld::Name(2)); }).Number(), 0);
}

TEST(SlowProvidersTest, AControllerThatComesUpLateIsThrownAway) {
  SlowWorld world;
  world.server->HangAtOpening(Hearing::Deaf);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled()) {
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      call.Cancel();
    }
    return true;
  });
  EXPECT_EQ(FailureOf([&] { (void)world.Add(QStringLiteral("Robot")); }).Number(), error::kCancelled);
  EXPECT_LE(world.waiter.Now(), RunningCall::kLongestEnding + ScriptedWaiter::kTick);
  world.waiter.SetTurn({});
  EXPECT_EQ(world.Add(QStringLiteral("Robot"))->Name(), QStringLiteral("Robot"));
  world.server->Release();
  world.workspace.Controllers()->Remove(QStringLiteral("Robot"));
  ASSERT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
  EXPECT_EQ(world.server->Openings(), 2);
  EXPECT_EQ(world.server->LiveConnections(), 0);
  const auto ended = world.server->EndedOn();
  EXPECT_EQ(std::count(ended.begin(), ended.end(), std::this_thread::get_id()), 0);
}

TEST(SlowProvidersTest, RemovingAHangingControllerWaitsForNothing) {
  SlowWorld world;
  auto controller = world.Add(QStringLiteral("Robot"));
  world.server->HangAt(1, Hearing::Deaf);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!world.server->WaitUntilHanging(call)) {
      return false;
    }
    call.Cancel();
    return true;
  });
  EXPECT_EQ(FailureOf([&] { (void)controller->OpenFile(QStringLiteral("programs"), QString()); }).Number(),
            error::kCancelled);
  controller.reset();
  const qint64 now = world.waiter.Now();
  world.workspace.Controllers()->Remove(QStringLiteral("Robot"));
  EXPECT_TRUE(world.server->IsHanging());
  EXPECT_EQ(world.waiter.Now(), now);
  EXPECT_TRUE(world.server->EndedOn().empty());
}

}  // namespace
}  // namespace trevane::test
