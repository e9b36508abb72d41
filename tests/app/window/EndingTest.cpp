// Closing the window, and the system's request to end, during an operation, a question or the editing of a
// label.
#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "app/workspace/WorkspaceFile.h"
#include "engine/controllers/EngineSession.h"
#include "tests/app/window/MainWindowFixture.h"

#include <QLineEdit>
#include <QTimer>
#include <QToolButton>

namespace trevane::test {
namespace {

const QString kDriveC = QStringLiteral("Workspace\\My Computer\\C:");
constexpr int kYesAll = 1;

class EndingTest : public MainWindowFixture {
 protected:
  EndingTest() {
    for (const char* name : {"f1", "f2", "f3", "f4", "f5"}) {
      memory_->AddFile(QStringLiteral("C:\\many\\") + QLatin1String(name), "x");
    }
  }

  void StartIn(const QString& address) {
    Start();
    Tree().expand(Window()->TreeModel().IndexOf(Node(kDriveC)));
    ClickNode(address);
    List().setFocus();
  }

  /// Opens the editor of an item and types into it.
  void TypeOver(const QString& item, const QString& text) {
    ClickItem(item);
    Window()->Dispatch(CommandId::Rename);
    auto* editor = List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
    ASSERT_NE(editor, nullptr);
    QCoreApplication::processEvents();
    editor->selectAll();
    QTest::keyClicks(editor, text);
  }

  [[nodiscard]] QStringList Left() {
    QStringList left;
    for (const char* name : {"f1", "f2", "f3", "f4", "f5"}) {
      if (memory_->Exists(QStringLiteral("C:\\many\\") + QLatin1String(name))) {
        left += QLatin1String(name);
      }
    }
    return left;
  }
};

TEST_F(EndingTest, ClosingDropsWhatIsBeingTypedIntoALabel) {
  StartIn(kDriveC);
  TypeOver(QStringLiteral("readme.txt"), QStringLiteral("other.txt"));
  EXPECT_TRUE(Window()->close());
  QTest::qWait(20);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\other.txt")));
  EXPECT_FALSE(Content("Trevane.log").contains("RENAME"));
}

TEST_F(EndingTest, ClosingAsksNothingAboutATypedNameThatExists) {
  memory_->AddFile(QStringLiteral("C:\\other.txt"), "other");
  StartIn(kDriveC);
  TypeOver(QStringLiteral("readme.txt"), QStringLiteral("other.txt"));
  EXPECT_TRUE(Window()->close());
  QTest::qWait(20);
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\other.txt")), "other");
}

TEST_F(EndingTest, ClosingDropsAPendingRename) {
  StartIn(kDriveC);
  TypeOver(QStringLiteral("readme.txt"), QStringLiteral("other.txt"));
  QTest::keyClick(List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), Qt::Key_Return);
  Window()->close();
  QTest::qWait(20);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
}

TEST_F(EndingTest, ClosingDuringADeleteKeepsTheRest) {
  StartIn(kDriveC + QStringLiteral("\\many"));
  List().selectAll();
  prompts_.ExpectChoice(kYesAll);
  int deletions = 0;
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && ++deletions == 2) {
      QTimer::singleShot(0, Window(), &QWidget::close);
    }
  });
  Window()->Dispatch(CommandId::Delete);
  EXPECT_EQ(deletions, 2);
  EXPECT_EQ(Left(), (QStringList{QStringLiteral("f3"), QStringLiteral("f4"), QStringLiteral("f5")}));
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, ClosingDuringTheDeleteOfAFolderKeepsTheRest) {
  StartIn(kDriveC);
  ClickItem(QStringLiteral("many"));
  prompts_.ExpectChoice(kYesAll);
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove) {
      QTimer::singleShot(0, Window(), &QWidget::close);
    }
  });
  Window()->Dispatch(CommandId::Delete);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\many")));
  EXPECT_FALSE(Left().isEmpty());
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, ClosingDuringAPasteKeepsTheRestFromBeingCopied) {
  StartIn(kDriveC + QStringLiteral("\\many"));
  List().selectAll();
  Window()->Dispatch(CommandId::Copy);
  ClickNode(kDriveC + QStringLiteral("\\Backup"));
  prompts_.RecordedGauge().onIncrement = [&, increments = 0]() mutable {
    if (++increments == 2) {
      Window()->close();
    }
  };
  Window()->Dispatch(CommandId::Paste);
  prompts_.RecordedGauge().onIncrement = {};
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\f2")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\f3")));
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, AnOpenQuestionIsAnsweredCancelAtTheEnd) {
  StartIn(kDriveC + QStringLiteral("\\many"));
  List().selectAll();
  prompts_.onQuestion = [&](const AskedQuestion&) { EXPECT_FALSE(Window()->close()); };
  // The answer of a box that is closed, for instance by Esc.
  prompts_.ExpectChoice(kYesAll);
  Window()->Dispatch(CommandId::Delete);
  EXPECT_EQ(Left().size(), 5);
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, ClosingDuringTheQuestionOfARenameReplacesNothing) {
  memory_->AddFile(QStringLiteral("C:\\other.txt"), "other");
  StartIn(kDriveC);
  TypeOver(QStringLiteral("readme.txt"), QStringLiteral("other.txt"));
  bool unloaded = false;
  QObject::connect(Window(), &frmFileMgr::Unloaded, Window(), [&] { unloaded = true; });
  prompts_.onQuestion = [&](const AskedQuestion&) {
    Window()->CloseUnattended();
    EXPECT_FALSE(unloaded);
  };
  prompts_.ExpectChoice(0);
  QTest::keyClick(List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\other.txt")), "other");
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
}

TEST_F(EndingTest, NothingBeginsOnceTheWindowIsUnloaded) {
  StartIn(kDriveC);
  ClickItem(QStringLiteral("readme.txt"));
  EXPECT_TRUE(Window()->close());
  int calls = 0;
  faulty_->SetHook([&](const FileSystemCall&) { ++calls; });
  for (const CommandId command :
       {CommandId::Copy, CommandId::Cut, CommandId::Paste, CommandId::Delete, CommandId::Run,
        CommandId::Rename, CommandId::NewFolder, CommandId::Refresh, CommandId::Parent, CommandId::Properties,
        CommandId::Option, CommandId::Version, CommandId::OpenWorkspace, CommandId::SaveWorkspaceAs,
        CommandId::Connect, CommandId::DisconnectAll, CommandId::GoToAddress}) {
    Window()->Dispatch(command);
  }
  Q_EMIT List().ItemActivated(Window()->ListModel().HandleAt(0));
  Q_EMIT Tree().NodeClicked(Node(kDriveC));
  QCoreApplication::processEvents();
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_EQ(prompts_.ShownSettings(), 0);
  EXPECT_TRUE(prompts_.ShownProperties().empty());
}

TEST_F(EndingTest, UnsavedSettingsAreReportedOnlyAfterAClosing) {
  for (const bool attended : {true, false}) {
    prompts_.ForgetAsked();
    Start();
    ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("Trevane.ini")));
    if (attended) {
      prompts_.ExpectBox(QStringLiteral("Failed Save Ini File."));
      Window()->close();
    } else {
      Window()->CloseUnattended();
    }
    EXPECT_EQ(prompts_.Asked().size(), attended ? 1U : 0U);
    ASSERT_TRUE(QDir(folder_.path()).rmdir(QStringLiteral("Trevane.ini")));
    program_.reset();
  }
}

