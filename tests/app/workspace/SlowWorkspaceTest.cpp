// Workspace files whose controllers are slow, fail or hang.
#include "app/workspace/WorkspaceFile.h"
#include "engine/remote/RemoteContext.h"
#include "tests/support/ConnectWorld.h"
#include "tests/support/ScriptedCells.h"
#include "tests/support/ScriptedWaiter.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

class SlowWorkspaceTest : public testing::Test {
 protected:
  SlowWorkspaceTest() { world_.drives.RefreshDrives(); }
  ~SlowWorkspaceTest() override {
    cells_->ReleaseAll();
    EXPECT_TRUE(context_.controllers->StopAll(std::chrono::seconds(20)));
    EXPECT_EQ(cells_->LiveConnections(), 0);
  }

  static QString Name(int number) { return QStringLiteral("R%1").arg(number, 2, 10, QLatin1Char('0')); }
  static QStringList Names(const std::vector<int>& numbers) {
    QStringList names;
    for (const int number : numbers) {
      names += Name(number);
    }
    return names;
  }
  static QByteArray Section(const QString& name, const char* provider = "IxoProv.Slow",
                            const QByteArray& root = "/") {
    return '[' + name.toUtf8() + "]\r\nCtrlName=" + name.toUtf8() + "\r\nProvider=" + provider +
           "\r\nMachine=" + name.toUtf8() + "\r\nRoot=" + root + "\r\n";
  }
  static QString FailedText(const QString& name) {
    return QStringLiteral("Failed in connecting to the controller( ") + name + QStringLiteral(" ).");
  }
  ScriptedServer& Cell(int number) { return cells_->At(Name(number)); }

  bool Open(const QByteArray& sections) {
    const QString file = QDir::toNativeSeparators(folder_.filePath(QStringLiteral("cells.fmg")));
    WriteFile(file, sections);
    return workspace_.OpenWorkspace(file);
  }
  QStringList Logged() {
    QStringList names;
    for (const QString& line : world_.log.Lines()) {
      names += line.section(u'|', 0, 1);
    }
    return names;
  }

  QTemporaryDir folder_;
  std::shared_ptr<ScriptedCells> cells_ = std::make_shared<ScriptedCells>();
  WindowQueue queue_;
  ScriptedWaiter waiter_;
  RemoteContext context_{queue_, waiter_};
  ConnectWorld world_{cells_->AsProvider(QStringLiteral("IxoProv.Slow")), &context_};
  QStringList captions_;
  WorkspaceFile workspace_{{.connector = world_.connector,
                            .volumes = world_.volumes,
                            .files = world_.files,
                            .navigator = world_.navigator,
                            .tree = world_.tree,
                            .host = world_.host,
                            .programFolder = QStringLiteral("/program"),
                            .setCaption = [this](const QString& text) { captions_ += text; },
                            .resetSaveImage = [] {}}};
};

TEST_F(SlowWorkspaceTest, TwentyControllersAreShownInTheOrderOfTheFile) {
  QByteArray sections;
  std::vector<int> fast;
  std::vector<int> slow;
  std::vector<int> failing;
  for (int i = 0; i < 20; ++i) {
    (i % 2 == 0 ? fast : i % 4 == 1 ? failing : slow).push_back(i);
    sections += Section(Name(i), i % 2 == 0 ? "IxoProv.Cell" : "IxoProv.Slow");
  }
  for (const int i : failing) {
    Cell(i).RefuseOpening(error::kLogonFailure);
    world_.prompts.ExpectBox(FailedText(Name(i)));
  }
  for (const int i : slow) {
    Cell(i).HangAtOpening(Hearing::ObeysCancel);
  }
  // The slow ones come up in the reverse order.
  auto next = slow.rbegin();
  waiter_.SetTurn([&](RunningCall&) {
    for (; next != slow.rend() && Cell(*next).IsHanging(); ++next) {
      Cell(*next).Release();
    }
    queue_.Wake();
    return false;
  });
  std::vector<qsizetype> shown;
  world_.prompts.RecordedGauge().onIncrement = [&] {
    EXPECT_EQ(world_.prompts.RecordedGauge().GageMax(), 21);
    shown.push_back(world_.Nodes().size());
  };
  EXPECT_TRUE(Open(sections));

  QStringList connected;
  QStringList nodes;
  QStringList logged;
  QStringList labels;
  QStringList boxes;
  std::vector<qsizetype> oneByOne;
  for (int i = 0; i < 20; ++i) {
    const bool fails = i % 4 == 1;
    nodes += fails ? u'!' + Name(i) : Name(i);
    labels += QStringLiteral("Connect Controller(") + Name(i) + QStringLiteral(").");
    oneByOne.push_back(i + 1);
    if (fails) {
      boxes += FailedText(Name(i));
    } else {
      connected += Name(i);
      logged += QStringLiteral("CONNECT|") + Name(i);
    }
  }
  EXPECT_EQ(world_.Registered(), connected);
  EXPECT_EQ(world_.Nodes(), nodes);
  EXPECT_EQ(Logged(), logged);
  EXPECT_EQ(world_.prompts.Texts(), boxes);
  EXPECT_EQ(world_.prompts.RecordedGauge().PaintedLabels(), labels);
  EXPECT_EQ(shown, oneByOne);
  EXPECT_EQ(captions_.size(), 1);
  EXPECT_EQ(waiter_.Now(), 0);
  world_.ExpectConsistent();
}

