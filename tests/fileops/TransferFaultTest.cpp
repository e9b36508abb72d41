#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>
#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

const QString kC = QStringLiteral("Workspace\\My Computer\\C:");
const QString kIn = QStringLiteral("Workspace\\My Computer\\D:\\in");
const QString kOne = QStringLiteral("Workspace\\Ctrl1\\in");

/// One command, run again and again with another call going wrong each time.
struct Scenario {
  std::string name;
  bool isDelete = false;
  QString word;
  /// The answer to every question.
  int answer = 0;
  void (*setUp)(TransferWorld&) = nullptr;
  std::function<bool(TransferWorld&)> run;
  /// Whether the engine knows contents in pieces and batches, or as whole values only.
  bool knowsContent = true;
};

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

void SetUpSources(TransferWorld& world) {
  world.local.memory->AddFile(QStringLiteral("C:\\single"), "content of single");
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "content of a");
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\c"), "content of c");
  world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\deep\\d"), "content of d");
  world.local.memory->AddFolder(QStringLiteral("C:\\tree\\empty"));
  world.local.memory->AddFolder(QStringLiteral("D:\\in"));
  world.one.memory->AddFile(QStringLiteral("in\\keep"), "kept");
  world.Select(kC, QStringLiteral("single"));
  world.SelectFolder(kC, QStringLiteral("tree"));
}

/// Files that follow each other.
void SetUpFiles(TransferWorld& world) {
  world.local.memory->AddFile(QStringLiteral("C:\\one"), "content of one");
  world.local.memory->AddFile(QStringLiteral("C:\\two"), "content of two");
  world.Select(kC, QStringLiteral("one"));
  world.Select(kC, QStringLiteral("two"));
  SetUpSources(world);
}

/// Some of another size than what replaces them, some of the same.
void SetUpClashes(TransferWorld& world) {
  world.local.memory->AddFile(QStringLiteral("D:\\in\\single"), "CONTENT OF SINGLE");
  world.local.memory->AddFile(QStringLiteral("D:\\in\\tree\\a"), "CONTENT OF A");
  world.local.memory->AddFile(QStringLiteral("D:\\in\\tree\\sub\\c"), "old");
  world.one.memory->AddFile(QStringLiteral("in\\single"), "CONTENT OF SINGLE");
  world.one.memory->AddFile(QStringLiteral("in\\tree\\a"), "CONTENT OF A");
  world.one.memory->AddFile(QStringLiteral("in\\tree\\sub\\c"), "old");
  // Later: the sources are of another time than what they meet.
  world.local.memory->SetNow({world.local.memory->Now().msecs + 60000});
  SetUpSources(world);
}

std::vector<Scenario> Scenarios() {
  std::vector<Scenario> scenarios;
  for (const bool move : {false, true}) {
    for (const bool across : {false, true}) {
      const std::string base =
          std::string(move ? "Move" : "Copy") + (across ? "BetweenControllers" : "WithinOneController");
      const auto run = [=](TransferWorld& world) {
        return move ? world.Move(across ? kOne : kIn) : world.Copy(across ? kOne : kIn);
      };
      const QString word = move ? QStringLiteral("move") : QStringLiteral("copy");
      scenarios.push_back({base, false, word, 3, SetUpSources, run});
      for (const int answer : {0, 1, 2, 3}) {
        static const char* const kNames[] = {"Yes", "YesAll", "No", "Cancel"};
        scenarios.push_back({base + "Answering" + kNames[answer], false, word, answer, SetUpClashes, run});
      }
      if (across) {
        scenarios.push_back({base + "InBatches", false, word, 3, SetUpFiles, run});
        scenarios.push_back({base + "InBatchesAsValues", false, word, 3, SetUpFiles, run, false});
        scenarios.push_back({base + "AsValues", false, word, 0, SetUpClashes, run, false});
      }
    }
  }
  scenarios.push_back(
      {"DeleteItems", true, QStringLiteral("delete"), 0, SetUpSources, [](TransferWorld& world) {
         return world.DeleteItems(kC, {QStringLiteral("single"), QStringLiteral("tree")});
       }});
  scenarios.push_back(
      {"DeleteNode", true, QStringLiteral("delete"), 0, SetUpSources, [](TransferWorld& world) {
         world.prompts.ExpectBox(PromptAnswer::Yes);
         return world.DeleteNode(kC + QStringLiteral("\\tree"), kFolderBit);
       }});
  return scenarios;
}

