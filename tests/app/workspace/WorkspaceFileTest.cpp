#include "app/settings/clsProfile.h"
#include "app/workspace/WorkspaceFile.h"
#include "engine/items/clsIxoFile.h"
#include "platform/OwnFile.h"
#include "tests/support/ConnectWorld.h"
#include "tests/support/TestFiles.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#ifdef Q_OS_LINUX
#include "tests/support/FlushFault.h"

#include <cerrno>
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#endif

namespace trevane::test {
namespace {

const QString kDisconnectAll = QStringLiteral("Disconnect All IxoControllers. Are you sure?");
const QString kCouldNotOpen = QStringLiteral("Couldn't open the file.");
const QString kCouldNotSave = QStringLiteral("Couldn't save the file.");
const QString kCannotOverwrite = QStringLiteral("Can't overwrite the file.");
const QString kNoController = QStringLiteral("No controller is connecting.");
const QString kFilter = QStringLiteral("FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*");

class WorkspaceFileTest : public testing::Test {
 protected:
  WorkspaceFileTest() { world_.drives.RefreshDrives(); }

  QString In(const QString& name) const { return QDir::toNativeSeparators(folder_.filePath(name)); }
  QString Put(const QString& name, const QByteArray& content) const {
    WriteFile(In(name), content);
    return In(name);
  }
  QByteArray Content(const QString& name) const { return ContentOf(In(name)); }
  QStringList Files() const {
    return QDir(folder_.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
  }
  static QByteArray Section(const QByteArray& name, const QByteArray& option = {}) {
    return '[' + name + "]\r\nCtrlName=" + name + "\r\nProvider=IxoProv.Cell\r\nMachine=m-" + name +
           "\r\nOption=" + option + "\r\nRoot=/\r\n";
  }
  static QString FailedText(const QString& name) {
    return QStringLiteral("Failed in connecting to the controller( ") + name + QStringLiteral(" ).");
  }

  QTemporaryDir folder_;
  ConnectWorld world_;
  QStringList captions_;
  int saveImages_ = 0;
  WorkspaceFile workspace_{{.connector = world_.connector,
                            .volumes = world_.volumes,
                            .files = world_.files,
                            .navigator = world_.navigator,
                            .tree = world_.tree,
                            .host = world_.host,
                            .programFolder = QStringLiteral("/program"),
                            .setCaption = [this](const QString& text) { captions_ += text; },
                            .resetSaveImage = [this] { ++saveImages_; }}};
};

TEST_F(WorkspaceFileTest, EverySectionIsConnectedInTheOrderOfTheFile) {
  const QString file = Put(QStringLiteral("two.fmg"), Section("B", "opt") + Section("A"));
  QStringList labels;
  world_.host.onEvents = [&] { labels += world_.prompts.RecordedGauge().GageLabel(); };
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(labels, (QStringList{QStringLiteral("Connect Controller(B)."),
                                 QStringLiteral("Connect Controller(A).")}));
  EXPECT_EQ(world_.requests, (QStringList{QStringLiteral("m-B|opt"), QStringLiteral("m-A|")}));
  EXPECT_EQ(world_.Registered(), (QStringList{QStringLiteral("B"), QStringLiteral("A")}));
  EXPECT_EQ(world_.Nodes(), (QStringList{QStringLiteral("B"), QStringLiteral("A")}));
  EXPECT_EQ(world_.Items(),
            (QStringList{QStringLiteral("My Computer"), QStringLiteral("B"), QStringLiteral("A")}));
  EXPECT_EQ(world_.log.Lines(), (QStringList{QStringLiteral("CONNECT|B|IxoProv.Cell|m-B|opt"),
                                             QStringLiteral("CONNECT|A|IxoProv.Cell|m-A")}));
  EXPECT_EQ(captions_, QStringList{QStringLiteral("Trevane - (") + file + u')'});
  EXPECT_EQ(workspace_.CurrentFile(), file);
  EXPECT_EQ(world_.prompts.RecordedGauge().Captions(), QStringList{QStringLiteral("Open Controllers")});
  EXPECT_EQ(world_.host.Turns(), 2);
  EXPECT_TRUE(world_.host.WasBusy());
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, TheWindowIsDisabledWhileItemsAppearOneByOne) {
  const QString file = Put(QStringLiteral("two.fmg"), Section("A") + Section("B"));
  std::vector<QStringList> seen;
  world_.host.onEvents = [&] {
    EXPECT_FALSE(world_.host.IsEnabled());
    EXPECT_TRUE(world_.host.IsBusy());
    EXPECT_TRUE(workspace_.IsOpening());
    EXPECT_TRUE(world_.prompts.RecordedGauge().IsCancelEnabled());
    EXPECT_FALSE(workspace_.OpenWorkspace(file)) << "no opening inside an opening";
    seen.push_back(world_.Items());
  };
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(seen, (std::vector<QStringList>{
                      {QStringLiteral("My Computer"), QStringLiteral("A")},
                      {QStringLiteral("My Computer"), QStringLiteral("A"), QStringLiteral("B")}}));
  EXPECT_FALSE(workspace_.IsOpening());
}

TEST_F(WorkspaceFileTest, AFileWithoutSectionsOnlyChangesTheCaption) {
  const QString file = Put(QStringLiteral("none.fmg"), "");
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_TRUE(world_.Registered().isEmpty());
  EXPECT_EQ(captions_, QStringList{QStringLiteral("Trevane - (") + file + u')'});
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, ASectionWithoutARootYieldsTheTop) {
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(QStringLiteral("a.fmg"),
          "[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\n[B]\r\nProvider=IxoProv.Cell\r\nRoot=\r\n")));
  ASSERT_EQ(world_.Registered().size(), 2);
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{2})->Root(), QStringLiteral("/"));
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{3})->Root(), QStringLiteral(""));
}

