// Connecting to controllers that hang, and disconnecting them, in the real window with the shipped waiter.
#include "tests/app/window/RealPromptsWorld.h"
#include "tests/app/window/WaitingWorld.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <thread>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

const QString kDisconnectAll = QStringLiteral("Disconnect All IxoControllers. Are you sure?");

/// Chooses the connect command, and connects the slow controller "Robot" with its dialog.
void ConnectWithTheDialog(WaitingWorld& world) {
  QTimer::singleShot(0, world.Window(), [] {
    QWidget* const dialog = VisibleWindow(QStringLiteral("frmConnIxoCtrl"));
    ASSERT_NE(dialog, nullptr);
    dialog->findChild<QComboBox*>(QStringLiteral("cmbProvider"))
        ->setCurrentText(QStringLiteral("IxoProv.Scripted"));
    dialog->findChild<QComboBox*>(QStringLiteral("cmbController"))->setEditText(QStringLiteral("Robot"));
    Click(*dialog, "cmdConnect");
  });
  world.Window()->Dispatch(CommandId::Connect);
  world.Settle();
}

TEST(ConnectingTest, TheWaitingWindowCancelsAConnection) {
  for (const Hearing hearing : {Hearing::ObeysCancel, Hearing::Deaf}) {
    WaitingWorld world;
    world.server->HangAtOpening(hearing);
    world.prompts_.ExpectBox(QStringLiteral("Failed in adding a controller object."));
    bool clicked = false;
    world.clock.onTurn = [&] {
      QWidget* const waiting = VisibleWindow(QStringLiteral("frmWaiting"));
      if (waiting != nullptr && !clicked) {
        clicked = true;
        EXPECT_FALSE(VisibleWindow(QStringLiteral("frmConnIxoCtrl")));
        Click(*waiting, "cmdCancel");
      }
    };
    ConnectWithTheDialog(world);
    EXPECT_TRUE(clicked);
    ASSERT_EQ(world.prompts_.Asked().size(), 1U);
    EXPECT_EQ(world.prompts_.Asked()[0].informativeText, QStringLiteral("Robot\nCancelled."));
    EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 1);
    EXPECT_EQ(world.program_->Session().gSavedCtrls.Count(), 0);
    EXPECT_EQ(world.Window()->TreeModel().FindByKey(WaitingWorld::Robot()), nullptr);

    // The same name at once, while the first may still hang.
    EXPECT_EQ(world.server->IsHanging(), hearing == Hearing::Deaf);
    ConnectWithTheDialog(world);
    EXPECT_EQ(world.Nav().CurrentAddress(), WaitingWorld::Robot());
    EXPECT_TRUE(world.ListTexts().contains(QStringLiteral("readme.txt")));
    // The one that comes up late is thrown away.
    world.server->Release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return world.server->LiveConnections() == 1; }, 20000));
    EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 2);
  }
}

TEST(ConnectingTest, ClosingDuringTheDialogsConnectionAsksNothing) {
  for (const bool unattended : {false, true}) {
    WaitingWorld world;
    bool unloaded = false;
    QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
    world.server->HangAtOpening(Hearing::Deaf);
    world.WhenHanging([&] {
      if (unattended) {
        world.Window()->CloseUnattended();
      } else {
        EXPECT_FALSE(world.Window()->close());
      }
    });
    ConnectWithTheDialog(world);
    EXPECT_TRUE(world.acted);
    EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 20000));
    EXPECT_TRUE(world.prompts_.Asked().empty());
    EXPECT_FALSE(world.stoppedAll);
  }
}

TEST(ConnectingTest, AHangingControllerIsDisconnectedAtOnce) {
  for (const CommandId command : {CommandId::Disconnect, CommandId::DisconnectAll}) {
    WaitingWorld world;
    world.ShowRobot();
    world.server->HangAt(1, Hearing::Deaf);
    world.WhenHanging([&] { world.PressKey(Qt::Key_Escape); });
    world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
    EXPECT_TRUE(world.acted);
    world.ClickNode(WaitingWorld::Robot());
    // From here on no call is answered.
    world.server->HangAt(1, Hearing::Deaf);
    int waits = 0;
    world.clock.onTurn = [&] { ++waits; };
    world.prompts_.ExpectBox(command == CommandId::Disconnect
                                 ? QStringLiteral("Disconnect Selected Controller. Are you sure?")
                                 : kDisconnectAll,
                             PromptAnswer::Ok);
    world.Window()->Dispatch(command);
    EXPECT_EQ(waits, 0);
    EXPECT_TRUE(world.server->IsHanging());
    EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 1);
    EXPECT_EQ(world.Window()->TreeModel().FindByKey(WaitingWorld::Robot()), nullptr);
    EXPECT_EQ(world.Nav().CurrentAddress(), QStringLiteral("Workspace"));
    world.server->Release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return world.server->LiveConnections() == 0; }, 20000));
    for (const std::thread::id thread : world.server->EndedOn()) {
      EXPECT_NE(thread, std::this_thread::get_id());
    }
  }
}

