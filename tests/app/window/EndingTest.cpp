// Closing the window, and the system's request to end, while something runs, stands or is edited.
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

using namespace Qt::StringLiterals;

const QString kDriveC = u"Workspace\\My Computer\\C:"_s;
constexpr int kYesAll = 1;

class EndingTest : public MainWindowFixture {
 protected:
  EndingTest() {
    for (const char* name : {"f1", "f2", "f3", "f4", "f5"})
      memory_->AddFile(u"C:\\many\\"_s + QLatin1String(name), "x");
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
    auto* editor = List().findChild<QLineEdit*>(u"txtLabel"_s);
    ASSERT_NE(editor, nullptr);
    QCoreApplication::processEvents();
    editor->selectAll();
    QTest::keyClicks(editor, text);
  }

  [[nodiscard]] QStringList Left() {
    QStringList left;
    for (const char* name : {"f1", "f2", "f3", "f4", "f5"}) {
      if (memory_->Exists(u"C:\\many\\"_s + QLatin1String(name)))
        left += QLatin1String(name);
    }
    return left;
  }
};

TEST_F(EndingTest, ClosingDropsWhatIsBeingTypedIntoALabel) {
  StartIn(kDriveC);
  TypeOver(u"readme.txt"_s, u"other.txt"_s);
  EXPECT_TRUE(Window()->close());
  QTest::qWait(20);
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\other.txt"_s));
  EXPECT_FALSE(Content("Trevane.log").contains("RENAME"));
}

TEST_F(EndingTest, ClosingAsksNothingAboutATypedNameThatExists) {
  memory_->AddFile(u"C:\\other.txt"_s, "other");
  StartIn(kDriveC);
  TypeOver(u"readme.txt"_s, u"other.txt"_s);
  EXPECT_TRUE(Window()->close());
  QTest::qWait(20);
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_EQ(memory_->Content(u"C:\\other.txt"_s), "other");
}

TEST_F(EndingTest, ARenameOnItsWayWhenTheWindowClosesIsNotMade) {
  StartIn(kDriveC);
  TypeOver(u"readme.txt"_s, u"other.txt"_s);
  QTest::keyClick(List().findChild<QLineEdit*>(u"txtLabel"_s), Qt::Key_Return);
  Window()->close();
  QTest::qWait(20);
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
}

TEST_F(EndingTest, ClosingDuringADeleteKeepsTheRest) {
  StartIn(kDriveC + u"\\many"_s);
  List().selectAll();
  prompts_.ExpectChoice(kYesAll);
  int deletions = 0;
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && ++deletions == 2)
      QTimer::singleShot(0, Window(), &QWidget::close);
  });
  Window()->Dispatch(CommandId::Delete);
  EXPECT_EQ(deletions, 2);
  EXPECT_EQ(Left(), (QStringList{u"f3"_s, u"f4"_s, u"f5"_s}));
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, ClosingDuringTheDeleteOfAFolderKeepsTheRest) {
  StartIn(kDriveC);
  ClickItem(u"many"_s);
  prompts_.ExpectChoice(kYesAll);
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove)
      QTimer::singleShot(0, Window(), &QWidget::close);
  });
  Window()->Dispatch(CommandId::Delete);
  EXPECT_TRUE(memory_->Exists(u"C:\\many"_s));
  EXPECT_FALSE(Left().isEmpty());
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, ClosingDuringAPasteKeepsTheRestFromBeingCopied) {
  StartIn(kDriveC + u"\\many"_s);
  List().selectAll();
  Window()->Dispatch(CommandId::Copy);
  ClickNode(kDriveC + u"\\Backup"_s);
  prompts_.RecordedGauge().onIncrement = [&, increments = 0]() mutable {
    if (++increments == 2)
      Window()->close();
  };
  Window()->Dispatch(CommandId::Paste);
  prompts_.RecordedGauge().onIncrement = {};
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\f2"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\f3"_s));
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, AQuestionThatStandsAtTheEndIsAnsweredCancel) {
  StartIn(kDriveC + u"\\many"_s);
  List().selectAll();
  prompts_.onQuestion = [&](const AskedQuestion&) { EXPECT_FALSE(Window()->close()); };
  // The answer of a box that closes, by Esc for one.
  prompts_.ExpectChoice(kYesAll);
  Window()->Dispatch(CommandId::Delete);
  EXPECT_EQ(Left().size(), 5);
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
}

TEST_F(EndingTest, ClosingDuringTheQuestionOfARenameReplacesNothing) {
  memory_->AddFile(u"C:\\other.txt"_s, "other");
  StartIn(kDriveC);
  TypeOver(u"readme.txt"_s, u"other.txt"_s);
  bool unloaded = false;
  QObject::connect(Window(), &frmFileMgr::Unloaded, Window(), [&] { unloaded = true; });
  prompts_.onQuestion = [&](const AskedQuestion&) {
    Window()->CloseUnattended();
    EXPECT_FALSE(unloaded);
  };
  prompts_.ExpectChoice(0);
  QTest::keyClick(List().findChild<QLineEdit*>(u"txtLabel"_s), Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 2000));
  EXPECT_EQ(memory_->Content(u"C:\\other.txt"_s), "other");
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
}

