#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>
#include <vector>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const QString kC = u"Workspace\\My Computer\\C:"_s;
const QString kIn = u"Workspace\\My Computer\\D:\\in"_s;
const QString kOne = u"Workspace\\Ctrl1\\in"_s;

/// One command, run again and again with another call going wrong each time.
struct Scenario {
  std::string name;
  bool isDelete = false;
  QString word;
  /// The answer to every question.
  int answer = 0;
  void (*setUp)(TransferWorld&) = nullptr;
  std::function<bool(TransferWorld&)> run;
};

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

void SetUpSources(TransferWorld& world) {
  world.local.memory->AddFile(u"C:\\single"_s, "content of single");
  world.local.memory->AddFile(u"C:\\tree\\a"_s, "content of a");
  world.local.memory->AddFile(u"C:\\tree\\sub\\c"_s, "content of c");
  world.local.memory->AddFile(u"C:\\tree\\sub\\deep\\d"_s, "content of d");
  world.local.memory->AddFolder(u"C:\\tree\\empty"_s);
  world.local.memory->AddFolder(u"D:\\in"_s);
  world.one.memory->AddFile(u"in\\keep"_s, "kept");
  world.Select(kC, u"single"_s);
  world.SelectFolder(kC, u"tree"_s);
}

/// Some of another size than what replaces them, some of the same.
void SetUpClashes(TransferWorld& world) {
  world.local.memory->AddFile(u"D:\\in\\single"_s, "CONTENT OF SINGLE");
  world.local.memory->AddFile(u"D:\\in\\tree\\a"_s, "CONTENT OF A");
  world.local.memory->AddFile(u"D:\\in\\tree\\sub\\c"_s, "old");
  world.one.memory->AddFile(u"in\\single"_s, "CONTENT OF SINGLE");
  world.one.memory->AddFile(u"in\\tree\\a"_s, "CONTENT OF A");
  world.one.memory->AddFile(u"in\\tree\\sub\\c"_s, "old");
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
      const QString word = move ? u"move"_s : u"copy"_s;
      scenarios.push_back({base, false, word, 3, SetUpSources, run});
      for (const int answer : {0, 1, 2, 3}) {
        static const char* const kNames[] = {"Yes", "YesAll", "No", "Cancel"};
        scenarios.push_back({base + "Answering" + kNames[answer], false, word, answer, SetUpClashes, run});
      }
    }
  }
  scenarios.push_back({"DeleteItems", true, u"delete"_s, 0, SetUpSources, [](TransferWorld& world) {
                         return world.DeleteItems(kC, {u"single"_s, u"tree"_s});
                       }});
  scenarios.push_back({"DeleteNode", true, u"delete"_s, 0, SetUpSources, [](TransferWorld& world) {
                         world.prompts.ExpectBox(PromptAnswer::Yes);
                         return world.DeleteNode(kC + u"\\tree"_s, kFolderBit);
                       }});
  return scenarios;
}

QStringList Contents(TransferWorld& world) {
  QStringList contents;
  for (const QStringList& tree :
       {world.local.memory->Tree(), world.one.memory->Tree(), world.two.memory->Tree()}) {
    for (const QString& line : tree) {
      if (line.contains(u'='))
        contents.append(line.section(u'=', 1));
    }
  }
  return contents;
}

class TransferFaultTest : public testing::TestWithParam<Scenario> {
 protected:
  /// Arms the world and answers how many calls went wrong, to be asked after the run.
  using Arm = std::function<std::function<int()>(TransferWorld&, int call)>;

  static void Prepare(TransferWorld& world) {
    GetParam().setUp(world);
    world.prompts.AnswerAllChoices(GetParam().answer);
    world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  }

  /// What must be there afterwards, whatever goes wrong: of a paste every source content, and what was at the
  /// destination unless the user let it be replaced.
  static QStringList NeverLost() {
    QStringList contents{u"kept"_s};
    if (GetParam().isDelete)
      return contents;
    for (const QString& name : {u"single"_s, u"a"_s, u"c"_s, u"d"_s})
      contents.append(u"content of "_s + name);
    return contents;
  }

