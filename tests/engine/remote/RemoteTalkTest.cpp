#include "engine/files/ProviderError.h"
#include "engine/remote/ConnectionControl.h"
#include "engine/remote/Delivery.h"
#include "tests/engine/remote/RemoteWorld.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

TEST(RemoteTalkTest, BatchesArriveInOrderOnTheWindowsThread) {
  RemoteWorld world;
  for (int i = 0; i < 300; ++i) {
    world.memory->AddFile(QStringLiteral("many\\%1").arg(i, 3, 10, QLatin1Char('0')));
  }
  const auto files = world.Connect();
  const std::thread::id window = std::this_thread::get_id();
  QStringList names;
  int batches = 0;
  files->ListInBatches(QStringLiteral("many"), [&](Listing&& batch) {
    EXPECT_EQ(std::this_thread::get_id(), window);
    ++batches;
    for (const FileEntry& entry : batch) {
      names.append(entry.name);
    }
    return true;
  });
  QStringList expected;
  for (const FileEntry& entry : world.memory->List(QStringLiteral("many"))) {
    expected.append(entry.name);
  }
  EXPECT_EQ(names, expected);
  EXPECT_EQ(batches, 5);
}

TEST(RemoteTalkTest, TheReceiverEndsAListing) {
  RemoteWorld world;
  for (int i = 0; i < 300; ++i) {
    world.memory->AddFile(QStringLiteral("many\\%1").arg(i));
  }
  const auto files = world.Connect();
  int batches = 0;
  files->ListInBatches(QStringLiteral("many"), [&batches](Listing&&) {
    ++batches;
    return false;
  });
  EXPECT_EQ(batches, 1);
  EXPECT_EQ(files->List(QStringLiteral("many")).size(), 300U);
}

TEST(RemoteTalkTest, AnObserverRunsOnTheWindowsThreadAndCancels) {
  RemoteWorld world;
  for (int i = 0; i < 3; ++i) {
    world.memory->AddFile(QStringLiteral("d\\%1").arg(i));
  }
  const auto files = world.Connect();
  const std::thread::id window = std::this_thread::get_id();
  // The third removal hangs until the observer has ended the call.
  world.server->HangAt(4, Hearing::ObeysCancel);
  int seen = 0;
  const RunTimeError failure = FailureOf([&] {
    files->Remove(QStringLiteral("d"), [&](const ItemProgress&) {
      EXPECT_EQ(std::this_thread::get_id(), window);
      world.server->WaitUntilHanging();
      ++seen;
      return false;
    });
  });
  EXPECT_EQ(failure.Number(), error::kCancelled);
  EXPECT_EQ(seen, 1);
  EXPECT_TRUE(world.memory->Exists(QStringLiteral("d")));
}

TEST(RemoteTalkTest, AQuestionRunsOnTheWindowsThread) {
  RemoteWorld world;
  const auto files = world.Connect();
  std::thread::id asked;
  world.server->AskAt(1, [&asked](UserPrompts&) { asked = std::this_thread::get_id(); });
  (void)files->List(QString());
  EXPECT_EQ(asked, std::this_thread::get_id());
  EXPECT_EQ(world.server->Answered(), true);
}

TEST(RemoteTalkTest, AllThatStandInTheQueueWaitForWhatIsTold) {
  RemoteWorld world;
  const auto control = std::make_shared<ConnectionControl>(world.context);
  const QString controller = QStringLiteral("cell4");
  const auto first = std::make_shared<RunningCall>(world.queue, controller, QStringLiteral("Connecting"));
  const auto second = std::make_shared<RunningCall>(world.queue, controller, QStringLiteral("Reading a"));
  control->Add(first);
  control->Add(second);
  control->Begin(first);
  control->Tell(QStringLiteral("Busy"));
  EXPECT_EQ(first->What(), QStringLiteral("Busy"));
  EXPECT_EQ(second->What(), QStringLiteral("Busy"));
  control->Tell(QString());
  EXPECT_EQ(first->What(), QStringLiteral("Connecting"));
  EXPECT_EQ(second->What(), QStringLiteral("Reading a"));
}

TEST(RemoteTalkTest, NoSilenceIsCountedWhileAQuestionStands) {
  RemoteWorld world;
  const auto files = world.Connect();
  RunningCall* running = nullptr;
  world.server->AskAt(1, [&](UserPrompts&) {
    // A minute passes.
    ASSERT_NE(running, nullptr);
    for (qint64 now = 0; now < 60'000; now += 100) {
      running->Advance(now);
    }
    EXPECT_FALSE(running->IsCancelled());
  });
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.waiter.SetTurn([&](RunningCall& call) {
    if (running == nullptr) {
      running = &call;
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      world.server->Release();
    }
    return false;
  });
  (void)files->List(QString());
  EXPECT_EQ(world.server->Answered(), true);
}