TEST_F(WorkspaceFileTest, TheSectionsEndAtTheFirstEmptyName) {
  if (RunsUnderWine()) {
    GTEST_SKIP() << "Wine finds no section without a name";
  }
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("a.fmg"), Section("A") + "[]\r\n" + Section("B"))));
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
}

TEST_F(WorkspaceFileTest, AMissingFileIsReportedAndTheWorkspaceShown) {
  world_.Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_FALSE(workspace_.OpenWorkspace(In(QStringLiteral("none.fmg"))));
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace"));
  EXPECT_TRUE(captions_.isEmpty());
  world_.prompts.ExpectFile(In(QStringLiteral("none.fmg")));
  world_.prompts.ExpectBox(kCouldNotOpen);
  workspace_.Open();
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(world_.prompts.Asked().front().title, QString());
  EXPECT_EQ(world_.prompts.Asked().front().informativeText,
            QStringLiteral("none.fmg\nThere is no such file: ") + In(QStringLiteral("none.fmg")));
  EXPECT_EQ(world_.host.reasons.size(), 1);
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, AFolderAndAnEmptyNameAreNoWorkspaceFile) {
  EXPECT_FALSE(workspace_.OpenWorkspace(folder_.path()));
  EXPECT_FALSE(workspace_.OpenWorkspace(QString()));
}

#ifdef Q_OS_LINUX
TEST_F(WorkspaceFileTest, APipeIsNotEvenOpened) {
  ASSERT_EQ(::mkfifo(In(QStringLiteral("pipe.fmg")).toUtf8().constData(), 0600), 0);
  EXPECT_FALSE(workspace_.OpenWorkspace(In(QStringLiteral("pipe.fmg"))));
}
#endif

TEST_F(WorkspaceFileTest, ARelativeNameIsMadeAbsolute) {
  const QString file = Put(QStringLiteral("rel.fmg"), Section("A"));
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder_.path()));
  EXPECT_TRUE(workspace_.OpenWorkspace(QStringLiteral("./sub/../rel.fmg")));
  QDir::setCurrent(before);
  EXPECT_EQ(QFileInfo(workspace_.CurrentFile()).canonicalFilePath(), QFileInfo(file).canonicalFilePath());
  EXPECT_TRUE(QDir::isAbsolutePath(workspace_.CurrentFile()));
}

