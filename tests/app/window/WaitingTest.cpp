// What the user, the system and other programs do to the window while a controller does not answer.
#include "engine/files/WholeFile.h"
#include "tests/app/window/Meddling.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>
#include <map>
#include <tuple>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

/// One operation on the controller, up to its end.
struct Operation {
  const char* name;
  std::function<void(WaitingWorld&)> prepare;
  std::function<void(WaitingWorld&)> run;
  /// The call that stalls begins with this; the first one when it is empty.
  const char* stalls = "";
};

const QString kDrive = QStringLiteral("Workspace\\My Computer\\C:");

/// Three files, which go as a batch, to be pasted on the controller.
void TakeThree(WaitingWorld& world, CommandId command) {
  for (const char* const name : {"a", "b", "c"}) {
    world.memory_->AddFile(QStringLiteral("C:\\Three\\%1.pac").arg(QLatin1StringView(name)), name);
  }
  world.ClickNode(kDrive);
  world.ClickNode(kDrive + QStringLiteral("\\Three"));
  world.List().setFocus();
  world.Window()->Dispatch(CommandId::SelectAll);
  world.Window()->Dispatch(command);
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
}

void TypeNewName(WaitingWorld& world) {
  world.ClickItem(QStringLiteral("readme.txt"));
  world.Window()->Dispatch(CommandId::Rename);
  auto* const editor = world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
  ASSERT_NE(editor, nullptr);
  QCoreApplication::processEvents();
  editor->selectAll();
  QTest::keyClicks(editor, QStringLiteral("notes.txt"));
  QCoreApplication::processEvents();
}

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> all{
      {"Listing", [](WaitingWorld&) {},
       [](WaitingWorld& world) { world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs"))); }},
      {"Paste",
       [](WaitingWorld& world) {
         const QString local = QStringLiteral("Workspace\\My Computer\\C:");
         world.ClickNode(local);
         world.ClickItem(QStringLiteral("readme.txt"));
         world.Window()->Dispatch(CommandId::Copy);
         world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
       },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::Paste); }},
      {"PasteOfThree", [](WaitingWorld& world) { TakeThree(world, CommandId::Copy); },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::Paste); }, "WritePiece"},
      {"MoveOfThree", [](WaitingWorld& world) { TakeThree(world, CommandId::Cut); },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::Paste); }, "WritePiece"},
      {"Rename", &TypeNewName,
       [](WaitingWorld& world) {
         QTest::keyClick(world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), Qt::Key_Return);
         // The editor closes first.
         world.Settle();
       }},
      {"NewFolder", [](WaitingWorld& world) { world.List().clearSelection(); },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::NewFolder); }},
      {"Properties", [](WaitingWorld& world) { world.ClickItem(QStringLiteral("readme.txt")); },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::Properties); }},
      {"Run", [](WaitingWorld& world) { world.ClickItem(QStringLiteral("readme.txt")); },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::Run); }},
      {"Delete",
       [](WaitingWorld& world) {
         world.ClickItem(QStringLiteral("readme.txt"));
         world.prompts_.AnswerAllChoices(0);
       },
       [](WaitingWorld& world) { world.Window()->Dispatch(CommandId::Delete); }},
  };
  return all;
}

class StalledTest : public testing::TestWithParam<size_t> {
 protected:
  [[nodiscard]] static const Operation& Tried() { return Operations().at(GetParam()); }

  /// Which call of the operation it is that stalls.
  [[nodiscard]] static int CallThatStalls() {
    const QString begin = QString::fromLatin1(Tried().stalls);
    if (begin.isEmpty()) {
      return 1;
    }
    WaitingWorld world;
    world.ShowRobot();
    Tried().prepare(world);
    world.server->ClearCalls();
    Tried().run(world);
    const QStringList calls = world.server->Calls();
    const auto call =
        std::find_if(calls.begin(), calls.end(), [&](const QString& each) { return each.startsWith(begin); });
    EXPECT_NE(call, calls.end()) << calls.join(u'\n').toStdString();
    return static_cast<int>(call - calls.begin()) + 1;
  }
};