TEST_F(EndingTest, NothingBeginsOnceTheWindowIsUnloaded) {
  StartIn(kDriveC);
  ClickItem(u"readme.txt"_s);
  EXPECT_TRUE(Window()->close());
  int calls = 0;
  faulty_->SetHook([&](const FileSystemCall&) { ++calls; });
  for (const CommandId command :
       {CommandId::Copy, CommandId::Cut, CommandId::Paste, CommandId::Delete, CommandId::Run,
        CommandId::Rename, CommandId::NewFolder, CommandId::Refresh, CommandId::Parent, CommandId::Properties,
        CommandId::Option, CommandId::Version, CommandId::OpenWorkspace, CommandId::SaveWorkspaceAs,
        CommandId::Connect, CommandId::DisconnectAll, CommandId::GoToAddress})
    Window()->Dispatch(command);
  Q_EMIT List().ItemActivated(Window()->ListModel().HandleAt(0));
  Q_EMIT Tree().NodeClicked(Node(kDriveC));
  QCoreApplication::processEvents();
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_EQ(prompts_.ShownSettings(), 0);
  EXPECT_TRUE(prompts_.ShownProperties().empty());
}

TEST_F(EndingTest, UnsavedSettingsAreToldAfterAClosingAlone) {
  for (const bool attended : {true, false}) {
    prompts_.ForgetAsked();
    Start();
    ASSERT_TRUE(QDir(folder_.path()).mkdir(u"Trevane.ini"_s));
    if (attended) {
      prompts_.ExpectBox(u"Failed Save Ini File."_s);
      Window()->close();
    } else {
      Window()->CloseUnattended();
    }
    EXPECT_EQ(prompts_.Asked().size(), attended ? 1U : 0U);
    ASSERT_TRUE(QDir(folder_.path()).rmdir(u"Trevane.ini"_s));
    program_.reset();
  }
}

TEST_F(EndingTest, ClosingDuringTheOpeningOfAWorkspaceConnectsNoFurther) {
  const QString file = InFolder("cells.fmg");
  QByteArray sections;
  for (const char* name : {"One", "Two", "Three"})
    sections +=
        QByteArray("[") + name + "]\r\nCtrlName=" + name + "\r\nProvider=IxoProv.LocalFile\r\nRoot=/\r\n";
  Put("cells.fmg", sections);
  Start();
  prompts_.RecordedGauge().onIncrement = [&] { Window()->close(); };
  EXPECT_TRUE(Window()->Workspace().OpenWorkspace(file));
  prompts_.RecordedGauge().onIncrement = {};
  EXPECT_EQ(program_->Session().gIxoCtrls().Count(), 2);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !Window()->isVisible(); }, 2000));
}

TEST_F(EndingTest, AnEndDuringTheFirstWorkspaceShowsNoWindow) {
  Put("cells.fmg", "[One]\r\nCtrlName=One\r\nProvider=None\r\n[Two]\r\nCtrlName=Two\r\nProvider=None\r\n");
  prompts_.ForgetEnding();
  program_ = std::make_unique<modMain>(Services());
  prompts_.onQuestion = [&](const AskedQuestion&) { Window()->CloseUnattended(); };
  prompts_.ExpectBox(u"Failed in connecting to the controller( One )."_s);
  program_->Start(InFolder("cells.fmg"));
  EXPECT_EQ(Window(), nullptr);
  EXPECT_TRUE(Content("Trevane.ini").startsWith("[Form]"));
}

TEST_F(EndingTest, AFailureToOpenAFileIsToldWhenNothingElseStands) {
  Start();
  prompts_.ExpectBox(u"No controller is connecting."_s);
  prompts_.onQuestion = [&, first = true](const AskedQuestion&) mutable {
    if (!std::exchange(first, false))
      return;
    Window()->RunFailedLate(u"/home/user/plan.xyz"_s, u"No program opened the file."_s);
    QTest::qWait(200);
    EXPECT_EQ(prompts_.Asked().size(), 1U);
  };
  prompts_.ExpectBox(u"Failed in the Run() method."_s);
  Window()->Dispatch(CommandId::SaveWorkspace);
  EXPECT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return prompts_.Asked().size() == 2; }, 2000));
  EXPECT_EQ(prompts_.Asked().back().icon, PromptIcon::Exclamation);
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(u"plan.xyz"_s));
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(u"No program opened the file."_s));
}

TEST_F(EndingTest, AFailureToOpenAFileDoesNotDisturbALabelEditor) {
  StartIn(kDriveC);
  TypeOver(u"readme.txt"_s, u"other"_s);
  Window()->RunFailedLate(u"/x/plan.xyz"_s, u"No program opened the file."_s);
  QTest::qWait(200);
  EXPECT_TRUE(prompts_.Asked().empty());
  prompts_.ExpectBox(u"Failed in the Run() method."_s);
  QTest::keyClick(List().findChild<QLineEdit*>(u"txtLabel"_s), Qt::Key_Escape);
  EXPECT_TRUE(QTest::qWaitFor([&] { return prompts_.Asked().size() == 1; }, 2000));
}

TEST_F(EndingTest, AFailureToOpenAFileIsNotToldAfterClosing) {
  Start();
  Window()->RunFailedLate(u"/x/plan.xyz"_s, u"No program opened the file."_s);
  EXPECT_TRUE(Window()->close());
  QTest::qWait(200);
  EXPECT_TRUE(prompts_.Asked().empty());
}

}  // namespace
}  // namespace trevane::test
