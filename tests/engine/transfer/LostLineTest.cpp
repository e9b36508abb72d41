#include "engine/items/clsIxoFile.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/SessionWorld.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace trevane::test {
namespace {

using Identities = ScriptedOptions::Identities;
using Drop = ScriptedServer::Drop;

/// A local tree, and a slow controller whose line dies.
struct LostLineWorld : SessionWorld {
  explicit LostLineWorld(const ScriptedOptions& options, bool withLargeFile = false)
      : server(std::make_shared<ScriptedServer>(device, options)) {
    MemoryFileSystemOptions drives;
    drives.drives = {QStringLiteral("C:")};
    local = std::make_shared<MemoryFileSystem>(drives);
    Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), local),
          server->AsProvider(QStringLiteral("IxoProv.Device"))});
    volumes.Set({{QStringLiteral("C:"), QString(), drivetype::kFixed}});
    this->drives.RefreshDrives();
    Register(QStringLiteral("Device"), QStringLiteral("IxoProv.Device"), QStringLiteral("/"));
    for (const auto& files : {local, device}) {
      const QString at = files == local ? QStringLiteral("C:\\tree\\") : QStringLiteral("tree\\");
      files->AddFile(at + QStringLiteral("a"), "content a");
      files->AddFile(at + QStringLiteral("b"), "content b");
      files->AddFile(at + QStringLiteral("sub\\c"), "content c");
      files->AddFile(at + QStringLiteral("z"), QByteArray(withLargeFile ? 9 * 1024 * 1024 : 1, 'z'));
    }
    device->AddFolder(QStringLiteral("in"));
    local->AddFolder(QStringLiteral("C:\\in"));
  }
  ~LostLineWorld() { StopThreads(); }
  LostLineWorld(const LostLineWorld&) = delete;
  LostLineWorld& operator=(const LostLineWorld&) = delete;

  std::shared_ptr<MemoryFileSystem> local;
  std::shared_ptr<MemoryFileSystem> device = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<ScriptedServer> server;
};

struct LostLineCase {
  const char* name;
  Identities identities;
  bool overlapping;
  Drop drop;
};

class LostLineTest : public testing::TestWithParam<LostLineCase> {
 protected:
  static ScriptedOptions Options() {
    return {.identities = GetParam().identities, .traits = true, .overlapping = GetParam().overlapping};
  }
};

TEST_P(LostLineTest, NothingIsSentToAControllerWhoseLineDied) {
  int failures = 0;
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    LostLineWorld world(Options(), true);
    clsIxoFile file = world.files.FileAt(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
    clsIxoFile into = world.files.FileAt(QStringLiteral("Workspace\\Device\\in"));
    ASSERT_EQ(into.Result(), 0);
    world.server->DropAt(call, GetParam().drop);
    const qint32 result = file.CopyDiffCtrl(into, {});
    world.StopThreads();
    const QStringList calls = world.server->Calls();
    if (result == 0) {
      EXPECT_EQ(world.device->Content(QStringLiteral("in\\tree\\sub\\c")), "content c");
    } else {
      // A call that reads is tried once more, one that writes is not, and nothing is cleaned up there.
      ++failures;
      EXPECT_EQ(world.server->Openings(), 1) << calls.join(u'\n').toStdString();
    }
    const QString in = QStringLiteral("in\\tree\\");
    EXPECT_TRUE(!world.device->Exists(in + QStringLiteral("a")) ||
                world.device->Content(in + QStringLiteral("a")) == "content a");
    EXPECT_TRUE(!world.device->Exists(in + QStringLiteral("z")) ||
                world.device->Content(in + QStringLiteral("z")).size() == 9 * 1024 * 1024);
    if (calls.size() < call || HasFailure()) {
      EXPECT_GT(call, 10);
      break;
    }
  }
  EXPECT_GT(failures, 5);
}

TEST_P(LostLineTest, WhatAControllerOfTheSourceLostLeavesNothingHalfBehind) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    LostLineWorld world(Options());
    clsIxoFile file = world.files.FileAt(QStringLiteral("Workspace\\Device\\tree"));
    clsIxoFile into = world.files.FileAt(QStringLiteral("Workspace\\My Computer\\C:\\in"));
    ASSERT_EQ(file.Result(), 0);
    const QStringList before = world.device->Tree();
    world.server->DropAt(call, GetParam().drop);
    // Every call there reads, and is tried once more.
    EXPECT_EQ(file.CopyDiffCtrl(into, {}), 0) << file.ResultText().toStdString();
    world.StopThreads();
    EXPECT_EQ(world.local->Content(QStringLiteral("C:\\in\\tree\\z")), "z");
    EXPECT_EQ(world.device->Tree(), before);
    if (world.server->Calls().size() < call || HasFailure()) {
      EXPECT_GT(call, 5);
      break;
    }
  }
}

TEST_P(LostLineTest, AMoveKeepsItsSourceWhenTheLineDies) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    LostLineWorld world(Options());
    const QStringList source = world.local->Tree().filter(QStringLiteral("C:\\tree"));
    clsIxoFile file = world.files.FileAt(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
    clsIxoFile into = world.files.FileAt(QStringLiteral("Workspace\\Device\\in"));
    file.RecordSource();
    world.server->DropAt(call, GetParam().drop);
    if (file.CopyDiffCtrl(into, {}) == 0) {
      file.DeleteMoved(into, {}, false);
    }
    world.StopThreads();
    // A probe whose removal was not answered may be there, too.
    const bool isWhole = world.device->Tree().filter(QStringLiteral("in\\tree\\")).size() >= 6;
    EXPECT_TRUE(isWhole || world.local->Tree().filter(QStringLiteral("C:\\tree")) == source);
    if (world.server->Calls().size() < call || HasFailure()) {
      EXPECT_FALSE(world.local->Exists(QStringLiteral("C:\\tree")));
      break;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, LostLineTest,
    testing::Values(LostLineCase{"NoIdentitiesBefore", Identities::None, false, Drop::BeforeTheCall},
                    LostLineCase{"NoIdentitiesAfter", Identities::None, false, Drop::AfterTheCall},
                    LostLineCase{"TextsOverlappingBefore", Identities::Texts, true, Drop::BeforeTheCall},
                    LostLineCase{"TextsOverlappingAfter", Identities::Texts, true, Drop::AfterTheCall},
                    LostLineCase{"NumbersBefore", Identities::Numbers, false, Drop::BeforeTheCall}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace trevane::test