TEST_P(StalledTest, WhatIsDoneMeanwhileDoesNothing) {
  Outcome expected;
  const int call = CallThatStalls();
  for (const bool meddle : {false, true}) {
    WaitingWorld world;
    world.ShowRobot();
    Tried().prepare(world);
    world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world.server->HangAt(call, Hearing::ObeysCancel);
    world.WhenHanging([&] {
      if (meddle) {
        DoEverything(world);
      }
      world.server->Release();
    });
    Tried().run(world);
    EXPECT_TRUE(world.acted);
    const Outcome outcome = OutcomeOf(world);
    if (meddle) {
      EXPECT_EQ(outcome.calls.join(u'\n').toStdString(), expected.calls.join(u'\n').toStdString());
      EXPECT_EQ(outcome.asked.join(u'\n').toStdString(), expected.asked.join(u'\n').toStdString());
      EXPECT_EQ(outcome.place.toStdString(), expected.place.toStdString());
      EXPECT_TRUE(outcome == expected);
    } else {
      expected = outcome;
    }
  }
}

TEST_P(StalledTest, EscEndsItAndNothingElseBegins) {
  const int call = CallThatStalls();
  WaitingWorld world;
  world.ShowRobot();
  Tried().prepare(world);
  world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  const QStringList robot = world.robot->Tree();
  const QStringList local = world.memory_->Tree();
  world.server->HangAt(call, Hearing::ObeysCancel);
  world.WhenHanging([&] { world.PressKey(Qt::Key_Escape); });
  Tried().run(world);
  EXPECT_TRUE(world.acted);
  world.Settle();
  EXPECT_EQ(world.robot->Tree(), robot);
  EXPECT_EQ(world.memory_->Tree(), local);
  EXPECT_FALSE(world.Content("Trevane.log").contains("RENAME"));
  const std::map<std::string, QString> messages{{"Rename", QStringLiteral("Failed to rename the file.")},
                                                {"NewFolder", QStringLiteral("Cannot Create New Folder.")},
                                                {"Run", QStringLiteral("Failed in the Run() method.")}};
  const auto message = messages.find(Tried().name);
  QStringList shown = world.prompts_.Texts();
  shown.removeIf([](const QString& text) { return text.contains(QStringLiteral("Do you want to Remove")); });
  if (message == messages.end()) {
    EXPECT_EQ(shown.join(u'\n').toStdString(), std::string());
  } else {
    EXPECT_EQ(shown.join(u'\n').toStdString(), message->second.toStdString());
    ASSERT_FALSE(world.prompts_.Asked().empty());
    const QString reason = world.prompts_.Asked().back().informativeText;
    EXPECT_TRUE(reason.endsWith(QStringLiteral("Cancelled."))) << reason.toStdString();
  }
  EXPECT_TRUE(world.Window()->isEnabled());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_P(StalledTest, ClosingCloses) {
  const int call = CallThatStalls();
  for (const bool unattended : {false, true}) {
    WaitingWorld world;
    world.ShowRobot();
    Tried().prepare(world);
    world.prompts_.ForgetAsked();
    const QStringList robot = world.robot->Tree();
    const QStringList local = world.memory_->Tree();
    bool unloaded = false;
    QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
    world.server->HangAt(call, Hearing::ObeysCancel);
    world.WhenHanging([&] {
      if (unattended) {
        world.Window()->CloseUnattended();
      } else {
        EXPECT_FALSE(world.Window()->close());
      }
      EXPECT_FALSE(unloaded);
    });
    Tried().run(world);
    EXPECT_TRUE(world.acted);
    EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
    EXPECT_FALSE(world.Window()->isVisible());
    EXPECT_TRUE(world.stoppedAll);
    EXPECT_EQ(world.robot->Tree(), robot);
    EXPECT_EQ(world.memory_->Tree(), local);
    QStringList shown = world.prompts_.Texts();
    shown.removeIf(
        [](const QString& text) { return text.contains(QStringLiteral("Do you want to Remove")); });
    EXPECT_EQ(shown, QStringList());
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, StalledTest, testing::Range(size_t{0}, Operations().size()),
                         [](const auto& info) { return Operations().at(info.param).name; });

enum class Ends { Cancel, Esc, Close };

/// How it ends, and whether the files are moved.
using StalledBatch = std::tuple<Ends, bool>;

class StalledBatchTest : public testing::TestWithParam<StalledBatch> {
 protected:
  /// The calls that change something.
  const QRegularExpression kChanges{
      QStringLiteral("^(OpenSink|WritePiece|Commit|CreateFolder|Rename|RemoveAlone) ")};
  static constexpr const char* kNames[] = {"a.pac", "b.pac", "c.pac"};

  /// In the gauge, or in the waiting window where there is no gauge.
  static void CancelThere(WaitingWorld& world) {
    RecordingGauge& gauge = world.prompts_.RecordedGauge();
    if (gauge.IsVisible() && gauge.IsCancelEnabled()) {
      gauge.ClickCancel();
    } else {
      world.shippedWaiter.Cancel();
    }
  }

  /// Every file is on the controller or still on the local drive, and whole; copied ones are on the drive.
  static void ExpectNothingLost(const WaitingWorld& world, bool moves) {
    const QStringList robot = world.robot->Tree();
    const QStringList local = world.memory_->Tree();
    for (const char* const name : kNames) {
      const QString file = QString::fromLatin1(name);
      const bool stayed = local.filter(QStringLiteral("Three\\") + file).size() == 1;
      const bool arrived = world.robot->Exists(QStringLiteral("programs\\") + file);
      EXPECT_TRUE(stayed || (moves && arrived)) << name;
      if (arrived) {
        EXPECT_EQ(ReadFile(*world.robot, QStringLiteral("programs\\") + file), QByteArray(name, 1)) << name;
      }
    }
    // Nothing else is there.
    for (const QString& line : robot.filter(QRegularExpression(QStringLiteral("^programs\\\\.")))) {
      EXPECT_TRUE(line.contains(u".pac=") || line == u"programs\\old\\") << line.toStdString();
    }
  }
};

TEST_P(StalledBatchTest, NothingIsLostAndNothingElseBegins) {
  const auto [ends, moves] = GetParam();
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    WaitingWorld world({.overlapping = true});
    world.ShowRobot();
    TakeThree(world, moves ? CommandId::Cut : CommandId::Copy);
    bool unloaded = false;
    QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
    world.server->HangAt(call, Hearing::ObeysCancel);
    world.WhenHanging([&, how = ends] {
      switch (how) {
        case Ends::Cancel:
          CancelThere(world);
          break;
        case Ends::Esc:
          world.PressKey(Qt::Key_Escape);
          break;
        case Ends::Close:
          EXPECT_FALSE(world.Window()->close());
          break;
      }
    });
    world.Window()->Dispatch(CommandId::Paste);
    world.Settle();
    if (!world.acted) {
      EXPECT_GT(call, 4);
      return;
    }
    const QStringList calls = world.server->Calls();
    SCOPED_TRACE(calls.join(u'\n').toStdString());
    ExpectNothingLost(world, moves);
    EXPECT_TRUE(world.prompts_.Asked().empty());
    EXPECT_EQ(calls.mid(call).filter(kChanges), QStringList());
    const QString last = calls.value(call - 1);
    const QStringList after = calls.mid(call);
    if (ends == Ends::Close) {
      EXPECT_EQ(after.filter(QStringLiteral("List ")), QStringList());
      EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
      continue;
    }
    // It is counted once what has arrived, and the place is shown anew.
    EXPECT_LE(after.filter(QStringLiteral("List programs")).size(), 2);
    if (!last.startsWith(u"List") || after.contains(QStringLiteral("List programs"))) {
      QStringList shown = world.ListTexts();
      shown.sort();
      QStringList there;
      for (const FileEntry& entry : world.robot->List(QStringLiteral("programs"))) {
        there.append(entry.name);
      }
      there.sort();
      EXPECT_EQ(shown, there);
    }
    EXPECT_TRUE(world.Window()->isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  }
}

std::string NameOf(const testing::TestParamInfo<StalledBatch>& info) {
  const auto [ends, moves] = info.param;
  const std::string way = ends == Ends::Cancel ? "Cancel" : ends == Ends::Esc ? "Esc" : "Close";
  return way + (moves ? "Move" : "Copy");
}

INSTANTIATE_TEST_SUITE_P(Ways, StalledBatchTest,
                         testing::Combine(testing::Values(Ends::Cancel, Ends::Esc, Ends::Close),
                                          testing::Bool()),
                         &NameOf);

TEST(WaitingTest, AClickOnAnotherPlaceEndsADisplay) {
  WaitingWorld world;
  world.ShowRobot();
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] {
    world.ClickAt(*world.Tree().viewport(), world.PointOf(QStringLiteral("Workspace\\My Computer")));
  });
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.Nav().CurrentAddress(), QStringLiteral("Workspace\\My Computer"));
  EXPECT_TRUE(world.ListTexts().contains(QStringLiteral("C:")));
  EXPECT_TRUE(world.prompts_.Asked().empty());
}

