#include "engine/items/clsIxoFile.h"
#include "engine/model/IxoFile.h"
#include "tests/support/EngineWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

/// One operation, run again and again with another call of the engine going wrong each time.
struct Scenario {
  const char* name;
  std::function<void(EngineWorld&)> setUp;
  /// Answers the result of the operation, 0 for success.
  std::function<qint32(EngineWorld&)> run;
};

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

void SetUpTrees(EngineWorld& world) {
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "new a");
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\b"), "new b");
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\c"), "new c");
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\deep\\d"), "new d");
  world.local.memory->AddFile(QStringLiteral("C:\\single"), "new single");
  world.local.memory->AddFolder(QStringLiteral("D:\\in"));
  world.one.memory->AddFile(QStringLiteral("in\\keep"), "kept");
  world.two.memory->AddFile(QStringLiteral("base\\root\\keep"), "kept");
}

void SetUpClashes(EngineWorld& world) {
  SetUpTrees(world);
  world.one.memory->AddFile(QStringLiteral("in\\single"), "old single");
  world.one.memory->AddFile(QStringLiteral("in\\tree\\b"), "old b");
  world.one.memory->AddFile(QStringLiteral("in\\tree\\sub\\c"), "old c");
}

std::function<qint32(EngineWorld&)> CopyBetween(const QString& from, const QString& to, int answer) {
  return [=](EngineWorld& world) {
    world.prompts.AnswerAllChoices(answer);
    const auto file = world.File(from);
    if (file->Result() != 0) {
      return file->Result();
    }
    const qint32 result = file->CopyDiffCtrl(to, {});
    EXPECT_EQ(result, file->Result());
    EXPECT_EQ(result != 0, file->Arrived() == Arrival::Failed);
    return result;
  };
}

std::function<qint32(EngineWorld&)> OnFile(const QString& address,
                                           const std::function<void(clsIxoFile&)>& work) {
  return [=](EngineWorld& world) {
    const auto file = world.File(address);
    if (file->Result() == 0) {
      work(*file);
    } else {
      EXPECT_EQ(file->IxoFile(), nullptr);
    }
    return file->Result();
  };
}

std::function<qint32(EngineWorld&)> ListFolder(const QString& address) {
  return OnFile(address, [](clsIxoFile& file) {
    const Listing entries = file.List();
    if (file.Result() != 0) {
      EXPECT_TRUE(entries.empty());
      return;
    }
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].name, QStringLiteral("a"));
    EXPECT_EQ(entries[0].size, 5);
    EXPECT_TRUE(entries[2].IsFolder());
  });
}

const QString kTree = QStringLiteral("Workspace\\My Computer\\C:\\tree");
const QString kSingle = QStringLiteral("Workspace\\My Computer\\C:\\single");
const QString kInside = QStringLiteral("Workspace\\Ctrl1\\in");

std::vector<Scenario> Scenarios() {
  return {
      {"SetPathLocal", SetUpTrees, OnFile(kTree + QStringLiteral("\\sub\\c"), [](clsIxoFile&) {})},
      {"SetPathController", SetUpTrees, OnFile(kInside + QStringLiteral("\\keep"), [](clsIxoFile&) {})},
      {"ReadEverything", SetUpTrees,
       OnFile(kTree,
              [](clsIxoFile& file) {
                const Variant names = file.FileNames();
                if (file.Result() != 0) {
                  EXPECT_EQ(names, Variant(Missing{}));
                  return;
                }
                for (const QString& name : std::get<QStringList>(names)) {
                  const auto child = file.GetIxoFile(name);
                  if (file.Result() != 0) {
                    EXPECT_EQ(child, nullptr);
                    return;
                  }
                  file.ReleaseChild(child);
                }
                static_cast<void>(file.FullPath());
              })},
      {"ListAFolder", SetUpTrees, ListFolder(kTree)},
      {"ListAFolderObjectByObject",
       [](EngineWorld& world) {
         SetUpTrees(world);
         world.engine->SetKnowsList(false);
       },
       ListFolder(kTree)},
      {"CopyWithinOneController", SetUpTrees,
       OnFile(kTree,
              [](clsIxoFile& file) {
                const qint32 code = file.Copy(QStringLiteral("Workspace\\My Computer\\D:\\in"), {}, false);
                EXPECT_EQ(code, file.Result());
              })},
      {"CopyIntoARoot",
       [](EngineWorld& world) {
         SetUpTrees(world);
         world.Connect(QStringLiteral("Rooted"), world.two, QStringLiteral("/base/root"));
       },
       OnFile(QStringLiteral("Workspace\\Rooted\\keep"),
              [](clsIxoFile& file) {
                file.Copy(QStringLiteral("Workspace\\Rooted"), QStringLiteral("copy"), false);
              })},
      {"CopyAFileAcross", SetUpTrees, CopyBetween(kSingle, kInside, 3)},
      {"CopyAFolderAcross", SetUpTrees, CopyBetween(kTree, kInside, 3)},
      {"CopyAcrossIntoARoot",
       [](EngineWorld& world) {
         SetUpTrees(world);
         world.Connect(QStringLiteral("Rooted"), world.two, QStringLiteral("/base/root"));
       },
       CopyBetween(kTree, QStringLiteral("Workspace\\Rooted"), 3)},
      {"CopyAFileAcrossAnsweringYes", SetUpClashes, CopyBetween(kSingle, kInside, 0)},
      {"CopyAFileAcrossAnsweringNo", SetUpClashes, CopyBetween(kSingle, kInside, 2)},
      {"CopyAFolderAcrossAnsweringYes", SetUpClashes, CopyBetween(kTree, kInside, 0)},
      {"CopyAFolderAcrossAnsweringYesAll", SetUpClashes, CopyBetween(kTree, kInside, 1)},
      {"CopyAFolderAcrossAnsweringNo", SetUpClashes, CopyBetween(kTree, kInside, 2)},
      {"CopyAFolderAcrossAnsweringCancel", SetUpClashes, CopyBetween(kTree, kInside, 3)},
      {"AddAFolder", SetUpTrees,
       OnFile(kInside,
              [](clsIxoFile& file) {
                QString options = QStringLiteral("@Create=2");
                const auto made = file.AddIxoFile(QStringLiteral("New Folder"), {}, options);
                EXPECT_EQ(file.Result() == 0, made != nullptr);
                if (made) {
                  file.ReleaseChild(made);
                }
              })},
      {"Rename", SetUpClashes,
       OnFile(kInside + QStringLiteral("\\single"),
              [](clsIxoFile& file) { file.Rename(QStringLiteral("renamed")); })},
      {"Delete", SetUpClashes,
       OnFile(kInside + QStringLiteral("\\tree"), [](clsIxoFile& file) { file.Delete(); })},
      {"Write", SetUpClashes,
       OnFile(kInside + QStringLiteral("\\single"),
              [](clsIxoFile& file) { file.PutValue(QByteArray("new single")); })},
  };
}