TEST_F(SlowWorkspaceTest, EveryFailureTellsItsReason) {
  Cell(0).RefuseOpening(error::kLogonFailure);
  world_.prompts.ExpectBox(FailedText(Name(0)));
  world_.prompts.ExpectBox(FailedText(Name(1)));
  EXPECT_TRUE(Open(Section(Name(0)) + Section(Name(1), "IxoProv.Slow", "/none") + Section(Name(2))));
  ASSERT_EQ(world_.prompts.Asked().size(), 2U);
  EXPECT_TRUE(world_.prompts.Asked()[0].informativeText.startsWith(Name(0) + u'\n'));
  EXPECT_TRUE(world_.prompts.Asked()[1].informativeText.startsWith(Name(1) + u'\n'));
  EXPECT_TRUE(world_.prompts.Asked()[1].informativeText.contains(QStringLiteral("none")));
  EXPECT_EQ(world_.Registered(), Names({2}));
}

TEST_F(SlowWorkspaceTest, ThoseThatHangAreWaitedForTogether) {
  QByteArray sections;
  QStringList nodes;
  for (int i = 0; i < 9; ++i) {
    sections += Section(Name(i));
    nodes += i == 1 ? Name(i) : u'!' + Name(i);
    if (i != 1) {
      Cell(i).HangAtOpening(i == 2 ? Hearing::Deaf : Hearing::ObeysCancel);
      world_.prompts.ExpectBox(FailedText(Name(i)));
    }
  }
  bool allHang = false;
  waiter_.SetTurn([&](RunningCall& call) {
    queue_.Wake();
    // The ninth begins when the second is open.
    allHang = allHang || Cell(8).IsHanging();
    return allHang && call.What() == QStringLiteral("Connecting");
  });
  EXPECT_TRUE(Open(sections + Section(Name(9), "IxoProv.Cell")));
  EXPECT_EQ(world_.Registered(), Names({1, 9}));
  EXPECT_EQ(world_.Nodes(), nodes + Names({9}));
  EXPECT_EQ(world_.prompts.Asked()[0].informativeText,
            Name(0) + QStringLiteral("\nThe controller R00 has not answered for 10 seconds"));
  EXPECT_LE(waiter_.Now(),
            RunningCall::kLongestSilence + RunningCall::kLongestEnding + 2 * ScriptedWaiter::kTick);
  world_.ExpectConsistent();
}

TEST_F(SlowWorkspaceTest, TheGaugesCancelKeepsWhatIsOpen) {
  for (const Hearing hearing : {Hearing::ObeysCancel, Hearing::Deaf}) {
    QByteArray sections = Section(Name(0), "IxoProv.Cell");
    // The tenth begins when the ninth is open, since all others hang.
    for (const int i : {1, 2, 3, 4, 5, 6, 7, 9}) {
      Cell(i).HangAtOpening(hearing);
    }
    for (int i = 1; i < 14; ++i) {
      sections += Section(Name(i), i == 11 ? "IxoProv.Cell" : "IxoProv.Slow");
    }
    waiter_.SetTurn([&](RunningCall& call) {
      if (Cell(9).IsHanging() && !world_.prompts.Gauge().IsClickedCancel()) {
        world_.prompts.RecordedGauge().ClickCancel();
        call.Cancel();
      }
      queue_.Wake();
      return false;
    });
    captions_.clear();
    world_.log.Clear();
    world_.requests.clear();
    EXPECT_TRUE(Open(sections));
    EXPECT_EQ(world_.Registered(), Names({0, 8}));
    EXPECT_EQ(world_.Nodes(), Names({0, 8}));
    EXPECT_EQ(world_.Items(), (QStringList{QStringLiteral("My Computer")} + Names({0, 8})));
    EXPECT_EQ(Logged(), (QStringList{QStringLiteral("CONNECT|R00"), QStringLiteral("CONNECT|R08")}));
    EXPECT_EQ(world_.requests, QStringList{QStringLiteral("R00|")}) << "nothing is begun any more";
    EXPECT_EQ(captions_.size(), 1);
    EXPECT_EQ(waiter_.Now(), 0) << "nobody waits for those that are deaf";
    world_.ExpectConsistent();
    cells_->ReleaseAll();
    EXPECT_TRUE(world_.connector.DisconnectAllControllers());
  }
}

