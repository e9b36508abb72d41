#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/remote/LearntFileSystem.h"
#include "tests/engine/remote/RemoteWorld.h"

namespace trevane::test {
namespace {

/// The memory alone, without a thread.
struct LearntWorld {
  explicit LearntWorld(const ScriptedOptions& options = {})
      : server(std::make_shared<ScriptedServer>(memory, options)) {
    clock->SetSource([this] { return now; });
    memory->AddFile(QStringLiteral("a\\f"), "x");
    memory->AddFile(QStringLiteral("a\\sub\\g"), "y");
    memory->AddFile(QStringLiteral("b\\h"), "z");
  }
  LearntWorld(const LearntWorld&) = delete;
  LearntWorld& operator=(const LearntWorld&) = delete;

  /// The round trips that `work` costs.
  int Cost(const std::function<void()>& work) {
    server->ClearCalls();
    work();
    return server->RoundTrips();
  }

  qint64 now = 0;
  std::shared_ptr<LearntClock> clock = std::make_shared<LearntClock>();
  std::shared_ptr<MemoryFileSystem> memory = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<ScriptedServer> server;
  LearntFileSystem files{server->Open(), clock};
};

TEST(LearntFileSystemTest, WhatWasListedCostsNothingForTwoSeconds) {
  LearntWorld world;
  EXPECT_EQ(world.Cost([&] { (void)world.files.List(QStringLiteral("a")); }), 1);
  world.now = 1999;
  EXPECT_EQ(world.Cost([&] {
    EXPECT_EQ(world.files.List(QStringLiteral("a")).size(), 2U);
    EXPECT_EQ(world.files.Find(QStringLiteral("a\\f"))->size, 1);
    EXPECT_EQ(world.files.Find(QStringLiteral("a\\missing")), std::nullopt);
    EXPECT_TRUE(world.files.Stat(QStringLiteral("a\\sub")).IsFolder());
  }),
            0);
  world.now = 2000;
  EXPECT_EQ(world.Cost([&] { (void)world.files.Find(QStringLiteral("a\\f")); }), 1);
  EXPECT_EQ(world.Cost([&] { (void)world.files.List(QStringLiteral("a")); }), 1);
}

TEST(LearntFileSystemTest, DetailsCostARoundTripOnce) {
  LearntWorld world;
  const QStringList lines{QStringLiteral("Owner: joe")};
  world.server->SetDetails(QStringLiteral("a\\f"), lines);
  const auto ask = [&] { EXPECT_EQ(world.files.Details(QStringLiteral("a\\f")), lines); };
  EXPECT_EQ(world.Cost(ask), 1);
  world.now = 1999;
  EXPECT_EQ(world.Cost(ask), 0);
  EXPECT_EQ(world.Cost([&] { EXPECT_EQ(world.files.Details(QStringLiteral("b\\h")), QStringList()); }), 1);
  EXPECT_EQ(world.Cost(ask), 1) << "one item's are kept";
  world.now = 4000;
  EXPECT_EQ(world.Cost(ask), 1);
  world.files.CreateFolder(QStringLiteral("b\\new"));
  EXPECT_EQ(world.Cost(ask), 1) << "a change may show in them";
  world.files.ForgetLearnt();
  EXPECT_EQ(world.Cost(ask), 1);
}

TEST(LearntFileSystemTest, ACommandRemembersForAsLongAsItRuns) {
  LearntWorld world;
  {
    const LearntScope command(*world.clock);
    EXPECT_EQ(world.Cost([&] { (void)world.files.Find(QStringLiteral("a\\missing")); }), 1);
    world.now = 60'000;
    const LearntScope inner(*world.clock);
    EXPECT_EQ(world.Cost([&] { (void)world.files.Find(QStringLiteral("a\\missing")); }), 0);
  }
  EXPECT_EQ(world.Cost([&] { (void)world.files.Find(QStringLiteral("a\\missing")); }), 1);
  {
    const LearntScope next(*world.clock);
    world.now = 70'000;
    EXPECT_EQ(world.Cost([&] { (void)world.files.Find(QStringLiteral("a\\missing")); }), 1);
  }
}

TEST(LearntFileSystemTest, AChangeForgetsTheTouchedFolderOnly) {
  LearntWorld world;
  const auto learn = [&] {
    (void)world.files.List(QStringLiteral("a"));
    (void)world.files.List(QStringLiteral("a\\sub"));
    (void)world.files.List(QStringLiteral("b"));
  };
  learn();
  world.files.CreateFolder(QStringLiteral("a\\new"));
  EXPECT_EQ(world.Cost([&] { EXPECT_TRUE(world.files.Find(QStringLiteral("a\\new"))); }), 1);
  EXPECT_EQ(world.Cost([&] {
    (void)world.files.List(QStringLiteral("a\\sub"));
    (void)world.files.List(QStringLiteral("b"));
  }),
            0);
  learn();
  world.files.Rename(QStringLiteral("a\\sub"), QStringLiteral("b\\sub"), false);
  EXPECT_EQ(world.Cost([&] { EXPECT_EQ(world.files.Find(QStringLiteral("a\\sub\\g")), std::nullopt); }), 1);
  EXPECT_EQ(world.Cost([&] { EXPECT_TRUE(world.files.Find(QStringLiteral("b\\sub"))); }), 1);
}

TEST(LearntFileSystemTest, AChangedFoldersOwnEntryIsAskedAnewInTheFolderAbove) {
  LearntWorld world;
  (void)world.files.List(QStringLiteral("a"));
  (void)world.files.Find(QStringLiteral("a"));
  const Date before = world.files.Find(QStringLiteral("a\\sub"))->modified;
  world.files.CreateFolder(QStringLiteral("a\\sub\\new"));
  EXPECT_EQ(world.Cost([&] { EXPECT_NE(world.files.Find(QStringLiteral("a\\sub"))->modified, before); }), 1);
  EXPECT_EQ(world.Cost([&] {
    (void)world.files.Find(QStringLiteral("a\\f"));
    (void)world.files.Find(QStringLiteral("a"));
  }),
            0)
      << "nothing else has changed";
}

TEST(LearntFileSystemTest, AFailedChangeForgetsToo) {
  LearntWorld world;
  (void)world.files.List(QStringLiteral("a"));
  world.server->DropAt(1, ScriptedServer::Drop::AfterTheCall);
  EXPECT_NE(FailureOf([&] { world.files.CreateFolder(QStringLiteral("a\\new")); }).Number(), 0);
  EXPECT_NE(FailureOf([&] { (void)world.files.List(QStringLiteral("a")); }).Number(), 0);
}

TEST(LearntFileSystemTest, ASinkForgetsItsFolderWithEachStep) {
  LearntWorld world;
  const QString path = QStringLiteral("a\\new");
  (void)world.files.List(QStringLiteral("a"));
  {
    const auto sink = world.files.OpenSink(path, {});
    EXPECT_EQ(world.Cost([&] { (void)world.files.List(QStringLiteral("a")); }), 1);
    sink->Write("abc");
    EXPECT_EQ(sink->Commit().entry.size, 3);
    EXPECT_EQ(world.Cost([&] { EXPECT_EQ(world.files.Find(path)->size, 3); }), 1);
  }
  EXPECT_EQ(world.Cost([&] { (void)world.files.Find(path); }), 1);
}

TEST(LearntFileSystemTest, AHeldFolderIsAskedAnewAndForgets) {
  LearntWorld world;
  (void)world.files.List(QStringLiteral("a"));
  const auto held = world.files.Hold(QStringLiteral("a"));
  EXPECT_GE(world.Cost([&] { EXPECT_TRUE(held->Find(QStringLiteral("f"))); }), 1);
  EXPECT_GE(world.Cost([&] { EXPECT_TRUE(held->Find(QStringLiteral("f"))); }), 1);
  EXPECT_EQ(world.Cost([&] { (void)world.files.List(QStringLiteral("a")); }), 0);
  held->CreateFolder(QStringLiteral("new"), false);
  EXPECT_EQ(world.Cost([&] { EXPECT_EQ(world.files.List(QStringLiteral("a")).size(), 3U); }), 1);
  const auto inner = held->Enter(QStringLiteral("new"));
  (void)world.files.List(QStringLiteral("a\\new"));
  static_cast<void>(WriteNewFile(*inner, QStringLiteral("f"), "x"));
  EXPECT_EQ(world.files.List(QStringLiteral("a\\new")).size(), 1U);
}

TEST(LearntFileSystemTest, ForgetLearntForgetsAll) {
  LearntWorld world;
  const LearntScope command(*world.clock);
  (void)world.files.List(QStringLiteral("a"));
  world.files.ForgetLearnt();
  EXPECT_EQ(world.Cost([&] { (void)world.files.List(QStringLiteral("a")); }), 1);
}

TEST(LearntFileSystemTest, BehindALinkNothingStaysKnown) {
  LearntWorld world;
  world.memory->AddLink(QStringLiteral("l"), QStringLiteral("a"));
  (void)world.files.List(QString());
  EXPECT_EQ(world.files.List(QStringLiteral("l")).size(), 2U);
  world.files.RemoveAlone(QStringLiteral("a\\f"));
  EXPECT_EQ(world.files.List(QStringLiteral("l")).size(), 1U);
}

TEST(LearntFileSystemTest, AListedLinkIsAskedWhereItLeads) {
  LearntWorld world({.listsTargets = false});
  world.memory->AddLink(QStringLiteral("a\\folder"), QStringLiteral("b"));
  world.memory->AddLink(QStringLiteral("a\\file"), QStringLiteral("b\\h"));
  world.memory->AddLink(QStringLiteral("a\\nowhere"), QStringLiteral("c"));
  for (const FileEntry& entry : world.files.List(QStringLiteral("a"))) {
    EXPECT_TRUE(!entry.IsLink() || (!entry.IsFolder() && !entry.leadsNowhere && entry.size < 0));
  }
  const auto ask = [&] {
    EXPECT_TRUE(world.files.Find(QStringLiteral("a\\folder"))->IsFolder());
    EXPECT_EQ(world.files.Stat(QStringLiteral("a\\file")).size, 1);
    EXPECT_TRUE(world.files.Find(QStringLiteral("a\\nowhere"))->leadsNowhere);
  };
  EXPECT_EQ(world.Cost(ask), 3);
  EXPECT_EQ(world.Cost(ask), 0) << "it is known by now";
  EXPECT_EQ(world.Cost([&] {
    EXPECT_EQ(world.files.Find(QStringLiteral("a\\f"))->size, 1);
    EXPECT_EQ(world.files.List(QStringLiteral("a")).size(), 5U);
  }),
            0)
      << "no link, and the listing itself";
}

TEST(LearntFileSystemTest, AListedLinkIsKnownWhereItsListingTells) {
  LearntWorld world;
  world.memory->AddLink(QStringLiteral("a\\folder"), QStringLiteral("b"));
  world.memory->AddLink(QStringLiteral("a\\file"), QStringLiteral("b\\h"));
  world.memory->AddLink(QStringLiteral("a\\nowhere"), QStringLiteral("c"));
  (void)world.files.List(QStringLiteral("a"));
  EXPECT_EQ(world.Cost([&] {
    EXPECT_TRUE(world.files.Find(QStringLiteral("a\\folder"))->IsFolder());
    EXPECT_EQ(world.files.Find(QStringLiteral("a\\file"))->size, 1);
    EXPECT_TRUE(world.files.Find(QStringLiteral("a\\nowhere"))->leadsNowhere);
  }),
            0);
}

TEST(LearntFileSystemTest, ANameWithOtherSpellingsIsAskedFor) {
  LearntWorld world;
  (void)world.files.List(QStringLiteral("a"));
  for (const QString& name : {QStringLiteral("FILE~1"), QStringLiteral("f."), QStringLiteral("caf\u00e9")}) {
    EXPECT_EQ(world.Cost([&] { (void)world.files.Find(QStringLiteral("a\\") + name); }), 1);
  }
}

TEST(LearntFileSystemTest, AListingThatWasEndedIsNotRemembered) {
  LearntWorld world;
  for (int i = 0; i < 100; ++i) {
    world.memory->AddFile(QStringLiteral("many\\%1").arg(i));
  }
  world.files.ListInBatches(QStringLiteral("many"), [](Listing&&) { return false; });
  EXPECT_EQ(world.Cost([&] { EXPECT_EQ(world.files.List(QStringLiteral("many")).size(), 100U); }), 1);
  size_t seen = 0;
  EXPECT_EQ(world.Cost([&] {
    world.files.ListInBatches(QStringLiteral("many"), [&seen](Listing&& batch) {
      seen += batch.size();
      return true;
    });
  }),
            0);
  EXPECT_EQ(seen, 100U);
}

}  // namespace
}  // namespace trevane::test