TEST(WaitingTest, AClickOnTheSamePlaceEndsNothing) {
  WaitingWorld world;
  world.ShowRobot();
  const QString programs = WaitingWorld::Robot(QStringLiteral("programs"));
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] {
    world.ClickAt(*world.Tree().viewport(), world.PointOf(programs));
    world.server->Release();
  });
  world.ClickNode(programs);
  EXPECT_EQ(world.Nav().CurrentAddress(), programs);
  EXPECT_EQ(world.ListTexts(), (QStringList{QStringLiteral("main.pac"), QStringLiteral("old")}));
}

TEST(WaitingTest, AConnectionCanBeCancelled) {
  WaitingWorld world;
  world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  world.server->HangAtOpening(Hearing::ObeysCancel);
  world.WhenHanging([&] { world.PressKey(Qt::Key_Escape); });
  world.Connect();
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 1);
}

TEST(WaitingTest, ConnectPressedInTheWaitConnectsOnce) {
  WaitingWorld world;
  world.server->HangAtOpening(Hearing::ObeysCancel);
  const auto button = [&world] {
    return world.Window()->findChild<QPushButton*>(QStringLiteral("cmdConnect"));
  };
  world.WhenHanging([&] {
    ASSERT_NE(button(), nullptr);
    button()->click();
    world.server->Release();
  });
  QTimer::singleShot(0, world.Window(), [&] {
    auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    auto* const provider = dialog->findChild<QComboBox*>(QStringLiteral("cmbProvider"));
    provider->setCurrentText(QStringLiteral("IxoProv.Scripted"));
    button()->click();
  });
  world.Window()->Dispatch(CommandId::Connect);
  world.Settle();
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.server->Openings(), 1);
  EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 2);
}

