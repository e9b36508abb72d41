#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/remote/NestedCall.h"
#include "tests/engine/remote/RemoteWorld.h"

#include <algorithm>
#include <thread>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

TEST(RemoteFileSystemTest, CallsRunOnTheControllersThread) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("a\\f"), "content");
  const auto files = world.Connect();
  EXPECT_EQ(files->List(QStringLiteral("a")).size(), 1U);
  EXPECT_EQ(ReadFile(*files, QStringLiteral("a\\f")), QByteArray("content"));
  files->Rename(QStringLiteral("a\\f"), QStringLiteral("a\\g"), false);
  EXPECT_EQ(world.memory->Tree(), (QStringList{QStringLiteral("a\\"), QStringLiteral("a\\g=content")}));
  const std::vector<std::thread::id> threads = world.server->CalledOn();
  EXPECT_GT(threads.size(), 4U);
  for (const std::thread::id thread : threads) {
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(thread, threads.front());
  }
}

TEST(RemoteFileSystemTest, AnErrorOfTheFileSystemArrives) {
  RemoteWorld world;
  const auto files = world.Connect();
  const RunTimeError failure = FailureOf([&] { (void)files->Stat(QStringLiteral("a")); });
  EXPECT_EQ(failure.Number(), error::kNotFound);
  EXPECT_TRUE(failure.Description().endsWith(QStringLiteral(": a")));
}

TEST(RemoteFileSystemTest, CancelReachesTheWorkerInTheSameTurn) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!world.server->WaitUntilHanging(call)) {
      return false;
    }
    call.Cancel();
    return false;
  });
  const RunTimeError failure = FailureOf([&] { (void)files->List(QStringLiteral("a")); });
  EXPECT_EQ(failure.Number(), error::kCancelled);
  EXPECT_EQ(failure.Description(), QStringLiteral("Cancelled: a"));
  // No tick has passed, and the connection is still good.
  EXPECT_EQ(world.waiter.Now(), 0);
  EXPECT_FALSE(files->HasLostLine(QString()));
  world.waiter.SetTurn({});
  EXPECT_EQ(files->List(QString()).size(), 0U);
  EXPECT_EQ(world.server->Openings(), 1);
}

TEST(RemoteFileSystemTest, AfterACancelThatClosedTheLineAChangeSucceeds) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.server->HangAt(1, Hearing::ClosesTheLine);
  world.waiter.SetTurn([&](RunningCall& call) {
    // The Cancel itself makes a turn.
    if (!call.IsCancelled()) {
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      call.Cancel();
    }
    return false;
  });
  EXPECT_EQ(FailureOf([&] { (void)files->List(QString()); }).Number(), error::kCancelled);
  world.waiter.SetTurn({});
  files->CreateFolder(QStringLiteral("a"));
  EXPECT_EQ(world.server->Openings(), 2);
}

TEST(RemoteFileSystemTest, ADeafWorkerIsAbandonedAfterTwoSeconds) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.server->HangAt(1, Hearing::Deaf);
  qint64 cancelledAt = -1;
  world.waiter.SetTurn([&](RunningCall& call) {
    if (cancelledAt < 0) {
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      call.Cancel();
      cancelledAt = world.waiter.Now();
    }
    return true;
  });
  const RunTimeError failure = FailureOf([&] { files->CreateFolder(QStringLiteral("a")); });
  EXPECT_EQ(failure.Number(), error::kCancelled);
  // The first tick after Cancel starts the limit.
  EXPECT_EQ(world.waiter.Now() - cancelledAt, 2100);
  EXPECT_TRUE(files->HasLostLine(QString()));
  world.waiter.SetTurn({});
  // The next call has a connection and a thread of its own while the old one still hangs.
  EXPECT_EQ(files->List(QString()).size(), 0U);
  EXPECT_EQ(world.server->Openings(), 2);
}

TEST(RemoteFileSystemTest, AfterASilenceTheNextOneIsNotRepeated) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled()) {
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      return true;
    }
    return false;
  });
  world.server->HangAt(1, Hearing::ObeysCancel);
  EXPECT_EQ(FailureOf([&] { files->CreateFolder(QStringLiteral("a")); }).Number(), error::kTimeOut);
  world.server->HangAt(1, Hearing::ObeysCancel);
  EXPECT_EQ(FailureOf([&] { (void)files->List(QString()); }).Number(), error::kTimeOut);
  EXPECT_EQ(world.server->Calls(), QStringList{QStringLiteral("List ")});
  EXPECT_EQ(world.server->Openings(), 2);
  // Once something was heard, a silence is repeated again.
  world.waiter.SetTurn({});
  EXPECT_TRUE(files->List(QString()).empty());
  const int next = world.waiter.Waits() + 1;
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled() && world.waiter.Waits() == next) {
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      return true;
    }
    return false;
  });
  world.server->HangAt(1, Hearing::ObeysCancel);
  EXPECT_TRUE(files->List(QString()).empty());
  EXPECT_EQ(world.server->RoundTrips(), 2);
}

TEST(RemoteFileSystemTest, SilenceOfTenSecondsNamesTheController) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled()) {
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      return true;
    }
    return false;
  });
  const RunTimeError failure = FailureOf([&] { files->CreateFolder(QStringLiteral("a")); });
  EXPECT_EQ(failure.Number(), error::kTimeOut);
  EXPECT_EQ(failure.Description(), QStringLiteral("The controller Robot has not answered for 10 seconds: a"));
  EXPECT_EQ(world.waiter.Now(), 10'000);
  EXPECT_EQ(world.server->Calls(), QStringList(QStringLiteral("CreateFolder a")));
  EXPECT_TRUE(files->HasLostLine(QString()));
}