TEST_F(WorkspaceFileTest, OpeningAsksOnceAndReplacesWhatIsConnected) {
  world_.Connect(QStringLiteral("Old1"));
  world_.Connect(QStringLiteral("Old2"));
  world_.Display(QStringLiteral("Workspace\\Old2"));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("a.fmg"), Section("A"))));
  EXPECT_EQ(world_.prompts.Asked().size(), 1u);
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Question);
  EXPECT_EQ(world_.prompts.Asked().front().buttons, PromptButtons::OkCancel);
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
  EXPECT_EQ(world_.log.Lines(),
            (QStringList{QStringLiteral("DISCONNECT|Old1"), QStringLiteral("DISCONNECT|Old2"),
                         QStringLiteral("CONNECT|A|IxoProv.Cell|m-A")}));
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace"));
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, AControllerWithoutRootIsReplacedByTheNextOfItsName) {
  world_.prompts.ExpectBox(QStringLiteral("Failed in connecting to the controller( A )."));
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(QStringLiteral("a.fmg"),
          "[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\nMachine=m-A\r\nRoot=/nowhere\r\n")));
  EXPECT_TRUE(world_.Registered().isEmpty());
  ASSERT_NE(world_.tree.FindByKey(QStringLiteral("Workspace\\A")), nullptr);
  // It stays open in the engine; the user did not ask for a place below its top.
  clsIxoFile top = world_.files.FileAt(QStringLiteral("Workspace\\A"));
  EXPECT_NE(top.Result(), 0);
  world_.Connect(QStringLiteral("A"));
  EXPECT_EQ(world_.Nodes(), QStringList{QStringLiteral("A")});
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
  top.SetPath(QStringLiteral("Workspace\\A"));
  EXPECT_EQ(top.Result(), 0);
}

TEST_F(WorkspaceFileTest, OpeningAgainGivesWhatFailedItsNameBack) {
  const QByteArray good = Section("A");
  const QString file = Put(QStringLiteral("a.fmg"), QByteArray(good).replace("Root=/", "Root=/nowhere"));
  world_.prompts.ExpectBox(FailedText(QStringLiteral("A")));
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  Put(QStringLiteral("a.fmg"), good);
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(world_.Nodes(), QStringList{QStringLiteral("A")});
}

TEST_F(WorkspaceFileTest, NewControllersAreNotListedInPlaceOfARemovedOne) {
  world_.Connect(QStringLiteral("Old"));
  world_.Display(QStringLiteral("Workspace\\Old"));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  QStringList tags;
  world_.host.onEvents = [&] { tags += world_.navigator.CurrentAddress(); };
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("a.fmg"), Section("A") + Section("B"))));
  world_.host.onEvents = nullptr;
  EXPECT_EQ(tags, (QStringList{QStringLiteral("Workspace"), QStringLiteral("Workspace")}));
}

TEST_F(WorkspaceFileTest, NoControllerThatIsGoneIsListedWhileOthersConnect) {
  ASSERT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("old.fmg"), Section("Old"))));
  std::vector<QStringList> seen;
  world_.host.onPainting = [&] { seen.push_back(world_.Items()); };
  world_.prompts.ExpectBox(PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("new.fmg"), Section("A") + Section("B"))));
  EXPECT_EQ(seen, (std::vector<QStringList>{{QStringLiteral("My Computer")},
                                            {QStringLiteral("My Computer"), QStringLiteral("A")}}));
}

TEST_F(WorkspaceFileTest, SaveAsStartsWithTheCurrentFile) {
  const QString file = Put(QStringLiteral("a.fmg"), Section("A"));
  ASSERT_TRUE(workspace_.OpenWorkspace(file));
  world_.prompts.ExpectFile(QString());
  workspace_.SaveAs();
  ASSERT_EQ(world_.prompts.AskedFiles().size(), 1U);
  EXPECT_EQ(world_.prompts.AskedFiles()[0].fileName, file);
}

