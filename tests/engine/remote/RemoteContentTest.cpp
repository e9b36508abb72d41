#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/model/BatchWatch.h"
#include "tests/engine/remote/RemoteWorld.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <thread>
#include <vector>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

QByteArray Pattern(int size) {
  QByteArray bytes;
  for (int i = 0; i < size; ++i) {
    bytes.append(static_cast<char>('a' + i % 26));
  }
  return bytes;
}

TEST(RemoteContentTest, ASourceReadsOnePieceAhead) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("f"), Pattern(30));
  const auto files = world.Connect();
  const auto source = files->OpenSource(QStringLiteral("f"));
  EXPECT_EQ(world.server->Calls(), QStringList(QStringLiteral("OpenSource f")));
  world.server->HangAt(2, Hearing::ObeysCancel);
  // The first piece is given while the second one is under way already.
  EXPECT_EQ(source->Read(10), Pattern(30).first(10));
  world.server->WaitUntilHanging();
  const int waits = world.waiter.Waits();
  // The controller is not asked for a third one meanwhile.
  EXPECT_EQ(world.server->RoundTrips(), 2);
  world.server->Release();
  EXPECT_EQ(source->Read(10), Pattern(30).mid(10, 10));
  EXPECT_LE(world.waiter.Waits(), waits + 1);
  EXPECT_EQ(source->Read(4), Pattern(30).mid(20, 4));
  EXPECT_EQ(source->Read(10), Pattern(30).mid(24));
  EXPECT_EQ(source->Read(10), QByteArray());
  EXPECT_EQ(source->Read(10), QByteArray());
}

TEST(RemoteContentTest, ASourceGoesOnOverANewConnection) {
  for (int call = 1; call <= 4; ++call) {
    SCOPED_TRACE(call);
    RemoteWorld world;
    world.memory->AddFile(QStringLiteral("f"), Pattern(30));
    const auto files = world.Connect();
    world.server->DropAt(call);
    const auto source = files->OpenSource(QStringLiteral("f"));
    QByteArray all;
    for (QByteArray piece = source->Read(10); !piece.isEmpty(); piece = source->Read(10)) {
      all += piece;
    }
    EXPECT_EQ(all, Pattern(30));
    EXPECT_EQ(world.server->Openings(), 2);
  }
}

TEST(RemoteContentTest, ASinkWritesOnePieceBehind) {
  RemoteWorld world;
  const auto files = world.Connect();
  const auto sink = files->OpenSink(QStringLiteral("f"), {});
  world.server->HangAt(1, Hearing::ObeysCancel);
  const int waits = world.waiter.Waits();
  sink->Write("abc");
  EXPECT_EQ(world.waiter.Waits(), waits);
  world.server->WaitUntilHanging();
  world.server->Release();
  sink->Write("def");
  EXPECT_EQ(sink->Commit().entry.size, 6);
  EXPECT_EQ(world.memory->Content(QStringLiteral("f")), QByteArray("abcdef"));
}

TEST(RemoteContentTest, AFailedPieceShowsAtTheNextStep) {
  for (const bool commits : {false, true}) {
    RemoteWorld world;
    const auto files = world.Connect();
    auto sink = files->OpenSink(QStringLiteral("f"), {});
    world.server->DropAt(1);
    sink->Write("abc");
    EXPECT_EQ(FailureOf([&] {
                if (commits) {
                  (void)sink->Commit();
                } else {
                  sink->Write("def");
                }
              }).Number(),
              error::kWin32Error + 64);
    // Nothing of it is repeated.
    EXPECT_EQ(world.server->RoundTrips(), 1);
    sink.reset();
    EXPECT_EQ(world.memory->Tree(), QStringList());
  }
}

TEST(RemoteContentTest, NoStepOfASinkIsRepeated) {
  // Open, two pieces, commit.
  for (int call = 1; call <= 4; ++call) {
    for (const auto drop : {ScriptedServer::Drop::BeforeTheCall, ScriptedServer::Drop::AfterTheCall}) {
      SCOPED_TRACE(call);
      RemoteWorld world;
      const auto files = world.Connect();
      world.server->DropAt(call, drop);
      const RunTimeError failure = FailureOf([&] {
        const auto sink = files->OpenSink(QStringLiteral("f"), {});
        sink->Write("abc");
        sink->Write("def");
        (void)sink->Commit();
      });
      EXPECT_EQ(failure.Number(), error::kWin32Error + 64);
      EXPECT_EQ(world.server->RoundTrips(), call);
      EXPECT_EQ(world.server->Openings(), 1);
    }
  }
}

TEST(RemoteContentTest, ADroppedSourceWaitsForNothing) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("f"), Pattern(30));
  const auto files = world.Connect();
  auto source = files->OpenSource(QStringLiteral("f"));
  world.server->HangAt(2, Hearing::Deaf);
  EXPECT_EQ(source->Read(10).size(), 10);
  world.server->WaitUntilHanging();
  source.reset();
  EXPECT_EQ(world.server->EndedOn().size(), 0U);
}