TEST_F(EndingTest, ClosingStopsTheOpeningOfAWorkspace) {
  const QString file = InFolder("cells.fmg");
  QByteArray sections;
  for (const char* name : {"One", "Two", "Three"}) {
    sections +=
        QByteArray("[") + name + "]\r\nCtrlName=" + name + "\r\nProvider=IxoProv.LocalFile\r\nRoot=/\r\n";
  }
  Put("cells.fmg", sections);
  Start();
  prompts_.RecordedGauge().onIncrement = [&] { Window()->close(); };
  EXPECT_TRUE(Window()->Workspace().OpenWorkspace(file));
  prompts_.RecordedGauge().onIncrement = {};
  EXPECT_EQ(program_->Session().gIxoCtrls().Count(), 2);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !Window()->isVisible(); }, 30'000));
}

TEST_F(EndingTest, AnEndDuringTheFirstWorkspaceShowsNoWindow) {
  Put("cells.fmg", "[One]\r\nCtrlName=One\r\nProvider=None\r\n[Two]\r\nCtrlName=Two\r\nProvider=None\r\n");
  prompts_.ForgetEnding();
  program_ = std::make_unique<modMain>(Services());
  prompts_.onQuestion = [&](const AskedQuestion&) { Window()->CloseUnattended(); };
  prompts_.ExpectBox(QStringLiteral("Failed in connecting to the controller( One )."));
  program_->Start(InFolder("cells.fmg"));
  EXPECT_EQ(Window(), nullptr);
  EXPECT_TRUE(Content("Trevane.ini").startsWith("[Form]"));
}

TEST_F(EndingTest, LateRunFailuresWaitForOtherBoxes) {
  Start();
  prompts_.ExpectBox(QStringLiteral("No controller is connecting."));
  prompts_.onQuestion = [&, first = true](const AskedQuestion&) mutable {
    if (!std::exchange(first, false)) {
      return;
    }
    Window()->RunFailedLate(QStringLiteral("/home/user/plan.xyz"),
                            QStringLiteral("No program opened the file."));
    QTest::qWait(200);
    EXPECT_EQ(prompts_.Asked().size(), 1U);
  };
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  Window()->Dispatch(CommandId::SaveWorkspace);
  EXPECT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return prompts_.Asked().size() == 2; }, 30'000));
  EXPECT_EQ(prompts_.Asked().back().icon, PromptIcon::Exclamation);
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(QStringLiteral("plan.xyz")));
  EXPECT_TRUE(
      prompts_.Asked().back().informativeText.contains(QStringLiteral("No program opened the file.")));
}

TEST_F(EndingTest, LateRunFailuresWaitForALabelEditor) {
  StartIn(kDriveC);
  TypeOver(QStringLiteral("readme.txt"), QStringLiteral("other"));
  Window()->RunFailedLate(QStringLiteral("/x/plan.xyz"), QStringLiteral("No program opened the file."));
  QTest::qWait(200);
  EXPECT_TRUE(prompts_.Asked().empty());
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  QTest::keyClick(List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), Qt::Key_Escape);
  EXPECT_TRUE(QTest::qWaitFor([&] { return prompts_.Asked().size() == 1; }, 30'000));
}

TEST_F(EndingTest, LateRunFailuresAreDroppedAfterClosing) {
  Start();
  Window()->RunFailedLate(QStringLiteral("/x/plan.xyz"), QStringLiteral("No program opened the file."));
  EXPECT_TRUE(Window()->close());
  QTest::qWait(200);
  EXPECT_TRUE(prompts_.Asked().empty());
}

}  // namespace
}  // namespace trevane::test