/// A file system's tree as it is before, and as it is after the operation went well.
struct Expectation {
  QStringList before;
  QStringList after;

  /// Every line is in before or after, so no item is incomplete; every file that is in both is present.
  void Check(const QStringList& now, bool succeeded) const {
    if (succeeded) {
      EXPECT_EQ(now, after);
      return;
    }
    const auto nameOf = [](const QString& line) { return line.section(u'=', 0, 0); };
    QStringList names;
    for (const QString& line : now) {
      EXPECT_TRUE(before.contains(line) || after.contains(line)) << line.toStdString();
      names.append(nameOf(line));
    }
    QStringList namesAfter;
    for (const QString& line : after) {
      namesAfter.append(nameOf(line));
    }
    for (const QString& line : before) {
      if (namesAfter.contains(nameOf(line))) {
        EXPECT_TRUE(names.contains(nameOf(line))) << "lost: " << line.toStdString();
      }
    }
  }
};

using Threads = EngineWorld::Threads;

class EngineFaultTest : public testing::TestWithParam<std::tuple<Scenario, Threads>> {
 protected:
  static const Scenario& Case() { return std::get<Scenario>(GetParam()); }
  static Threads OnThreads() { return std::get<Threads>(GetParam()); }
};

TEST_P(EngineFaultTest, NoFailingCallDamagesFilesOrLeaksObjects) {
  Expectation local;
  Expectation one;
  Expectation two;
  {
    EngineWorld world(true, OnThreads());
    Case().setUp(world);
    local.before = world.local.memory->Tree();
    one.before = world.one.memory->Tree();
    two.before = world.two.memory->Tree();
    ASSERT_EQ(Case().run(world), 0);
    world.StopThreads();
    local.after = world.local.memory->Tree();
    one.after = world.one.memory->Tree();
    two.after = world.two.memory->Tree();
    EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
  }
  struct Way {
    const char* label;
    EngineFault fault;
    qint32 number;
  };
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (const Way& way : {Way{"a number", EngineFault::Raise, error::kTimeOut},
                           {"no number", EngineFault::Raise, 0},
                           {"no object", EngineFault::YieldNothing, error::kTimeOut}}) {
      int call = 1;
      for (bool wentWrong = true; wentWrong; ++call) {
        SCOPED_TRACE(testing::Message() << "call " << call << (span == FaultSpan::Once ? " once" : " and on")
                                        << ", " << way.label);
        EngineWorld world(true, OnThreads());
        Case().setUp(world);
        if (span == FaultSpan::FromThenOn) {
          // The connection is gone: the file systems behind it are as well.
          world.engine->SetOnFault([&world] {
            world.local.faulty->Arm(1, FaultSpan::FromThenOn);
            world.one.faulty->Arm(1, FaultSpan::FromThenOn);
            world.two.faulty->Arm(1, FaultSpan::FromThenOn);
          });
        }
        world.engine->Arm(call, span, way.number, way.fault);
        const qint32 result = Case().run(world);
        // What was given up is over, too.
        world.StopThreads();
        wentWrong = world.engine->FaultCount() > 0;
        world.engine->Disarm();
        EXPECT_EQ(world.engine->HeldFiles(), 0);
        if (span == FaultSpan::Once) {
          EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
        }
        local.Check(world.local.memory->Tree(), result == 0);
        one.Check(world.one.memory->Tree(), result == 0);
        two.Check(world.two.memory->Tree(), result == 0);
        EXPECT_TRUE(wentWrong || result == 0);
        if (testing::Test::HasFailure()) {
          return;
        }
      }
      EXPECT_GT(call, 3) << "no call went wrong";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, EngineFaultTest,
                         testing::Combine(testing::ValuesIn(Scenarios()),
                                          testing::Values(Threads::None, Threads::OnePerController)),
                         [](const auto& info) {
                           return std::string(std::get<Scenario>(info.param).name) +
                                  (std::get<Threads>(info.param) == Threads::OnePerController ? "OnThreads"
                                                                                              : "");
                         });

}  // namespace
}  // namespace trevane::test