TEST(RemoteTalkTest, TwoQuestionsStandOneAfterTheOther) {
  RemoteWorld one;
  RemoteWorld two;
  one.memory->AddFile(QStringLiteral("f"), QByteArray(30, 'x'));
  const auto first = one.Connect();
  RemoteFileSystem second(one.context, two.Opening());
  const auto source = first->OpenSource(QStringLiteral("f"));
  QStringList steps;
  int standing = 0;
  const auto ask = [&](const QString& name) {
    return [&steps, &standing, &one, name](UserPrompts&) {
      EXPECT_EQ(standing++, 0);
      steps.append(name);
      // As a question's own event loop does.
      one.queue.RunPosted();
      --standing;
    };
  };
  // The first controller reads ahead while the second one is waited for: both ask.
  one.server->AskAt(2, ask(QStringLiteral("one")));
  EXPECT_EQ(source->Read(10).size(), 10);
  two.server->AskAt(1, ask(QStringLiteral("two")));
  (void)second.List(QString());
  EXPECT_EQ(source->Read(10).size(), 10);
  steps.sort();
  EXPECT_EQ(steps, (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
}

TEST(RemoteTalkTest, AQuestionOfACancelledCallIsNotAsked) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("f"), QByteArray(30, 'x'));
  const auto files = world.Connect();
  auto source = files->OpenSource(QStringLiteral("f"));
  bool asked = false;
  world.server->AskAt(2, [&asked](UserPrompts&) { asked = true; });
  EXPECT_EQ(source->Read(10).size(), 10);
  // The question is on its way; nobody waits for what it belongs to.
  source.reset();
  files->ForgetLearnt();
  ASSERT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
  world.queue.RunPosted();
  EXPECT_FALSE(asked);
  EXPECT_NE(world.server->Answered(), true);
}

TEST(RemoteTalkTest, NoQuestionIsAskedOnceTheProgramEnds) {
  RemoteWorld world;
  const auto files = world.Connect();
  bool asked = false;
  world.server->AskAt(1, [&asked](UserPrompts&) { asked = true; });
  world.prompts.End(UserPrompts::Ending::ByUser);
  EXPECT_EQ(FailureOf([&] { (void)files->List(QString()); }).Number(), error::kCancelled);
  EXPECT_FALSE(asked);
  EXPECT_EQ(world.server->Answered(), false);
}

TEST(RemoteTalkTest, AQuestionThatThrowsIsWithdrawn) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.server->AskAt(1, [](UserPrompts&) { throw std::bad_alloc(); });
  EXPECT_EQ(FailureOf([&] { (void)files->List(QString()); }).Number(), error::kCancelled);
  EXPECT_EQ(world.server->Answered(), false);
  EXPECT_EQ(world.queue.OpenQuestions(), 0);
  // The next one is asked.
  bool asked = false;
  world.server->AskAt(1, [&asked](UserPrompts&) { asked = true; });
  (void)files->List(QString());
  EXPECT_TRUE(asked);
}

TEST(RemoteTalkTest, ForgettingConnectsNothing) {
  RemoteWorld world;
  const auto files = world.Connect();
  // The line dies, and the connection after it is refused.
  world.server->DropAt(1);
  world.server->RefuseOpening(providererror::kGeneralFailure);
  EXPECT_NE(FailureOf([&] { (void)files->List(QString()); }).Number(), 0);
  EXPECT_EQ(world.server->Openings(), 2);
  files->ForgetLearnt();
  // The next call connects, and stands behind it.
  EXPECT_NE(FailureOf([&] { (void)files->List(QString()); }).Number(), 0);
  EXPECT_EQ(world.server->Openings(), 3);
}

TEST(RemoteTalkTest, AnEndThatHangsIsToldToGiveUp) {
  RemoteWorld world;
  const auto opened = [](const FileSystemRequest& request) {
    return std::shared_ptr<FileSystem>(new MemoryFileSystem,
                                       [control = request.control](const FileSystem* ending) {
                                         const std::unique_ptr<const FileSystem> files(ending);
                                         // Logs off, and waits for an answer that never comes.
                                         std::mutex mutex;
                                         std::condition_variable changed;
                                         const std::shared_ptr<void> wake = control->OnCancel([&] {
                                           const std::lock_guard lock(mutex);
                                           changed.notify_all();
                                         });
                                         std::unique_lock lock(mutex);
                                         changed.wait(lock, [&control] { return control->IsCancelled(); });
                                       });
  };
  auto files = std::make_unique<RemoteFileSystem>(
      world.context, RemoteConnection::Opening{QStringLiteral("Robot"), opened, {}});
  files.reset();
  EXPECT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
}

TEST(RemoteTalkTest, TheEndOfTheProgramLeavesADeafThreadBehind) {
  RemoteWorld world;
  const auto files = world.Connect();
  world.server->HangAt(1, Hearing::Deaf);
  world.waiter.SetTurn([&](RunningCall& call) {
    world.server->WaitUntilHanging();
    call.Abandon();
    return false;
  });
  EXPECT_EQ(FailureOf([&] { (void)files->List(QString()); }).Number(), error::kCancelled);
  EXPECT_FALSE(world.context.controllers->StopAll(std::chrono::milliseconds(1)));
  EXPECT_EQ(FailureOf([&] { (void)files->List(QString()); }).Number(), error::kCancelled);
  EXPECT_EQ(world.server->Openings(), 1);
}