TEST_F(WorkspaceFileTest, CancelAtTheQuestionChangesNothing) {
  world_.Connect(QStringLiteral("Old"));
  world_.Display(QStringLiteral("Workspace\\Old"));
  world_.prompts.ExpectFile(Put(QStringLiteral("a.fmg"), Section("A")));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Cancel);
  workspace_.Open();
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("Old")});
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace\\Old"));
  EXPECT_TRUE(captions_.isEmpty());
  EXPECT_TRUE(world_.log.Lines().isEmpty());
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, CancelOnTheGaugeStopsAfterTheCurrentController) {
  const QString file = Put(QStringLiteral("a.fmg"), Section("A") + Section("B") + Section("C"));
  world_.host.onEvents = [&] {
    if (world_.host.Turns() == 2) {
      world_.prompts.RecordedGauge().ClickCancel();
    }
  };
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(world_.Registered(), (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
  EXPECT_EQ(workspace_.CurrentFile(), file);
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, ClosingTheProgramStopsTheOpeningToo) {
  world_.host.onEvents = [&] { world_.prompts.End(UserPrompts::Ending::ByUser); };
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("a.fmg"), Section("A") + Section("B"))));
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
}

TEST_F(WorkspaceFileTest, AFailingControllerIsReportedAndTheNextIsTried) {
  world_.prompts.ExpectBox(FailedText(QStringLiteral("A")));
  world_.prompts.ExpectBox(FailedText(QString()));
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(
      QStringLiteral("a.fmg"), Section("A", "refuse") + "[Unnamed]\r\nProvider=None\r\n" + Section("B"))));
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(world_.prompts.Asked().front().informativeText, QStringLiteral("A\nrefused"));
  EXPECT_EQ(world_.prompts.Asked().back().informativeText,
            QStringLiteral("Unnamed\nThere is no provider with the name 'None'"));
  EXPECT_EQ(world_.host.reasons, (QStringList{QStringLiteral("refused"),
                                              QStringLiteral("There is no provider with the name 'None'")}));
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("B")});
  EXPECT_EQ(world_.Nodes(),
            (QStringList{QStringLiteral("!A"), QStringLiteral("!Unnamed"), QStringLiteral("B")}));
  EXPECT_EQ(world_.Items(), (QStringList{QStringLiteral("My Computer"), QStringLiteral("B"),
                                         QStringLiteral("!A"), QStringLiteral("!Unnamed")}));
  EXPECT_EQ(world_.log.Lines(), QStringList{QStringLiteral("CONNECT|B|IxoProv.Cell|m-B")});
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, AnErrorNodeBearsTheNameThatTheEngineGaveIfItDid) {
  world_.prompts.ExpectBox(FailedText(QStringLiteral("a[b]")));
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(QStringLiteral("a.fmg"), "[X]\r\nCtrlName=a[b]\r\nProvider=IxoProv.Cell\r\nRoot=/nowhere\r\n")));
  EXPECT_EQ(world_.Nodes(), QStringList{QStringLiteral("!ab")});
}

TEST_F(WorkspaceFileTest, ErrorNodesOfTheWorkspaceBeforeGoWithoutAQuestion) {
  world_.AddErrorNode(QStringLiteral("Bad"));
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(QStringLiteral("none.fmg"), "")));
  EXPECT_TRUE(world_.Nodes().isEmpty());
}