QStringList Contents(TransferWorld& world) {
  QStringList contents;
  for (const QStringList& tree :
       {world.local.memory->Tree(), world.one.memory->Tree(), world.two.memory->Tree()}) {
    for (const QString& line : tree) {
      if (line.contains(u'=')) {
        contents.append(line.section(u'=', 1));
      }
    }
  }
  return contents;
}

using Threads = EngineWorld::Threads;

class TransferFaultTest : public testing::TestWithParam<std::tuple<Scenario, Threads>> {
 protected:
  static const Scenario& Case() { return std::get<Scenario>(GetParam()); }
  static Threads OnThreads() { return std::get<Threads>(GetParam()); }

  /// Arms the world and answers how many calls went wrong, to be asked after the run.
  using Arm = std::function<std::function<int()>(TransferWorld&, int call)>;

  static void Prepare(TransferWorld& world) {
    Case().setUp(world);
    world.engine->SetKnowsContent(Case().knowsContent);
    world.prompts.AnswerAllChoices(Case().answer);
    world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  }

  /// What must be there afterwards, whatever goes wrong: of a paste every source content, and what was at the
  /// destination unless the user let it be replaced.
  static QStringList NeverLost() {
    QStringList contents{QStringLiteral("kept")};
    if (Case().isDelete) {
      return contents;
    }
    for (const QString& name :
         {QStringLiteral("single"), QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("d")}) {
      contents.append(QStringLiteral("content of ") + name);
    }
    if (Case().setUp == &SetUpFiles) {
      contents += {QStringLiteral("content of one"), QStringLiteral("content of two")};
    }
    return contents;
  }

  static void CheckAfter(TransferWorld& world, bool succeeded, bool wentWrong, const QStringList& logAfter) {
    const QString message = QStringLiteral("Failed in %1 operation.").arg(Case().word);
    EXPECT_EQ(world.prompts.Texts().count(message), succeeded ? 0 : 1);
    EXPECT_TRUE(succeeded || wentWrong);
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.Gauge().IsLoaded());
    EXPECT_EQ(world.engine->HeldFiles(), 0);
    const QStringList contents = Contents(world);
    for (const QString& content : NeverLost()) {
      EXPECT_TRUE(contents.contains(content)) << "lost: " << content.toStdString();
    }
    const bool mayReplace = Case().answer < 2;
    if (Case().setUp == &SetUpClashes && !mayReplace) {
      EXPECT_EQ(contents.count(QStringLiteral("CONTENT OF SINGLE")), 2);
      EXPECT_EQ(contents.count(QStringLiteral("CONTENT OF A")), 2);
    }
    // The log tells nothing that it would not tell of a run that goes well, and only what was done.
    for (const QString& line : world.Log()) {
      EXPECT_TRUE(logAfter.contains(line)) << line.toStdString();
      if (line.startsWith(QStringLiteral("MOVE|")) || line.startsWith(QStringLiteral("DELETE|"))) {
        EXPECT_FALSE(world.local.memory->Exists(line.section(u'|', 1, 1))) << line.toStdString();
      }
    }
    for (const QString& gone : world.operations.GoneAddresses()) {
      EXPECT_FALSE(world.local.memory->Exists(AddressToEnginePath(gone))) << gone.toStdString();
    }
    for (const QString& name : {QStringLiteral("single"), QStringLiteral("tree")}) {
      if (!world.local.memory->Exists(QStringLiteral("C:\\") + name) && !world.engine->FaultCount()) {
        EXPECT_TRUE(world.operations.GoneAddresses().contains(kC + u'\\' + name)) << name.toStdString();
      }
    }
  }

  static void RunEveryFault(const Arm& arm, bool cachesNothing) {
    QStringList logAfter;
    {
      TransferWorld world(true, OnThreads());
      Prepare(world);
      ASSERT_TRUE(Case().run(world));
      world.StopThreads();
      logAfter = world.Log();
      EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
      CheckAfter(world, true, false, logAfter);
    }
    // A fault may make a copy ask of what it has just made; an answer "No" then leaves a copy, not a move.
    for (QString line : QStringList(logAfter)) {
      logAfter.append(line.replace(QStringLiteral("MOVE|"), QStringLiteral("COPY|")));
    }
    if (Case().answer == 2 || Case().answer == 3) {
      logAfter +=
          {QStringLiteral("COPY|C:\\single|D:\\in\\single"), QStringLiteral("COPY|C:\\tree|D:\\in"),
           QStringLiteral("COPY|C:\\single|Ctrl1\\in\\single"), QStringLiteral("COPY|C:\\tree|Ctrl1\\in")};
    }
    int call = 1;
    for (bool wentWrong = true; wentWrong; ++call) {
      SCOPED_TRACE(testing::Message() << "call " << call);
      TransferWorld world(true, OnThreads());
      Prepare(world);
      const std::function<int()> faults = arm(world, call);
      const bool succeeded = Case().run(world);
      // What was given up is over, too.
      world.StopThreads();
      wentWrong = faults() > 0;
      for (const auto& machine : {world.local, world.one, world.two}) {
        machine.faulty->Disarm();
      }
      world.engine->Disarm();
      if (cachesNothing) {
        EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
      }
      CheckAfter(world, succeeded, wentWrong, logAfter);
      if (testing::Test::HasFailure()) {
        return;
      }
      ASSERT_LT(call, 5000);
    }
    EXPECT_GT(call, 3) << "no call went wrong";
  }
};

