// What the user, the system and other programs do to the window while a controller does not answer.
#include "tests/app/window/Meddling.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <map>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

/// One operation on the controller, up to its end.
struct Operation {
  const char* name;
  std::function<void(WaitingWorld&)> prepare;
  std::function<void(WaitingWorld&)> run;
};

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
};

TEST_P(StalledTest, WhatIsDoneMeanwhileDoesNothing) {
  Outcome expected;
  for (const bool meddle : {false, true}) {
    WaitingWorld world;
    world.ShowRobot();
    Tried().prepare(world);
    world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world.server->HangAt(1, Hearing::ObeysCancel);
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
  WaitingWorld world;
  world.ShowRobot();
  Tried().prepare(world);
  world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  const QStringList robot = world.robot->Tree();
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] { world.PressKey(Qt::Key_Escape); });
  Tried().run(world);
  EXPECT_TRUE(world.acted);
  world.Settle();
  EXPECT_EQ(world.robot->Tree(), robot);
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
  for (const bool unattended : {false, true}) {
    WaitingWorld world;
    world.ShowRobot();
    Tried().prepare(world);
    world.prompts_.ForgetAsked();
    const QStringList robot = world.robot->Tree();
    bool unloaded = false;
    QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
    world.server->HangAt(1, Hearing::ObeysCancel);
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
    EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 5000));
    EXPECT_FALSE(world.Window()->isVisible());
    EXPECT_TRUE(world.stoppedAll);
    EXPECT_EQ(world.robot->Tree(), robot);
    QStringList shown = world.prompts_.Texts();
    shown.removeIf(
        [](const QString& text) { return text.contains(QStringLiteral("Do you want to Remove")); });
    EXPECT_EQ(shown, QStringList());
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, StalledTest, testing::Range(size_t{0}, Operations().size()),
                         [](const auto& info) { return Operations().at(info.param).name; });

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
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 5000));
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
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 5000));
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
  world.ClickItem(QStringLiteral("readme.txt"));
  QTest::qWait(QApplication::doubleClickInterval() + 50);
  // The second click begins the delay after which the editor opens.
  world.ClickItem(QStringLiteral("readme.txt"));
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] { world.server->Release(); });
  world.Window()->Dispatch(CommandId::Properties);
  QTest::qWait(QApplication::doubleClickInterval() + 100);
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), nullptr);
}

}  // namespace
}  // namespace trevane::test