TEST_F(WorkspaceFileTest, ADisconnectionThatFailsEndsTheOpening) {
  world_.Connect(QStringLiteral("Old1"));
  world_.Connect(QStringLiteral("Old2"));
  world_.prompts.ExpectFile(Put(QStringLiteral("a.fmg"), Section("A")));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  world_.prompts.ExpectBox(kCouldNotOpen);
  world_.engine->Arm(2);
  workspace_.Open();
  world_.engine->Disarm();
  EXPECT_EQ(world_.prompts.Asked().back().informativeText.section(u'\n', 0, 0), QStringLiteral("a.fmg"));
  EXPECT_FALSE(world_.prompts.Asked().back().informativeText.section(u'\n', 1).isEmpty());
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("Old2")});
  EXPECT_TRUE(captions_.isEmpty());
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, TheDialogsAskForWorkspaceFilesInTheProgramsFolder) {
  world_.prompts.ExpectFile(QString());
  workspace_.Open();
  world_.Connect(QStringLiteral("A"));
  world_.prompts.ExpectFile(QString());
  workspace_.SaveAs();
  const std::vector<FileQuestion>& asked = world_.prompts.AskedFiles();
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[0].mode, FileQuestion::Mode::Open);
  EXPECT_EQ(asked[0].title, QStringLiteral("Open"));
  EXPECT_EQ(asked[1].mode, FileQuestion::Mode::Save);
  EXPECT_EQ(asked[1].title, QStringLiteral("Save"));
  for (const FileQuestion& question : asked) {
    EXPECT_EQ(question.filter, kFilter);
    EXPECT_EQ(question.initialFolder, QStringLiteral("/program"));
    EXPECT_EQ(question.fileName, QString());
  }
  EXPECT_EQ(saveImages_, 0);
}

TEST_F(WorkspaceFileTest, SavingWritesASectionForEachControllerInOrder) {
  const auto record = ConnectWorld::Record(QStringLiteral(""));
  record->SetMachineName(QStringLiteral("host"));
  record->SetCtrlOption(QStringLiteral("a=b,c"));
  record->SetRoot(QStringLiteral("prog"));
  ASSERT_TRUE(world_.connector.ConnectController(record));
  world_.Connect(QStringLiteral("A"));
  EXPECT_TRUE(workspace_.SaveWorkspace(In(QStringLiteral("s.fmg"))));
  EXPECT_EQ(Content(QStringLiteral("s.fmg")),
            "[" + record->RealCtrlName().toUtf8() +
                "]\r\nCtrlName=\r\nProvider=IxoProv.Cell\r\nMachine=host\r\nOption=a=b,c\r\n"
                "Root=prog\r\n[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\nMachine=\r\n"
                "Option=\r\nRoot=/\r\n");
  EXPECT_EQ(captions_, QStringList{QStringLiteral("Trevane - (") + In(QStringLiteral("s.fmg")) + u')'});
  EXPECT_EQ(Files(), QStringList{QStringLiteral("s.fmg")});
}

TEST_F(WorkspaceFileTest, WhatWasSavedIsOpenedAgain) {
  world_.Connect(QStringLiteral("A"));
  world_.Connect(QStringLiteral("B"));
  EXPECT_TRUE(workspace_.SaveWorkspace(In(QStringLiteral("s.fmg"))));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(In(QStringLiteral("s.fmg"))));
  EXPECT_EQ(world_.Registered(), (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
}

TEST_F(WorkspaceFileTest, ValuesComeBackWithTheirOuterBlanksAndQuotes) {
  const auto record = ConnectWorld::Record(QStringLiteral("A"));
  record->SetMachineName(QStringLiteral("  m"));
  record->SetCtrlOption(QStringLiteral("\"Path=x\""));
  ASSERT_TRUE(world_.connector.ConnectController(record));
  ASSERT_TRUE(workspace_.SaveWorkspace(In(QStringLiteral("s.fmg"))));
  EXPECT_TRUE(Content(QStringLiteral("s.fmg")).contains("Machine=\"  m\"\r\nOption=\"\"Path=x\"\"\r\n"));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  ASSERT_TRUE(workspace_.OpenWorkspace(In(QStringLiteral("s.fmg"))));
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{2})->MachineName(), QStringLiteral("  m"));
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{2})->CtrlOption(), QStringLiteral("\"Path=x\""));
}