TEST_F(SlowWorkspaceTest, TheEndOfTheProgramAsksNothing) {
  for (const auto how : {UserPrompts::Ending::ByUser, UserPrompts::Ending::BySystem}) {
    world_.prompts.ForgetEnding();
    Cell(1).HangAtOpening(Hearing::Deaf);
    Cell(2).RefuseOpening(error::kLogonFailure);
    waiter_.SetTurn([&](RunningCall& call) {
      if (!Cell(1).WaitUntilHanging(call)) {
        return false;
      }
      world_.prompts.End(how);
      call.Cancel();
      return false;
    });
    Open(Section(Name(0)) + Section(Name(1)) + Section(Name(2)) + Section(Name(3), "IxoProv.Cell"));
    EXPECT_TRUE(world_.requests.isEmpty());
    EXPECT_TRUE(world_.prompts.Asked().empty());
    EXPECT_EQ(waiter_.Now(), 0);
    cells_->ReleaseAll();
    EXPECT_TRUE(world_.connector.DisconnectAllControllers());
  }
}

TEST_F(SlowWorkspaceTest, ACancelledPasswordFailsThatOneAlone) {
  Cell(0).RefuseOpening(error::kCancelled);
  world_.prompts.ExpectBox(FailedText(Name(0)));
  EXPECT_TRUE(Open(Section(Name(0)) + Section(Name(1))));
  EXPECT_EQ(world_.prompts.Asked()[0].informativeText, Name(0) + QStringLiteral("\nCancelled."));
  EXPECT_EQ(world_.Registered(), Names({1}));
}

TEST_F(SlowWorkspaceTest, ACancelledOneCanBeConnectedAgain) {
  Cell(0).HangAtOpening(Hearing::Deaf);
  waiter_.SetTurn([&](RunningCall& call) {
    if (!Cell(0).WaitUntilHanging(call)) {
      return false;
    }
    world_.prompts.RecordedGauge().ClickCancel();
    call.Cancel();
    return false;
  });
  EXPECT_TRUE(Open(Section(Name(0))));
  EXPECT_TRUE(world_.Nodes().isEmpty());
  waiter_.SetTurn({});
  EXPECT_TRUE(Open(Section(Name(0))));
  EXPECT_TRUE(Cell(0).IsHanging());
  EXPECT_EQ(world_.Registered(), Names({0}));
}

TEST_F(SlowWorkspaceTest, EveryFailingCallOfTheEngineIsOfOneController) {
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  const QByteArray sections = Section(Name(0)) + Section(Name(1), "IxoProv.Cell") + Section(Name(2));
  bool wentWrong = true;
  for (int call = 1; wentWrong; ++call) {
    SCOPED_TRACE(call);
    ASSERT_LT(call, 100);
    ASSERT_TRUE(world_.connector.DisconnectAllControllers());
    world_.prompts.ForgetAsked();
    world_.log.Clear();
    world_.engine->Arm(call, FaultSpan::Once, error::kLogonFailure);
    EXPECT_TRUE(Open(sections));
    wentWrong = world_.engine->FaultCount() > 0;
    world_.engine->Disarm();
    world_.ExpectConsistent();
    EXPECT_EQ(world_.Registered().size() + world_.prompts.Texts().size(), 3);
    EXPECT_EQ(world_.log.Lines().size(), world_.Registered().size());
    EXPECT_LE(world_.prompts.Texts().size(), 1);
  }
}

}  // namespace
}  // namespace trevane::test