TEST(RemoteFileSystemTest, ACallForTheTopNamesTheController) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("a\\f"));
  const auto files = world.Connect();
  QStringList told;
  world.waiter.SetTurn([&](RunningCall& call) {
    if (world.server->WaitUntilHanging(call)) {
      told.append(call.What());
      world.server->Release();
    }
    return false;
  });
  for (const QString& folder : {QString(), QStringLiteral("a")}) {
    world.server->ClearCalls();
    world.server->HangAt(1, Hearing::ObeysCancel);
    static_cast<void>(files->List(folder));
  }
  EXPECT_EQ(told, (QStringList{QStringLiteral("Reading Robot"), QStringLiteral("Reading a")}));
}

TEST(RemoteFileSystemTest, ANestedCallIsRefused) {
  RemoteWorld world;
  const auto files = world.Connect();
  QStringList refused;
  const NestedCallHandler before =
      SetNestedCallHandler([&refused](const QString& what) { refused.append(what); });
  qint32 number = 0;
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.waiter.SetTurn([&](RunningCall&) {
    if (number == 0) {
      world.server->WaitUntilHanging();
      number = FailureOf([&] { (void)files->Find(QStringLiteral("a\\inner")); }).Number();
      world.server->Release();
    }
    return false;
  });
  EXPECT_EQ(files->List(QString()).size(), 0U);
  SetNestedCallHandler(before);
  EXPECT_EQ(number, providererror::kBusy);
  EXPECT_EQ(refused, QStringList(QStringLiteral("Reading inner")));
  EXPECT_EQ(world.server->Calls(), QStringList(QStringLiteral("List ")));
}

TEST(RemoteFileSystemTest, AReadingCallIsTriedOnceMoreWhenTheLineDied) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("f"), "x");
  const auto files = world.Connect();
  world.server->DropAt(1);
  EXPECT_EQ(files->List(QString()).size(), 1U);
  EXPECT_EQ(world.server->Openings(), 2);
  EXPECT_EQ(world.server->Calls(), (QStringList{QStringLiteral("List "), QStringLiteral("List ")}));
}

TEST(RemoteFileSystemTest, AWritingCallIsNeverRepeated) {
  for (const auto drop : {ScriptedServer::Drop::BeforeTheCall, ScriptedServer::Drop::AfterTheCall}) {
    RemoteWorld world;
    const auto files = world.Connect();
    world.server->DropAt(1, drop);
    EXPECT_EQ(FailureOf([&] { files->CreateFolder(QStringLiteral("a")); }).Number(), error::kWin32Error + 64);
    EXPECT_EQ(world.server->RoundTrips(), 1);
    EXPECT_EQ(world.server->Openings(), 1);
    EXPECT_EQ(files->List(QString()).size(), drop == ScriptedServer::Drop::AfterTheCall ? 1U : 0U);
    EXPECT_EQ(world.server->Openings(), 2);
  }
}

TEST(RemoteFileSystemTest, ALineIsLostUntilTheNextCall) {
  RemoteWorld world;
  const auto files = world.Connect();
  EXPECT_FALSE(files->HasLostLine(QString()));
  world.server->DropAt(1);
  EXPECT_NE(FailureOf([&] { files->CreateFolder(QStringLiteral("a")); }).Number(), 0);
  EXPECT_TRUE(files->HasLostLine(QString()));
  EXPECT_EQ(world.server->Openings(), 1) << "nothing is asked";
  EXPECT_EQ(files->List(QString()).size(), 0U);
  EXPECT_FALSE(files->HasLostLine(QString()));
}

TEST(RemoteFileSystemTest, AHeldFolderTellsTheStepOfItsDates) {
  RemoteWorld world({.dateStep = 2000});
  world.memory->AddFolder(QStringLiteral("a\\b"));
  const auto files = world.Connect();
  const auto held = files->Hold(QStringLiteral("a"));
  EXPECT_EQ(held->DateStep(), 2000);
  EXPECT_EQ(held->Enter(QStringLiteral("b"))->DateStep(), 2000);
}

TEST(RemoteFileSystemTest, AllEndsOnTheControllersThread) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("f"), QByteArray(10, 'x'));
  {
    const auto files = world.Connect();
    const auto source = files->OpenSource(QStringLiteral("f"));
    EXPECT_EQ(source->Read(4), QByteArray(4, 'x'));
    const auto sink = files->OpenSink(QStringLiteral("g"), {});
    sink->Write("abc");
  }
  ASSERT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
  const std::vector<std::thread::id> ended = world.server->EndedOn();
  ASSERT_EQ(ended.size(), 3U);
  for (const std::thread::id thread : ended) {
    EXPECT_EQ(thread, world.server->CalledOn().front());
  }
  EXPECT_EQ(world.memory->Tree(), QStringList(QStringLiteral("f=xxxxxxxxxx")));
}

TEST(RemoteFileSystemTest, ConnectsOnceWhereNothingAnswers) {
  RemoteWorld world;
  std::atomic<int> times = 0;
  RemoteConnection::Opening opening = world.Opening();
  opening.open = [&times](const FileSystemRequest&) -> std::shared_ptr<FileSystem> {
    ++times;
    throw RunTimeError(error::kTimeOut, QStringLiteral("Nothing answers"));
  };
  const RunTimeError failure = FailureOf([&] { RemoteFileSystem files(world.context, opening); });
  EXPECT_EQ(failure.Number(), error::kTimeOut);
  EXPECT_EQ(failure.Description(), QStringLiteral("Nothing answers"));
  EXPECT_EQ(times, 1);
}

}  // namespace
}  // namespace trevane::test