TEST_F(WorkspaceFileTest, AFileTooLargeIsNotOpenedAndNothingIsDisconnected) {
  world_.Connect(QStringLiteral("A"));
  const QString file = Put(QStringLiteral("a.fmg"), Section("B"));
  ASSERT_TRUE(QFile::resize(file, ownfile::kLargestFile + 1));
  EXPECT_FALSE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
  EXPECT_TRUE(captions_.isEmpty());
}

TEST_F(WorkspaceFileTest, NoSectionOfAnOlderWorkspaceSurvivesASave) {
  world_.Connect(QStringLiteral("A"));
  const QString file = Put(QStringLiteral("s.fmg"), "; mine\r\n" + Section("Older"));
  world_.local->AddFile(QStringLiteral("C:") + QString(file).replace(u'/', u'\\'));
  EXPECT_TRUE(workspace_.SaveWorkspace(file));
  EXPECT_EQ(clsProfile(file).GetSectNames(), QStringList{QStringLiteral("A")});
}

TEST_F(WorkspaceFileTest, TheLaterOfTwoControllersWithOneSectionNameIsKept) {
  for (const QString& name : {QStringLiteral("Cell"), QStringLiteral("Cell ")}) {
    const auto record = ConnectWorld::Record(QStringLiteral("typed ") + QString::number(name.size()));
    record->SetRealCtrlName(name);
    world_.session.gIxoCtrls().Add(record);
  }
  EXPECT_TRUE(workspace_.SaveWorkspace(In(QStringLiteral("s.fmg"))));
  const clsProfile profile(In(QStringLiteral("s.fmg")));
  EXPECT_EQ(profile.GetSectNames().size(), 1);
  EXPECT_EQ(profile.GetString(QStringLiteral("Cell"), QStringLiteral("CtrlName")), QStringLiteral("typed 5"));
}

TEST_F(WorkspaceFileTest, SaveAsksForANameOnceAndThenKeepsIt) {
  world_.Connect(QStringLiteral("A"));
  world_.prompts.ExpectFile(In(QStringLiteral("s.fmg")));
  workspace_.Save();
  EXPECT_EQ(saveImages_, 1);
  world_.Connect(QStringLiteral("B"));
  workspace_.Save();
  EXPECT_EQ(clsProfile(In(QStringLiteral("s.fmg"))).GetSectNames(),
            (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
  EXPECT_EQ(world_.prompts.AskedFiles().size(), 1u);
  world_.prompts.ExpectFile(In(QStringLiteral("t.fmg")));
  workspace_.SaveAs();
  EXPECT_EQ(workspace_.CurrentFile(), In(QStringLiteral("t.fmg")));
  EXPECT_EQ(saveImages_, 2);
}

TEST_F(WorkspaceFileTest, WithTheLocalControllerAloneNothingIsSaved) {
  world_.prompts.ExpectBox(kNoController);
  workspace_.Save();
  world_.prompts.ExpectBox(kNoController);
  workspace_.SaveAs();
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_TRUE(Files().isEmpty());
}

TEST_F(WorkspaceFileTest, AFolderOfThatNameIsRefused) {
  world_.Connect(QStringLiteral("A"));
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("real.fmg")));
  EXPECT_FALSE(workspace_.SaveWorkspace(In(QStringLiteral("real.fmg"))));
  const QString known = In(QStringLiteral("known.fmg")).replace(u'/', u'\\');
  world_.local->AddFolder(known.startsWith(u"C:") ? known : QStringLiteral("C:") + known);
  EXPECT_FALSE(workspace_.SaveWorkspace(In(QStringLiteral("known.fmg"))));
  EXPECT_EQ(Files(), QStringList{QStringLiteral("real.fmg")});
  EXPECT_TRUE(captions_.isEmpty());
}

