#include "engine/items/clsIxoFile.h"
#include "tests/support/EngineWorld.h"

#include <gtest/gtest.h>

#include <tuple>

namespace trevane::test {
namespace {

struct FaultCase {
  const char* name;
  /// The one of the two file systems that fails.
  bool atSource;
  Fault fault;
  FaultSpan span;
};

class FileSystemFaultTest : public testing::TestWithParam<std::tuple<FaultCase, EngineWorld::Threads>> {
 protected:
  static void SetUpTrees(EngineWorld& world) {
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "content a");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\empty"));
    world.local.memory->AddFolder(QStringLiteral("C:\\tree\\hollow"));
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\b"), "content b");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\deep\\c"), "content c");
    world.one.memory->AddFile(QStringLiteral("in\\keep"), "kept");
    world.one.memory->AddFile(QStringLiteral("in\\tree\\other"), "kept too");
  }

  static qint32 Copy(EngineWorld& world, Arrival& arrived) {
    world.prompts.AnswerAllChoices(1);
    const auto file = world.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
    if (file->Result() != 0) {
      arrived = Arrival::Failed;
      return file->Result();
    }
    const qint32 result = file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {});
    arrived = file->Arrived();
    return result;
  }
};

TEST_P(FileSystemFaultTest, OnlyVerifiedCopiesAreReported) {
  const auto& [with, threads] = GetParam();
  QStringList source;
  QStringList before;
  QStringList after;
  Arrival arrived = Arrival::Failed;
  {
    EngineWorld world(true, threads);
    SetUpTrees(world);
    source = world.local.memory->Tree();
    before = world.one.memory->Tree();
    ASSERT_EQ(Copy(world, arrived), 0);
    world.StopThreads();
    ASSERT_EQ(arrived, Arrival::Everything);
    after = world.one.memory->Tree();
  }
  // A file system that lies in everything cannot be made to take a half-written file away either.
  const bool onlyTellsLies =
      (with.fault == Fault::Lie || with.fault == Fault::LieAndReckon) && with.span == FaultSpan::FromThenOn;
  int call = 1;
  for (bool wentWrong = true; wentWrong; ++call) {
    SCOPED_TRACE(call);
    EngineWorld world(true, threads);
    SetUpTrees(world);
    FaultyFileSystem& faulty = with.atSource ? *world.local.faulty : *world.one.faulty;
    faulty.Arm(call, with.span, error::kTimeOut, with.fault);
    const qint32 result = Copy(world, arrived);
    world.StopThreads();
    wentWrong = faulty.FaultCount() > 0;
    faulty.Disarm();

    EXPECT_EQ(result == 0, arrived == Arrival::Everything);
    EXPECT_EQ(world.local.memory->Tree(), source);
    EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
    const QStringList now = world.one.memory->Tree();
    if (result == 0) {
      EXPECT_EQ(now, after);
    }
    for (const QString& line : before) {
      EXPECT_TRUE(now.contains(line)) << "lost: " << line.toStdString();
    }
    for (const QString& line : now) {
      EXPECT_TRUE(onlyTellsLies || after.contains(line)) << "half: " << line.toStdString();
    }
    if (HasFailure()) {
      return;
    }
  }
  EXPECT_GT(call, 5) << "no call went wrong";
}

INSTANTIATE_TEST_SUITE_P(
    All, FileSystemFaultTest,
    testing::Combine(
        testing::Values(
            FaultCase{"SourceRefusesOnce", true, Fault::Refuse, FaultSpan::Once},
            FaultCase{"SourceRefusesFromThenOn", true, Fault::Refuse, FaultSpan::FromThenOn},
            FaultCase{"SourceLiesOnce", true, Fault::Lie, FaultSpan::Once},
            FaultCase{"SourceLiesFromThenOn", true, Fault::Lie, FaultSpan::FromThenOn},
            FaultCase{"TargetRefusesOnce", false, Fault::Refuse, FaultSpan::Once},
            FaultCase{"TargetRefusesFromThenOn", false, Fault::Refuse, FaultSpan::FromThenOn},
            FaultCase{"TargetDoesAndFailsOnce", false, Fault::DoAndFail, FaultSpan::Once},
            FaultCase{"TargetDoesAndFailsFromThenOn", false, Fault::DoAndFail, FaultSpan::FromThenOn},
            FaultCase{"TargetLiesOnce", false, Fault::Lie, FaultSpan::Once},
            FaultCase{"TargetLiesFromThenOn", false, Fault::Lie, FaultSpan::FromThenOn},
            FaultCase{"TargetReckonsOnce", false, Fault::LieAndReckon, FaultSpan::Once},
            FaultCase{"TargetReckonsFromThenOn", false, Fault::LieAndReckon, FaultSpan::FromThenOn}),
        testing::Values(EngineWorld::Threads::None, EngineWorld::Threads::OnePerController)),
    [](const auto& info) {
      const bool onThreads = std::get<1>(info.param) == EngineWorld::Threads::OnePerController;
      return std::string(std::get<0>(info.param).name) + (onThreads ? "OnThreads" : "");
    });

}  // namespace
}  // namespace trevane::test
