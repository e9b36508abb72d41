#include "engine/items/clsIxoFile.h"
#include "tests/support/EngineWorld.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

struct FaultCase {
  const char* name;
  /// Which of the two file systems goes wrong.
  bool atSource;
  Fault fault;
  FaultSpan span;
};

class FileSystemFaultTest : public testing::TestWithParam<FaultCase> {
 protected:
  static void SetUpTrees(EngineWorld& world) {
    world.local.memory->AddFile(u"C:\\tree\\a"_s, "content a");
    world.local.memory->AddFile(u"C:\\tree\\empty"_s);
    world.local.memory->AddFolder(u"C:\\tree\\hollow"_s);
    world.local.memory->AddFile(u"C:\\tree\\sub\\b"_s, "content b");
    world.local.memory->AddFile(u"C:\\tree\\sub\\deep\\c"_s, "content c");
    world.one.memory->AddFile(u"in\\keep"_s, "kept");
    world.one.memory->AddFile(u"in\\tree\\other"_s, "kept too");
  }

  static qint32 Copy(EngineWorld& world, Arrival& arrived) {
    world.prompts.AnswerAllChoices(1);
    const auto file = world.File(u"Workspace\\My Computer\\C:\\tree"_s);
    if (file->Result() != 0) {
      arrived = Arrival::Failed;
      return file->Result();
    }
    const qint32 result = file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {});
    arrived = file->Arrived();
    return result;
  }
};

TEST_P(FileSystemFaultTest, NothingIsSaidToHaveArrivedThatHasNot) {
  const FaultCase& with = GetParam();
  QStringList source;
  QStringList before;
  QStringList after;
  Arrival arrived = Arrival::Failed;
  {
    EngineWorld world;
    SetUpTrees(world);
    source = world.local.memory->Tree();
    before = world.one.memory->Tree();
    ASSERT_EQ(Copy(world, arrived), 0);
    ASSERT_EQ(arrived, Arrival::Everything);
    after = world.one.memory->Tree();
  }
  // A file system that lies in everything cannot be made to take a half-written file away either.
  const bool onlyTellsLies = with.fault == Fault::Lie && with.span == FaultSpan::FromThenOn;
  int call = 1;
  for (bool wentWrong = true; wentWrong; ++call) {
    SCOPED_TRACE(call);
    EngineWorld world;
    SetUpTrees(world);
    FaultyFileSystem& faulty = with.atSource ? *world.local.faulty : *world.one.faulty;
    faulty.Arm(call, with.span, error::kTimeOut, with.fault);
    const qint32 result = Copy(world, arrived);
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
    testing::Values(FaultCase{"SourceRefusesOnce", true, Fault::Refuse, FaultSpan::Once},
                    FaultCase{"SourceRefusesFromThenOn", true, Fault::Refuse, FaultSpan::FromThenOn},
                    FaultCase{"SourceLiesOnce", true, Fault::Lie, FaultSpan::Once},
                    FaultCase{"SourceLiesFromThenOn", true, Fault::Lie, FaultSpan::FromThenOn},
                    FaultCase{"TargetRefusesOnce", false, Fault::Refuse, FaultSpan::Once},
                    FaultCase{"TargetRefusesFromThenOn", false, Fault::Refuse, FaultSpan::FromThenOn},
                    FaultCase{"TargetDoesAndFailsOnce", false, Fault::DoAndFail, FaultSpan::Once},
                    FaultCase{"TargetDoesAndFailsFromThenOn", false, Fault::DoAndFail, FaultSpan::FromThenOn},
                    FaultCase{"TargetLiesOnce", false, Fault::Lie, FaultSpan::Once},
                    FaultCase{"TargetLiesFromThenOn", false, Fault::Lie, FaultSpan::FromThenOn}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace trevane::test