TEST_P(TransferFaultTest, EveryEngineCallThatFailsOnceLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        world.engine->Arm(call);
        return [&world] { return world.engine->FaultCount(); };
      },
      true);
}

TEST_P(TransferFaultTest, EveryEngineCallThatYieldsNothingLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        world.engine->Arm(call, FaultSpan::Once, 0, EngineFault::YieldNothing);
        return [&world] { return world.engine->FaultCount(); };
      },
      true);
}

TEST_P(TransferFaultTest, AnEngineThatKeepsFailingLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        world.engine->Arm(call, FaultSpan::FromThenOn);
        return [&world] { return world.engine->FaultCount(); };
      },
      false);
}

std::function<int()> ArmFileSystems(TransferWorld& world, int call, FaultSpan span, Fault fault,
                                    bool destination) {
  const auto& machine = destination ? world.one : world.local;
  machine.faulty->Arm(call, span, error::kTimeOut, fault);
  const auto faulty = machine.faulty;
  return [faulty] { return faulty->FaultCount(); };
}

class LyingProviderTest : public TransferFaultTest {};
class LyingDestinationTest : public TransferFaultTest {};

std::vector<Scenario> ScenariosBetweenControllers() {
  std::vector<Scenario> scenarios = Scenarios();
  std::erase_if(scenarios, [](const Scenario& scenario) {
    return scenario.name.find("BetweenControllers") == std::string::npos;
  });
  return scenarios;
}

TEST_P(LyingProviderTest, ASourceThatLiesOnceLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::Once, Fault::Lie, false); },
                true);
}

TEST_P(LyingProviderTest, ASourceThatFailsAfterTheWorkLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::Once, Fault::DoAndFail, false);
      },
      true);
}

TEST_P(LyingProviderTest, ASourceThatKeepsFailingLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::FromThenOn, Fault::Refuse, false);
      },
      true);
}

TEST_P(LyingProviderTest, ASourceThatReckonsOnceLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::Once, Fault::LieAndReckon, false);
      },
      true);
}

TEST_P(LyingDestinationTest, ADestinationThatLiesOnceLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::Once, Fault::Lie, true); },
                true);
}

TEST_P(LyingDestinationTest, ADestinationFailingAfterTheWorkLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::Once, Fault::DoAndFail, true); },
                true);
}

TEST_P(LyingDestinationTest, ADestinationThatKeepsLyingLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::FromThenOn, Fault::Lie, true); },
                true);
}

TEST_P(LyingDestinationTest, ADestinationThatReckonsOnceLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::Once, Fault::LieAndReckon, true);
      },
      true);
}

TEST_P(LyingDestinationTest, ADestinationThatKeepsReckoningLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::FromThenOn, Fault::LieAndReckon, true);
      },
      true);
}

const auto kNameOf = [](const auto& info) {
  return std::get<Scenario>(info.param).name +
         (std::get<Threads>(info.param) == Threads::OnePerController ? "OnThreads" : "");
};

/// Each scenario without threads and over one for each controller.
auto OverBoth(const std::vector<Scenario>& scenarios) {
  return testing::Combine(testing::ValuesIn(scenarios),
                          testing::Values(Threads::None, Threads::OnePerController));
}

INSTANTIATE_TEST_SUITE_P(All, TransferFaultTest, OverBoth(Scenarios()), kNameOf);
INSTANTIATE_TEST_SUITE_P(All, LyingProviderTest, OverBoth(Scenarios()), kNameOf);
INSTANTIATE_TEST_SUITE_P(All, LyingDestinationTest, OverBoth(ScenariosBetweenControllers()), kNameOf);

}  // namespace
}  // namespace trevane::test