TEST(RemoteContentTest, ABatchIsReadOnceMoreWhenTheLineDied) {
  for (int call = 1; call <= 6; ++call) {
    SCOPED_TRACE(call);
    RemoteWorld world;
    for (const char* name : {"a", "b", "c"}) {
      world.memory->AddFile(QString::fromLatin1(name), name);
    }
    const auto files = world.Connect();
    world.server->DropAt(call);
    qint64 told = 0;
    const BatchWatch watch([&told](const BatchStep& step) { told += step.files; });
    const auto results = files->ReadMany({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(told, 3) << "none is told twice";
    EXPECT_EQ(results[0].content, QByteArray("a"));
    EXPECT_EQ(results[1].content, QByteArray("b"));
    EXPECT_EQ(results[2].content, QByteArray("c"));
    EXPECT_EQ(world.server->Openings(), 2);
  }
}

TEST(RemoteContentTest, EachFileOfABatchIsToldWhileItRuns) {
  for (const bool writes : {false, true}) {
    SCOPED_TRACE(writes);
    RemoteWorld world;
    QStringList names;
    std::vector<NewContent> contents;
    contents.reserve(3);
    for (const char* name : {"a", "b", "c"}) {
      names.append(QString::fromLatin1(name));
      contents.push_back({names.back(), "four", {}});
      if (!writes) {
        world.memory->AddFile(names.back(), "four");
      }
    }
    const auto files = world.Connect();
    // In the middle of the second one.
    world.server->HangAt(4, Hearing::ObeysCancel);
    BatchStep told;
    std::vector<std::thread::id> toldOn;
    const BatchWatch watch([&](const BatchStep& step) {
      told.files += step.files;
      told.bytes += step.bytes;
      toldOn.push_back(std::this_thread::get_id());
    });
    std::optional<BatchStep> meanwhile;
    world.waiter.SetTurn([&](RunningCall& call) {
      if (world.server->WaitUntilHanging(call)) {
        call.Queue().RunPosted();
        meanwhile = told;
        world.server->Release();
      }
      return false;
    });
    if (writes) {
      EXPECT_TRUE(files->WriteMany(contents).back().item);
    } else {
      EXPECT_TRUE(files->ReadMany(names).back().content);
    }
    ASSERT_TRUE(meanwhile);
    EXPECT_EQ(meanwhile->files, 1);
    EXPECT_EQ(meanwhile->bytes, 4);
    EXPECT_EQ(told.files, 3);
    EXPECT_EQ(told.bytes, 12);
    EXPECT_EQ(std::ranges::count(toldOn, std::this_thread::get_id()), std::ssize(toldOn));
  }
}

TEST(RemoteContentTest, ABatchIsNeverWrittenTwice) {
  for (int call = 1; call <= 6; ++call) {
    SCOPED_TRACE(call);
    RemoteWorld world;
    const auto files = world.Connect();
    world.server->DropAt(call, ScriptedServer::Drop::AfterTheCall);
    const auto results = files->WriteMany({{QStringLiteral("a"), "1", {}}, {QStringLiteral("b"), "2", {}}});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(world.server->RoundTrips(), call);
    const WriteResult& failed = results[call <= 3 ? 0 : 1];
    ASSERT_TRUE(failed.failure);
    EXPECT_EQ(failed.failure->Number(), error::kWin32Error + 64);
    // The next call knows that the line died.
    EXPECT_LE(files->List(QString()).size(), 2U);
    EXPECT_EQ(world.server->Openings(), 2);
  }
}

TEST(RemoteContentTest, AHeldFolderIsHeldAnewAfterTheLineDied) {
  RemoteWorld world;
  world.memory->AddFile(QStringLiteral("a\\b\\f"), "x");
  const auto files = world.Connect();
  const auto outer = files->Hold(QStringLiteral("a"));
  const auto inner = outer->Enter(QStringLiteral("b"));
  world.server->DropAt(1);
  EXPECT_EQ(inner->List().size(), 1U);
  EXPECT_EQ(world.server->Openings(), 2);
  world.server->DropAt(1);
  EXPECT_EQ(FailureOf([&] { inner->CreateFolder(QStringLiteral("new"), false); }).Number(),
            error::kWin32Error + 64);
  inner->CreateFolder(QStringLiteral("new"), false);
  EXPECT_TRUE(world.memory->Exists(QStringLiteral("a\\b\\new")));
}

TEST(RemoteContentTest, AnotherFolderIsNotHeldInItsPlace) {
  for (const bool above : {false, true}) {
    RemoteWorld world;
    world.memory->AddFile(QStringLiteral("a\\b\\f"), "x");
    world.memory->AddFile(QStringLiteral("other\\b\\precious"), "x");
    const auto files = world.Connect();
    const auto outer = files->Hold(QStringLiteral("a"));
    const auto inner = outer->Enter(QStringLiteral("b"));
    world.server->DropAt(1);
    EXPECT_NE(FailureOf([&] { inner->CreateFolder(QStringLiteral("new"), false); }).Number(), 0);
    // Meanwhile another program puts another folder there.
    const QString place = above ? QStringLiteral("a") : QStringLiteral("a\\b");
    const QString other = above ? QStringLiteral("other") : QStringLiteral("other\\b");
    world.memory->Rename(place, QStringLiteral("away"), false);
    world.memory->Rename(other, place, false);
    EXPECT_EQ(FailureOf([&] { static_cast<void>(inner->List()); }).Number(), providererror::kChanged);
    EXPECT_EQ(FailureOf([&] { inner->CreateFolder(QStringLiteral("new"), false); }).Number(),
              providererror::kChanged);
    EXPECT_FALSE(world.memory->Exists(QStringLiteral("a\\b\\new")));
  }
}

TEST(RemoteContentTest, WithoutIdentitiesThePathIsHeldAnew) {
  RemoteWorld world({.identities = ScriptedOptions::Identities::None});
  world.memory->AddFile(QStringLiteral("a\\f"), "x");
  const auto files = world.Connect();
  const auto held = files->Hold(QStringLiteral("a"));
  EXPECT_FALSE(held->KnownIdentity());
  world.server->DropAt(1);
  EXPECT_EQ(held->List().size(), 1U);
  EXPECT_EQ(world.server->Openings(), 2);
}

}  // namespace
}  // namespace trevane::test