TEST(RemoteTalkTest, AQuestionOfAPieceAheadEndsWithItsSource) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("f"), QByteArray(30, 'x'));
  const auto files = world.Connect();
  auto source = files->OpenSource(QStringLiteral("f"));
  int asked = 0;
  world.server->AskAt(2, [&asked](UserPrompts&) { ++asked; });
  EXPECT_EQ(source->Read(10).size(), 10);
  // Nobody waits for the second piece.
  while (!world.queue.HasPosted()) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(world.server->Answered());
  source.reset();
  while (!world.server->Answered()) {
    std::this_thread::yield();
  }
  EXPECT_EQ(world.server->Answered(), false);
  world.queue.RunPosted();
  EXPECT_EQ(files->List(QString()).size(), 1U);
  EXPECT_EQ(asked, 0);
}

TEST(RemoteTalkTest, AQuestionOfAPieceBehindEndsWithItsSink) {
  RemoteWorld world;
  const auto files = world.Connect();
  auto sink = files->OpenSink(QStringLiteral("f"), {});
  int asked = 0;
  world.server->AskAt(1, [&asked](UserPrompts&) { ++asked; });
  sink->Write("piece");
  while (!world.queue.HasPosted()) {
    std::this_thread::yield();
  }
  sink.reset();
  while (!world.server->Answered()) {
    std::this_thread::yield();
  }
  EXPECT_EQ(world.server->Answered(), false);
  world.queue.RunPosted();
  EXPECT_TRUE(files->List(QString()).empty());
  EXPECT_EQ(asked, 0);
}

TEST(RemoteTalkTest, ADisconnectEndsTheQuestionOfItsController) {
  // A copy's two controllers ask at once; the first question stands when the other controller goes, or when
  // the copy is cancelled.
  for (const bool disconnects : {false, true}) {
    RemoteWorld one;
    RemoteWorld two;
    one.memory->AddFile(QStringLiteral("f"), QByteArray(30, 'x'));
    auto first = one.Connect();
    RemoteFileSystem second(one.context, two.Opening());
    two.server->ClearCalls();
    auto ahead = first->OpenSource(QStringLiteral("f"));
    QStringList asked;
    one.server->AskAt(2, [&](UserPrompts&) { asked.append(QStringLiteral("ahead")); });
    EXPECT_EQ(ahead->Read(10).size(), 10);
    // Nobody waits for the piece ahead; its question stands in the queue.
    while (!one.queue.HasPosted()) {
      std::this_thread::yield();
    }
    const auto end = [&] {
      ahead.reset();
      if (disconnects) {
        first.reset();
      }
    };
    // The copy ends before the next wait.
    end();
    two.server->AskAt(1, [&](UserPrompts&) { asked.append(QStringLiteral("second")); });
    EXPECT_TRUE(second.List(QString()).empty());
    EXPECT_EQ(asked, QStringList{QStringLiteral("second")});
    while (!one.server->Answered()) {
      std::this_thread::yield();
    }
    EXPECT_EQ(one.server->Answered(), false);
    // Its world has no connection of its own.
    EXPECT_EQ(two.server->Answered(), true);
  }
}

TEST(RemoteTalkTest, ACancelWhileAQuestionStandsEndsTheCall) {
  RemoteWorld world;
  const auto files = world.Connect();
  RunningCall* running = nullptr;
  // The first turn comes before the question.
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.server->AskAt(1, [&](UserPrompts&) {
    ASSERT_NE(running, nullptr);
    running->Cancel();
    // One that stands before the user is answered there.
    EXPECT_FALSE(world.server->Answered());
  });
  world.waiter.SetTurn([&](RunningCall& call) {
    if (running == nullptr) {
      running = &call;
      if (!world.server->WaitUntilHanging(call)) {
        return false;
      }
      world.server->Release();
    }
    return false;
  });
  EXPECT_EQ(FailureOf([&] { static_cast<void>(files->List(QString())); }).Number(), error::kCancelled);
  EXPECT_EQ(world.server->Answered(), false);
}

TEST(RemoteTalkTest, OfProgressOnlyTheLatestIsShown) {
  WindowQueue queue;
  RunningCall call(queue, QStringLiteral("Robot"), QStringLiteral("Reading"));
  std::vector<int> seen;
  const Delivery<int>::Receiver receive = [&seen](int&& item) {
    seen.push_back(item);
    return true;
  };
  const auto delivery = std::make_shared<Delivery<int>>(call, receive, true);
  std::thread worker([&delivery] {
    for (int i = 1; i <= 1000; ++i) {
      delivery->Put(int(i));
    }
  });
  worker.join();
  EXPECT_TRUE(seen.empty());
  queue.RunPosted();
  EXPECT_EQ(seen, std::vector<int>{1000});
  delivery->Put(1001);
  queue.RunPosted();
  EXPECT_EQ(seen.back(), 1001);
  delivery->Put(1002);
  delivery->Close(false);
  queue.RunPosted();
  EXPECT_EQ(seen.size(), 2U);
}

}  // namespace
}  // namespace trevane::test