TEST_F(WorkspaceFileTest, AReadOnlyFileAndAMissingFolderAreReported) {
  world_.Connect(QStringLiteral("A"));
  const QString file = Put(QStringLiteral("s.fmg"), "old");
  ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner));
  workspace_.SetWorkspaceCaption(file);
  world_.prompts.ExpectBox(kCannotOverwrite);
  workspace_.Save();
  EXPECT_EQ(Content(QStringLiteral("s.fmg")), "old");
  EXPECT_TRUE(world_.prompts.Asked().back().informativeText.startsWith(QStringLiteral("s.fmg\n")));
  EXPECT_TRUE(world_.prompts.Asked().back().informativeText.endsWith(QStringLiteral(": ") + file));
  world_.prompts.ExpectFile(In(QStringLiteral("none/s.fmg")));
  world_.prompts.ExpectBox(kCouldNotSave);
  workspace_.SaveAs();
  EXPECT_EQ(world_.prompts.Asked().back().informativeText.section(u'\n', 0, 0), QStringLiteral("s.fmg"));
  EXPECT_EQ(world_.host.reasons.size(), 2);
  EXPECT_EQ(saveImages_, 0);
  EXPECT_EQ(workspace_.CurrentFile(), file);
  EXPECT_EQ(Files(), QStringList{QStringLiteral("s.fmg")});
}

TEST_F(WorkspaceFileTest, APlaceThatNoDriveHoldsIsRefused) {
  world_.Connect(QStringLiteral("A"));
  world_.volumes.Set({{QStringLiteral("C:"), QStringLiteral("/elsewhere/"), drivetype::kFixed}});
  EXPECT_FALSE(workspace_.SaveWorkspace(In(QStringLiteral("s.fmg"))));
  EXPECT_TRUE(Files().isEmpty());
}

#ifdef Q_OS_LINUX
TEST_F(WorkspaceFileTest, AWriteThatFailsHalfwayLeavesTheOldFileAsItWas) {
  world_.Connect(QStringLiteral("A"));
  const QString file = Put(QStringLiteral("s.fmg"), "old");
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
  for (const rlim_t size : {1, 20, 40, 60}) {
    rlimit small = old;
    small.rlim_cur = size;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool saved = workspace_.SaveWorkspace(file);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
    EXPECT_FALSE(saved) << size;
    EXPECT_EQ(Content(QStringLiteral("s.fmg")), "old");
    EXPECT_EQ(Files(), QStringList{QStringLiteral("s.fmg")});
  }
  std::signal(SIGXFSZ, before);
  EXPECT_TRUE(workspace_.SaveWorkspace(file));
}

TEST_F(WorkspaceFileTest, ADiskThatIsFullOnlyInTheFlushLeavesTheOldFile) {
  world_.Connect(QStringLiteral("A"));
  const QString file = Put(QStringLiteral("s.fmg"), "old");
  const int before = FlushCount();
  {
    const FailingFlush full(ENOSPC);
    EXPECT_FALSE(workspace_.SaveWorkspace(file));
  }
  EXPECT_EQ(FlushCount() - before, 1);
  EXPECT_EQ(Content(QStringLiteral("s.fmg")), "old");
  EXPECT_EQ(Files(), QStringList{QStringLiteral("s.fmg")});
}

TEST_F(WorkspaceFileTest, ANewFileIsPrivateUntilItIsWritten) {
  world_.Connect(QStringLiteral("A"));
  const auto modeOf = [this](const QString& name) {
    struct stat status {};
    EXPECT_EQ(::stat(In(name).toUtf8().constData(), &status), 0);
    return status.st_mode & 07777;
  };
  const auto old = ::umask(026);
  mode_t before = 0;
  QStringList names;
  {
    // When all is written, and it is about to be made to last.
    const WatchedFlush watch([&](int) {
      names = Files();
      before = modeOf(names.value(0));
    });
    EXPECT_TRUE(workspace_.SaveWorkspace(In(QStringLiteral("s.fmg"))));
  }
  ::umask(old);
  ASSERT_EQ(names.size(), 1);
  EXPECT_NE(names[0], QStringLiteral("s.fmg"));
  EXPECT_EQ(before, 0600U);
  EXPECT_EQ(modeOf(QStringLiteral("s.fmg")), 0640U);
}

