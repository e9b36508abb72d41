// A controller that hangs in the Nth call of a command, for every N, until the user cancels or closes.
#include "tests/app/window/WaitingWorld.h"

#include <QLineEdit>
#include <QSet>

namespace trevane::test {
namespace {

struct Command {
  const char* name;
  /// Its last step begins the command.
  std::function<void(WaitingWorld&)> prepare;
  std::function<void(WaitingWorld&)> run;
  /// It takes files away, and puts them on the other controller, if anywhere.
  bool moves = false;
  bool deletes = false;
};

const QString kCell = QStringLiteral("Workspace\\Cell");

void SelectBoth(WaitingWorld& world, CommandId command) {
  world.ClickItem(QStringLiteral("programs"));
  world.ClickItem(QStringLiteral("readme.txt"), Qt::LeftButton, Qt::ControlModifier);
  world.Window()->Dispatch(command);
  world.ClickNode(kCell);
  world.List().setFocus();
}

void Execute(WaitingWorld& world, CommandId command) {
  world.Window()->Dispatch(command);
}

const std::vector<Command>& Commands() {
  static const std::vector<Command> all{
      {"Paste", [](WaitingWorld& world) { SelectBoth(world, CommandId::Copy); },
       [](WaitingWorld& world) { Execute(world, CommandId::Paste); }},
      {"CutAndPaste", [](WaitingWorld& world) { SelectBoth(world, CommandId::Cut); },
       [](WaitingWorld& world) { Execute(world, CommandId::Paste); }, true},
      {"Rename",
       [](WaitingWorld& world) {
         world.ClickItem(QStringLiteral("readme.txt"));
         Execute(world, CommandId::Rename);
         auto* const editor = world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
         ASSERT_NE(editor, nullptr);
         QCoreApplication::processEvents();
         editor->selectAll();
         QTest::keyClicks(editor, QStringLiteral("notes.txt"));
       },
       [](WaitingWorld& world) {
         QTest::keyClick(world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), Qt::Key_Return);
         world.Settle();
       }},
      {"Delete",
       [](WaitingWorld& world) {
         world.ClickItem(QStringLiteral("programs"));
         world.ClickItem(QStringLiteral("readme.txt"), Qt::LeftButton, Qt::ControlModifier);
         world.prompts_.AnswerAllChoices(1);
       },
       [](WaitingWorld& world) { Execute(world, CommandId::Delete); }, false, true},
      {"NewFolder", [](WaitingWorld& world) { world.List().clearSelection(); },
       [](WaitingWorld& world) { Execute(world, CommandId::NewFolder); }},
      {"Properties", [](WaitingWorld& world) { world.ClickItem(QStringLiteral("readme.txt")); },
       [](WaitingWorld& world) { Execute(world, CommandId::Properties); }},
  };
  return all;
}

QSet<QString> LinesOf(const QStringList& tree) {
  return {tree.begin(), tree.end()};
}

/// What both controllers hold after the whole command.
struct Ended {
  QSet<QString> robot;
  QSet<QString> cell;
};

class EveryCallTest : public testing::TestWithParam<size_t> {
 protected:
  [[nodiscard]] static const Command& Tried() { return Commands().at(GetParam()); }

  static void Prepare(WaitingWorld& world) {
    world.cell->AddFolder(QStringLiteral("store"));
    world.ShowRobot("both.fmg");
    Tried().prepare(world);
    world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world.prompts_.ForgetAsked();
    world.cellServer->ClearCalls();
    world.server->ClearCalls();
  }

  [[nodiscard]] static Ended RunWhole() {
    WaitingWorld world;
    Prepare(world);
    Tried().run(world);
    world.Settle();
    return {LinesOf(world.robot->Tree()), LinesOf(world.cell->Tree())};
  }

  /// Every item is as it was or as it was to be, and no content is lost.
  static void ExpectNothingHalfDone(const WaitingWorld& world, const Ended& whole, const Ended& before) {
    const QSet<QString> robot = LinesOf(world.robot->Tree());
    const QSet<QString> cell = LinesOf(world.cell->Tree());
    const auto outside = [](QSet<QString> lines, const QSet<QString>& one, const QSet<QString>& other) {
      return QStringList(lines.subtract(one).subtract(other).values()).join(u'\n').toStdString();
    };
    EXPECT_EQ(outside(robot, whole.robot, before.robot), std::string());
    EXPECT_EQ(outside(cell, whole.cell, before.cell), std::string());
    if (!Tried().deletes && QString::fromLatin1(Tried().name) != u"Rename") {
      for (const QString& line : before.robot) {
        EXPECT_TRUE(robot.contains(line) || (Tried().moves && cell.contains(line))) << line.toStdString();
      }
    }
  }

  /// The list shows what is there.
  static void ExpectShownAnew(WaitingWorld& world) {
    const bool onCell = world.Nav().CurrentAddress() == kCell;
    QStringList names;
    for (const FileEntry& entry : (onCell ? world.cell : world.robot)->List(QString())) {
      names.append(entry.name);
    }
    QStringList shown = world.ListTexts();
    names.sort();
    shown.sort();
    EXPECT_EQ(shown.join(u'|').toStdString(), names.join(u'|').toStdString());
  }
};

TEST_P(EveryCallTest, EscKeepsEverythingWhole) {
  const Ended whole = RunWhole();
  for (const bool onCell : {false, true}) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE((onCell ? "cell " : "robot ") + std::to_string(call));
      WaitingWorld world;
      Prepare(world);
      const Ended before{LinesOf(world.robot->Tree()), LinesOf(world.cell->Tree())};
      const auto& server = onCell ? world.cellServer : world.server;
      server->HangAt(call, ScriptedServer::Hearing::ObeysCancel);
      QString hung;
      world.WhenHanging([&] {
        hung = server->Calls().value(call - 1);
        world.PressKey(Qt::Key_Escape);
      });
      Tried().run(world);
      world.Settle();
      if (!world.acted) {
        // The command has no such call.
        break;
      }
      SCOPED_TRACE(hung.toStdString());
      ExpectNothingHalfDone(world, whole, before);
      if (!hung.startsWith(u"List")) {
        ExpectShownAnew(world);
      }
      EXPECT_TRUE(world.Window()->isEnabled());
      EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
  }
}

TEST_P(EveryCallTest, ClosingKeepsEverythingWhole) {
  const Ended whole = RunWhole();
  for (const bool onCell : {false, true}) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE((onCell ? "cell " : "robot ") + std::to_string(call));
      WaitingWorld world;
      Prepare(world);
      const Ended before{LinesOf(world.robot->Tree()), LinesOf(world.cell->Tree())};
      bool unloaded = false;
      QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
      (onCell ? world.cellServer : world.server)->HangAt(call, ScriptedServer::Hearing::ObeysCancel);
      world.WhenHanging([&] { EXPECT_FALSE(world.Window()->close()); });
      Tried().run(world);
      if (!world.acted) {
        break;
      }
      EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
      EXPECT_TRUE(world.stoppedAll);
      ExpectNothingHalfDone(world, whole, before);
      QStringList shown = world.prompts_.Texts();
      shown.removeIf(
          [](const QString& text) { return text.contains(QStringLiteral("Do you want to Remove")); });
      EXPECT_EQ(shown.join(u'|').toStdString(), std::string());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, EveryCallTest, testing::Range(size_t{0}, Commands().size()),
                         [](const auto& info) { return Commands().at(info.param).name; });

}  // namespace
}  // namespace trevane::test