TEST(ConnectingTest, TheGaugeCancelsTheOpeningOfAWorkspace) {
  for (const Hearing hearing : {Hearing::ObeysCancel, Hearing::Deaf}) {
    RealPromptsWorld world;
    const QString file = world.File(12);
    // The ninth begins when the eighth is open, since all others hang.
    for (const int i : {0, 1, 2, 3, 4, 5, 6, 8}) {
      world.Cell(i).HangAtOpening(hearing);
    }
    world.program.StartWith(QString());
    ASSERT_NE(world.program.Window(), nullptr);
    world.prompts.SetMainWindow(world.program.Window());
    bool clicked = false;
    world.clock.onTurn = [&] {
      QWidget* const gauge = VisibleWindow(QStringLiteral("frmGage"));
      EXPECT_NE(gauge, nullptr);
      EXPECT_EQ(VisibleWindow(QStringLiteral("frmWaiting")), nullptr);
      if (gauge != nullptr && !clicked && world.cells->HangingConnections() == 8) {
        clicked = true;
        EXPECT_EQ(gauge->windowTitle(), QStringLiteral("Open Controllers"));
        EXPECT_EQ(gauge->findChild<QLabel*>(QStringLiteral("lblInfo"))->text(),
                  QStringLiteral("Connect Controller(R00)."));
        Click(*gauge, "cmdCancel");
      }
    };
    EXPECT_TRUE(world.program.Window()->Workspace().OpenWorkspace(file));
    EXPECT_TRUE(clicked);
    EXPECT_EQ(world.Nodes(), QStringList{RealPromptsWorld::Name(7)});
    EXPECT_EQ(world.program.Session().gIxoCtrls().Count(), 2);
    EXPECT_EQ(world.program.Window()->windowTitle(), QStringLiteral("Trevane - (") + file + u')');
    EXPECT_TRUE(world.program.Window()->isEnabled());
    EXPECT_EQ(VisibleWindow(QStringLiteral("frmGage")), nullptr);
    EXPECT_EQ(world.cells->Asked().size(), 9);
  }
}

TEST(ConnectingTest, AFirstWorkspaceIsWaitedForWithoutAWindow) {
  RealPromptsWorld world;
  for (const int i : {0, 2}) {
    world.Cell(i).HangAtOpening(Hearing::ObeysCancel);
  }
  int turns = 0;
  world.clock.onTurn = [&] {
    ++turns;
    ASSERT_NE(world.program.Window(), nullptr);
    EXPECT_FALSE(world.program.Window()->isVisible());
    if (world.Cell(0).IsHanging() && world.Cell(2).IsHanging()) {
      world.cells->ReleaseAll();
    }
  };
  world.program.StartWith(world.File(3));
  EXPECT_GT(turns, 0);
  ASSERT_NE(world.program.Window(), nullptr);
  EXPECT_TRUE(world.program.Window()->isVisible());
  EXPECT_EQ(world.Nodes(),
            (QStringList{RealPromptsWorld::Name(0), RealPromptsWorld::Name(1), RealPromptsWorld::Name(2)}));
}

TEST(ConnectingTest, ASignalDuringAFirstWorkspaceShowsNoWindow) {
  RealPromptsWorld world;
  world.Cell(0).HangAtOpening(Hearing::Deaf);
  world.clock.onTurn = [&] {
    if (world.Cell(0).IsHanging() && !world.prompts.IsEnding()) {
      world.program.Window()->CloseUnattended();
    }
  };
  world.program.StartWith(world.File(3));
  EXPECT_TRUE(world.prompts.IsEnding());
  EXPECT_EQ(world.program.Window(), nullptr);
  EXPECT_TRUE(world.Cell(0).IsHanging());
}

}  // namespace
}  // namespace trevane::test