TEST_F(WorkspaceFileTest, SavingKeepsPermissionsLinksAndUndecodableNames) {
  world_.Connect(QStringLiteral("A"));
  const QString file = Put(QStringLiteral("s.fmg"), "old");
  ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
  ASSERT_TRUE(QFile::link(file, In(QStringLiteral("link.fmg"))));
  EXPECT_TRUE(workspace_.SaveWorkspace(In(QStringLiteral("link.fmg"))));
  EXPECT_EQ(clsProfile(file).GetSectNames(), QStringList{QStringLiteral("A")});
  EXPECT_TRUE(QFileInfo(In(QStringLiteral("link.fmg"))).isSymLink());
  struct stat status {};
  ASSERT_EQ(::stat(file.toUtf8().constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  const QString odd = In(QStringLiteral("x") + QChar(0xDCFF) + QStringLiteral(".fmg"));
  EXPECT_TRUE(workspace_.SaveWorkspace(odd));
  const QByteArray bytes = folder_.path().toUtf8() + "/x\xFF.fmg";
  EXPECT_EQ(::stat(bytes.constData(), &status), 0);
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(odd));
  ::unlink(bytes.constData());
}
#endif

TEST_F(WorkspaceFileTest, EveryFailingCallWhileOpeningLeavesAUsableWindow) {
  const QString file = Put(QStringLiteral("a.fmg"), Section("A") + Section("B"));
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    bool wentWrong = true;
    for (int call = 1; wentWrong; ++call) {
      SCOPED_TRACE(call);
      ASSERT_LT(call, 100);
      ASSERT_TRUE(world_.connector.DisconnectAllControllers());
      world_.Connect(QStringLiteral("Old%1").arg(call));
      world_.prompts.ForgetAsked();
      captions_.clear();
      world_.engine->Arm(call, span);
      const bool opened = workspace_.OpenWorkspace(file);
      wentWrong = world_.engine->FaultCount() > 0;
      world_.engine->Disarm();
      world_.ExpectConsistent();
      EXPECT_EQ(captions_.isEmpty(), !opened);
      EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace"));
      const auto failures = world_.prompts.Texts().count(FailedText(QStringLiteral("A"))) +
                            world_.prompts.Texts().count(FailedText(QStringLiteral("B")));
      EXPECT_EQ(world_.prompts.Texts().size(), 1 + failures);
      EXPECT_EQ(world_.Registered().size(), opened ? 2 - failures : 1);
      EXPECT_EQ(world_.log.Lines().size(), opened ? 1 + 2 - failures : 0);
      EXPECT_TRUE(wentWrong || (opened && failures == 0));
    }
  }
}

TEST_F(WorkspaceFileTest, AFailingCallWhileSavingLeavesTheOldOrTheNewFile) {
  world_.Connect(QStringLiteral("A"));
  world_.local->AddFile(QStringLiteral("C:") + In(QStringLiteral("s.fmg")).replace(u'/', u'\\'));
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (const EngineFault fault : {EngineFault::Raise, EngineFault::YieldNothing}) {
      bool wentWrong = true;
      for (int call = 1; wentWrong; ++call) {
        SCOPED_TRACE(call);
        ASSERT_LT(call, 100);
        const QString file = Put(QStringLiteral("s.fmg"), "old");
        world_.engine->Arm(call, span, error::kTimeOut, fault);
        const bool saved = workspace_.SaveWorkspace(file);
        wentWrong = world_.engine->FaultCount() > 0;
        world_.engine->Disarm();
        EXPECT_EQ(Content(QStringLiteral("s.fmg")) == "old", !saved);
        EXPECT_TRUE(wentWrong || saved);
        EXPECT_EQ(Files(), QStringList{QStringLiteral("s.fmg")});
        EXPECT_EQ(world_.engine->HeldFiles(), 0);
        world_.ExpectConsistent();
      }
    }
  }
}

}  // namespace
}  // namespace trevane::test