  static void CheckAfter(TransferWorld& world, bool succeeded, bool wentWrong, const QStringList& logAfter) {
    const QString message = u"Failed in %1 operation."_s.arg(GetParam().word);
    EXPECT_EQ(world.prompts.Texts().count(message), succeeded ? 0 : 1);
    EXPECT_TRUE(succeeded || wentWrong);
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.Gauge().IsLoaded());
    EXPECT_EQ(world.engine->HeldFiles(), 0);
    const QStringList contents = Contents(world);
    for (const QString& content : NeverLost())
      EXPECT_TRUE(contents.contains(content)) << "lost: " << content.toStdString();
    const bool mayReplace = GetParam().answer < 2;
    if (GetParam().setUp == &SetUpClashes && !mayReplace) {
      EXPECT_EQ(contents.count(u"CONTENT OF SINGLE"_s), 2);
      EXPECT_EQ(contents.count(u"CONTENT OF A"_s), 2);
    }
    // The log tells nothing that it would not tell of a run that goes well, and only what was done.
    for (const QString& line : world.Log()) {
      EXPECT_TRUE(logAfter.contains(line)) << line.toStdString();
      if (line.startsWith(u"MOVE|"_s) || line.startsWith(u"DELETE|"_s)) {
        EXPECT_FALSE(world.local.memory->Exists(line.section(u'|', 1, 1))) << line.toStdString();
      }
    }
    for (const QString& gone : world.operations.GoneAddresses())
      EXPECT_FALSE(world.local.memory->Exists(AddressToEnginePath(gone))) << gone.toStdString();
    for (const QString& name : {u"single"_s, u"tree"_s}) {
      if (!world.local.memory->Exists(u"C:\\"_s + name) && !world.engine->FaultCount()) {
        EXPECT_TRUE(world.operations.GoneAddresses().contains(kC + u'\\' + name)) << name.toStdString();
      }
    }
  }

  static void RunEveryFault(const Arm& arm, bool cachesNothing) {
    QStringList logAfter;
    {
      TransferWorld world;
      Prepare(world);
      ASSERT_TRUE(GetParam().run(world));
      logAfter = world.Log();
      EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
      CheckAfter(world, true, false, logAfter);
    }
    // A fault may make a copy ask of what it has just made; an answer "No" then leaves a copy, not a move.
    for (QString line : QStringList(logAfter))
      logAfter.append(line.replace(u"MOVE|"_s, u"COPY|"_s));
    if (GetParam().answer == 2 || GetParam().answer == 3) {
      logAfter += {u"COPY|C:\\single|D:\\in\\single"_s, u"COPY|C:\\tree|D:\\in"_s,
                   u"COPY|C:\\single|Ctrl1\\in\\single"_s, u"COPY|C:\\tree|Ctrl1\\in"_s};
    }
    int call = 1;
    for (bool wentWrong = true; wentWrong; ++call) {
      SCOPED_TRACE(testing::Message() << "call " << call);
      TransferWorld world;
      Prepare(world);
      const std::function<int()> faults = arm(world, call);
      const bool succeeded = GetParam().run(world);
      wentWrong = faults() > 0;
      for (const auto& machine : {world.local, world.one, world.two})
        machine.faulty->Disarm();
      world.engine->Disarm();
      if (cachesNothing) {
        EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
      }
      CheckAfter(world, succeeded, wentWrong, logAfter);
      if (testing::Test::HasFailure())
        return;
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

TEST_P(TransferFaultTest, AnEngineThatFailsFromACallOnLosesNothing) {
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

TEST_P(LyingProviderTest, ASourceSideThatLiesOnceLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::Once, Fault::Lie, false); },
                true);
}

TEST_P(LyingProviderTest, ASourceSideThatFailsAfterItHasDoneItLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::Once, Fault::DoAndFail, false);
      },
      true);
}

TEST_P(LyingProviderTest, ASourceSideThatFailsFromACallOnLosesNothing) {
  RunEveryFault(
      [](TransferWorld& world, int call) {
        return ArmFileSystems(world, call, FaultSpan::FromThenOn, Fault::Refuse, false);
      },
      true);
}

TEST_P(LyingDestinationTest, ADestinationSideThatLiesOnceLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::Once, Fault::Lie, true); },
                true);
}

TEST_P(LyingDestinationTest, ADestinationSideThatFailsAfterItHasDoneItLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::Once, Fault::DoAndFail, true); },
                true);
}

TEST_P(LyingDestinationTest, ADestinationSideThatLiesFromACallOnLosesNothing) {
  RunEveryFault([](TransferWorld& world,
                   int call) { return ArmFileSystems(world, call, FaultSpan::FromThenOn, Fault::Lie, true); },
                true);
}

const auto kNameOf = [](const auto& info) { return info.param.name; };
INSTANTIATE_TEST_SUITE_P(All, TransferFaultTest, testing::ValuesIn(Scenarios()), kNameOf);
INSTANTIATE_TEST_SUITE_P(All, LyingProviderTest, testing::ValuesIn(Scenarios()), kNameOf);
INSTANTIATE_TEST_SUITE_P(All, LyingDestinationTest, testing::ValuesIn(ScenariosBetweenControllers()),
                         kNameOf);

}  // namespace
}  // namespace trevane::test