TEST(WaitingTest, ClosingDuringAConnectionCloses) {
  WaitingWorld world;
  bool unloaded = false;
  QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
  world.server->HangAtOpening(Hearing::ObeysCancel);
  world.WhenHanging([&] { EXPECT_FALSE(world.Window()->close()); });
  static_cast<void>(world.Window()->Workspace().OpenWorkspace(world.InFolder("cells.fmg")));
  EXPECT_TRUE(world.acted);
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
  EXPECT_TRUE(world.prompts_.Asked().empty());
}

TEST(WaitingTest, ADeafControllerIsLeftBehindAtTheEnd) {
  WaitingWorld world;
  world.ShowRobot();
  bool unloaded = false;
  QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
  world.server->HangAt(1, Hearing::Deaf);
  world.WhenHanging([&] { world.Window()->close(); });
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
  EXPECT_FALSE(world.stoppedAll);
  // What is written at the end is written nevertheless.
  EXPECT_TRUE(world.Content("Trevane.ini").startsWith("[Form]"));
}

TEST(WaitingTest, AButtonReleasedInTheWaitChoosesNothing) {
  WaitingWorld world;
  world.ShowRobot();
  QToolButton* const button = world.Window()->Bars().Button(CommandId::Parent);
  const QPoint at = button->mapTo(world.Window(), button->rect().center());
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] {
    QTest::mouseRelease(world.Window()->windowHandle(), Qt::LeftButton, {}, at);
    EXPECT_FALSE(button->isDown());
    world.server->Release();
  });
  QTest::mousePress(world.Window()->windowHandle(), Qt::LeftButton, {}, at);
  EXPECT_TRUE(button->isDown());
  world.Window()->Dispatch(CommandId::Refresh);
  world.Settle();
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.Nav().CurrentAddress(), WaitingWorld::Robot());
}

TEST(WaitingTest, ALabelThatWaitsForItsEditorGetsNone) {
  WaitingWorld world;
  world.ShowRobot();
  world.Window()->activateWindow();
  world.ClickTwice(QStringLiteral("readme.txt"));
  EXPECT_TRUE(world.WaitsForEditor());
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] {
    EXPECT_FALSE(world.WaitsForEditor());
    world.server->Release();
  });
  world.Window()->Dispatch(CommandId::Properties);
  EXPECT_TRUE(world.acted);
  EXPECT_FALSE(world.WaitsForEditor());
  EXPECT_EQ(world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), nullptr);
}

}  // namespace
}  // namespace trevane::test
