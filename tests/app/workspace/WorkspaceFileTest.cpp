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

using namespace Qt::StringLiterals;

const QString kDisconnectAll = u"Disconnect All IxoControllers. Are you sure?"_s;
const QString kCouldNotOpen = u"Couldn't open the file."_s;
const QString kCouldNotSave = u"Couldn't save the file."_s;
const QString kCannotOverwrite = u"Can't overwrite the file."_s;
const QString kNoController = u"No controller is connecting."_s;
const QString kFilter = u"FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"_s;

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
    return u"Failed in connecting to the controller( "_s + name + u" )."_s;
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
                            .programFolder = u"/program"_s,
                            .setCaption = [this](const QString& text) { captions_ += text; },
                            .resetSaveImage = [this] { ++saveImages_; }}};
};

TEST_F(WorkspaceFileTest, EverySectionIsConnectedInTheOrderOfTheFile) {
  const QString file = Put(u"two.fmg"_s, Section("B", "opt") + Section("A"));
  QStringList labels;
  world_.host.onEvents = [&] { labels += world_.prompts.RecordedGauge().GageLabel(); };
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(labels, (QStringList{u"Connect Controller(B)."_s, u"Connect Controller(A)."_s}));
  EXPECT_EQ(world_.requests, (QStringList{u"m-B|opt"_s, u"m-A|"_s}));
  EXPECT_EQ(world_.Registered(), (QStringList{u"B"_s, u"A"_s}));
  EXPECT_EQ(world_.Nodes(), (QStringList{u"B"_s, u"A"_s}));
  EXPECT_EQ(world_.Items(), (QStringList{u"My Computer"_s, u"B"_s, u"A"_s}));
  EXPECT_EQ(world_.log.Lines(),
            (QStringList{u"CONNECT|B|IxoProv.Cell|m-B|opt"_s, u"CONNECT|A|IxoProv.Cell|m-A"_s}));
  EXPECT_EQ(captions_, QStringList{u"Trevane - ("_s + file + u')'});
  EXPECT_EQ(workspace_.CurrentFile(), file);
  EXPECT_EQ(world_.prompts.RecordedGauge().Captions(), QStringList{u"Open Controllers"_s});
  EXPECT_EQ(world_.host.Turns(), 2);
  EXPECT_TRUE(world_.host.WasBusy());
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, WhileItOpensTheWindowIsDisabledAndTheItemsAppearOneByOne) {
  const QString file = Put(u"two.fmg"_s, Section("A") + Section("B"));
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
  EXPECT_EQ(seen, (std::vector<QStringList>{{u"My Computer"_s, u"A"_s}, {u"My Computer"_s, u"A"_s, u"B"_s}}));
  EXPECT_FALSE(workspace_.IsOpening());
}

TEST_F(WorkspaceFileTest, AFileWithoutSectionsConnectsNothingYetTheCaptionTakesItsName) {
  const QString file = Put(u"none.fmg"_s, "");
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_TRUE(world_.Registered().isEmpty());
  EXPECT_EQ(captions_, QStringList{u"Trevane - ("_s + file + u')'});
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, ASectionWithoutARootYieldsTheTop) {
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(u"a.fmg"_s,
          "[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\n[B]\r\nProvider=IxoProv.Cell\r\nRoot=\r\n")));
  ASSERT_EQ(world_.Registered().size(), 2);
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{2})->Root(), u"/"_s);
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{3})->Root(), u""_s);
}

TEST_F(WorkspaceFileTest, TheSectionsEndAtTheFirstEmptyName) {
  if (RunsUnderWine())
    GTEST_SKIP() << "Wine finds no section without a name";
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(u"a.fmg"_s, Section("A") + "[]\r\n" + Section("B"))));
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
}

TEST_F(WorkspaceFileTest, AFileThatIsNotThereIsToldAndTheWorkspaceShown) {
  world_.Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_FALSE(workspace_.OpenWorkspace(In(u"none.fmg"_s)));
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace"_s);
  EXPECT_TRUE(captions_.isEmpty());
  world_.prompts.ExpectFile(In(u"none.fmg"_s));
  world_.prompts.ExpectBox(kCouldNotOpen);
  workspace_.Open();
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(world_.prompts.Asked().front().title, QString());
  EXPECT_EQ(world_.prompts.Asked().front().informativeText,
            u"none.fmg\nThere is no such file: "_s + In(u"none.fmg"_s));
  EXPECT_EQ(world_.host.reasons.size(), 1);
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, AFolderAndAnEmptyNameAreNoWorkspaceFile) {
  EXPECT_FALSE(workspace_.OpenWorkspace(folder_.path()));
  EXPECT_FALSE(workspace_.OpenWorkspace(QString()));
}

#ifdef Q_OS_LINUX
TEST_F(WorkspaceFileTest, APipeIsNotEvenOpened) {
  ASSERT_EQ(::mkfifo(In(u"pipe.fmg"_s).toUtf8().constData(), 0600), 0);
  EXPECT_FALSE(workspace_.OpenWorkspace(In(u"pipe.fmg"_s)));
}
#endif

TEST_F(WorkspaceFileTest, ARelativeNameIsMadeAbsolute) {
  const QString file = Put(u"rel.fmg"_s, Section("A"));
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder_.path()));
  EXPECT_TRUE(workspace_.OpenWorkspace(u"./sub/../rel.fmg"_s));
  QDir::setCurrent(before);
  EXPECT_EQ(QFileInfo(workspace_.CurrentFile()).canonicalFilePath(), QFileInfo(file).canonicalFilePath());
  EXPECT_TRUE(QDir::isAbsolutePath(workspace_.CurrentFile()));
}

TEST_F(WorkspaceFileTest, OpeningAsksOnceAndReplacesWhatIsConnected) {
  world_.Connect(u"Old1"_s);
  world_.Connect(u"Old2"_s);
  world_.Display(u"Workspace\\Old2"_s);
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(u"a.fmg"_s, Section("A"))));
  EXPECT_EQ(world_.prompts.Asked().size(), 1u);
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Question);
  EXPECT_EQ(world_.prompts.Asked().front().buttons, PromptButtons::OkCancel);
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
  EXPECT_EQ(world_.log.Lines(),
            (QStringList{u"DISCONNECT|Old1"_s, u"DISCONNECT|Old2"_s, u"CONNECT|A|IxoProv.Cell|m-A"_s}));
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace"_s);
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, AControllerWhoseRootFailsCannotBeReachedAndGivesWayToTheNextOfItsName) {
  world_.prompts.ExpectBox(u"Failed in connecting to the controller( A )."_s);
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(u"a.fmg"_s, "[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\nMachine=m-A\r\nRoot=/nowhere\r\n")));
  EXPECT_TRUE(world_.Registered().isEmpty());
  ASSERT_NE(world_.tree.FindByKey(u"Workspace\\A"_s), nullptr);
  // It stays open in the engine; below its top is not where the user wanted to be.
  clsIxoFile top = world_.files.FileAt(u"Workspace\\A"_s);
  EXPECT_NE(top.Result(), 0);
  world_.Connect(u"A"_s);
  EXPECT_EQ(world_.Nodes(), QStringList{u"A"_s});
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
  top.SetPath(u"Workspace\\A"_s);
  EXPECT_EQ(top.Result(), 0);
}

TEST_F(WorkspaceFileTest, OpeningAgainGivesWhatFailedItsNameBack) {
  const QByteArray good = Section("A");
  const QString file = Put(u"a.fmg"_s, QByteArray(good).replace("Root=/", "Root=/nowhere"));
  world_.prompts.ExpectBox(FailedText(u"A"_s));
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  Put(u"a.fmg"_s, good);
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(world_.Nodes(), QStringList{u"A"_s});
}

TEST_F(WorkspaceFileTest, WhatIsConnectedIsNotListedInThePlaceOfAControllerThatHasGone) {
  world_.Connect(u"Old"_s);
  world_.Display(u"Workspace\\Old"_s);
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  QStringList tags;
  world_.host.onEvents = [&] { tags += world_.navigator.CurrentAddress(); };
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(u"a.fmg"_s, Section("A") + Section("B"))));
  world_.host.onEvents = nullptr;
  EXPECT_EQ(tags, (QStringList{u"Workspace"_s, u"Workspace"_s}));
}

TEST_F(WorkspaceFileTest, NoControllerThatIsGoneIsListedWhileOthersConnect) {
  ASSERT_TRUE(workspace_.OpenWorkspace(Put(u"old.fmg"_s, Section("Old"))));
  std::vector<QStringList> seen;
  world_.host.onPainting = [&] { seen.push_back(world_.Items()); };
  world_.prompts.ExpectBox(PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(u"new.fmg"_s, Section("A") + Section("B"))));
  EXPECT_EQ(seen, (std::vector<QStringList>{{u"My Computer"_s}, {u"My Computer"_s, u"A"_s}}));
}

TEST_F(WorkspaceFileTest, SaveAsStartsWithTheCurrentFile) {
  const QString file = Put(u"a.fmg"_s, Section("A"));
  ASSERT_TRUE(workspace_.OpenWorkspace(file));
  world_.prompts.ExpectFile(QString());
  workspace_.SaveAs();
  ASSERT_EQ(world_.prompts.AskedFiles().size(), 1U);
  EXPECT_EQ(world_.prompts.AskedFiles()[0].fileName, file);
}

TEST_F(WorkspaceFileTest, CancelAtTheQuestionLeavesEverythingAsItWasWithoutAMessage) {
  world_.Connect(u"Old"_s);
  world_.Display(u"Workspace\\Old"_s);
  world_.prompts.ExpectFile(Put(u"a.fmg"_s, Section("A")));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Cancel);
  workspace_.Open();
  EXPECT_EQ(world_.Registered(), QStringList{u"Old"_s});
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace\\Old"_s);
  EXPECT_TRUE(captions_.isEmpty());
  EXPECT_TRUE(world_.log.Lines().isEmpty());
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, CancelOnTheGaugeStopsAfterTheControllerBeingConnected) {
  const QString file = Put(u"a.fmg"_s, Section("A") + Section("B") + Section("C"));
  world_.host.onEvents = [&] {
    if (world_.host.Turns() == 2)
      world_.prompts.RecordedGauge().ClickCancel();
  };
  EXPECT_TRUE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(world_.Registered(), (QStringList{u"A"_s, u"B"_s}));
  EXPECT_EQ(workspace_.CurrentFile(), file);
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, ClosingTheProgramStopsTheOpeningToo) {
  world_.host.onEvents = [&] { world_.prompts.End(UserPrompts::Ending::ByUser); };
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(u"a.fmg"_s, Section("A") + Section("B"))));
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
}

TEST_F(WorkspaceFileTest, AControllerThatFailsIsToldAndShownAsSuchAndTheNextIsTried) {
  world_.prompts.ExpectBox(FailedText(u"A"_s));
  world_.prompts.ExpectBox(FailedText(QString()));
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(u"a.fmg"_s, Section("A", "refuse") + "[Unnamed]\r\nProvider=None\r\n" + Section("B"))));
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(world_.prompts.Asked().front().informativeText, u"A\nrefused"_s);
  EXPECT_EQ(world_.prompts.Asked().back().informativeText,
            u"Unnamed\nThere is no provider with the name 'None'"_s);
  EXPECT_EQ(world_.host.reasons, (QStringList{u"refused"_s, u"There is no provider with the name 'None'"_s}));
  EXPECT_EQ(world_.Registered(), QStringList{u"B"_s});
  EXPECT_EQ(world_.Nodes(), (QStringList{u"!A"_s, u"!Unnamed"_s, u"B"_s}));
  EXPECT_EQ(world_.Items(), (QStringList{u"My Computer"_s, u"B"_s, u"!A"_s, u"!Unnamed"_s}));
  EXPECT_EQ(world_.log.Lines(), QStringList{u"CONNECT|B|IxoProv.Cell|m-B"_s});
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, AnErrorNodeBearsTheNameThatTheEngineGaveIfItDid) {
  world_.prompts.ExpectBox(FailedText(u"a[b]"_s));
  EXPECT_TRUE(workspace_.OpenWorkspace(
      Put(u"a.fmg"_s, "[X]\r\nCtrlName=a[b]\r\nProvider=IxoProv.Cell\r\nRoot=/nowhere\r\n")));
  EXPECT_EQ(world_.Nodes(), QStringList{u"!ab"_s});
}

TEST_F(WorkspaceFileTest, ErrorNodesOfTheWorkspaceBeforeGoWithoutAQuestion) {
  world_.AddErrorNode(u"Bad"_s);
  EXPECT_TRUE(workspace_.OpenWorkspace(Put(u"none.fmg"_s, "")));
  EXPECT_TRUE(world_.Nodes().isEmpty());
}

TEST_F(WorkspaceFileTest, ADisconnectionThatFailsEndsTheOpening) {
  world_.Connect(u"Old1"_s);
  world_.Connect(u"Old2"_s);
  world_.prompts.ExpectFile(Put(u"a.fmg"_s, Section("A")));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  world_.prompts.ExpectBox(kCouldNotOpen);
  world_.engine->Arm(2);
  workspace_.Open();
  world_.engine->Disarm();
  EXPECT_EQ(world_.prompts.Asked().back().informativeText.section(u'\n', 0, 0), u"a.fmg"_s);
  EXPECT_FALSE(world_.prompts.Asked().back().informativeText.section(u'\n', 1).isEmpty());
  EXPECT_EQ(world_.Registered(), QStringList{u"Old2"_s});
  EXPECT_TRUE(captions_.isEmpty());
  world_.ExpectConsistent();
}

TEST_F(WorkspaceFileTest, TheDialogsAskForWorkspaceFilesInTheProgramsFolder) {
  world_.prompts.ExpectFile(QString());
  workspace_.Open();
  world_.Connect(u"A"_s);
  world_.prompts.ExpectFile(QString());
  workspace_.SaveAs();
  const std::vector<FileQuestion>& asked = world_.prompts.AskedFiles();
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[0].mode, FileQuestion::Mode::Open);
  EXPECT_EQ(asked[0].title, u"Open"_s);
  EXPECT_EQ(asked[1].mode, FileQuestion::Mode::Save);
  EXPECT_EQ(asked[1].title, u"Save"_s);
  for (const FileQuestion& question : asked) {
    EXPECT_EQ(question.filter, kFilter);
    EXPECT_EQ(question.initialFolder, u"/program"_s);
    EXPECT_EQ(question.fileName, QString());
  }
  EXPECT_EQ(saveImages_, 0);
}

TEST_F(WorkspaceFileTest, SavingWritesASectionForEachControllerInTheOrderOfConnection) {
  const auto record = ConnectWorld::Record(u""_s);
  record->SetMachineName(u"host"_s);
  record->SetCtrlOption(u"a=b,c"_s);
  record->SetRoot(u"prog"_s);
  ASSERT_TRUE(world_.connector.ConnectController(record));
  world_.Connect(u"A"_s);
  EXPECT_TRUE(workspace_.SaveWorkspace(In(u"s.fmg"_s)));
  EXPECT_EQ(Content(u"s.fmg"_s),
            "[" + record->RealCtrlName().toUtf8() +
                "]\r\nCtrlName=\r\nProvider=IxoProv.Cell\r\nMachine=host\r\nOption=a=b,c\r\n"
                "Root=prog\r\n[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\nMachine=\r\n"
                "Option=\r\nRoot=/\r\n");
  EXPECT_EQ(captions_, QStringList{u"Trevane - ("_s + In(u"s.fmg"_s) + u')'});
  EXPECT_EQ(Files(), QStringList{u"s.fmg"_s});
}

TEST_F(WorkspaceFileTest, WhatWasSavedIsOpenedAgain) {
  world_.Connect(u"A"_s);
  world_.Connect(u"B"_s);
  EXPECT_TRUE(workspace_.SaveWorkspace(In(u"s.fmg"_s)));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(In(u"s.fmg"_s)));
  EXPECT_EQ(world_.Registered(), (QStringList{u"A"_s, u"B"_s}));
}

TEST_F(WorkspaceFileTest, ValuesComeBackWithTheirOuterBlanksAndQuotes) {
  const auto record = ConnectWorld::Record(u"A"_s);
  record->SetMachineName(u"  m"_s);
  record->SetCtrlOption(u"\"Path=x\""_s);
  ASSERT_TRUE(world_.connector.ConnectController(record));
  ASSERT_TRUE(workspace_.SaveWorkspace(In(u"s.fmg"_s)));
  EXPECT_TRUE(Content(u"s.fmg"_s).contains("Machine=\"  m\"\r\nOption=\"\"Path=x\"\"\r\n"));
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  ASSERT_TRUE(workspace_.OpenWorkspace(In(u"s.fmg"_s)));
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{2})->MachineName(), u"  m"_s);
  EXPECT_EQ(world_.session.gIxoCtrls().Item(qint32{2})->CtrlOption(), u"\"Path=x\""_s);
}

TEST_F(WorkspaceFileTest, AFileTooLargeIsNotOpenedAndNothingIsDisconnected) {
  world_.Connect(u"A"_s);
  const QString file = Put(u"a.fmg"_s, Section("B"));
  ASSERT_TRUE(QFile::resize(file, ownfile::kLargestFile + 1));
  EXPECT_FALSE(workspace_.OpenWorkspace(file));
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
  EXPECT_TRUE(captions_.isEmpty());
}

TEST_F(WorkspaceFileTest, NoSectionOfAnOlderWorkspaceSurvivesASave) {
  world_.Connect(u"A"_s);
  const QString file = Put(u"s.fmg"_s, "; mine\r\n" + Section("Older"));
  world_.local->AddFile(u"C:"_s + QString(file).replace(u'/', u'\\'));
  EXPECT_TRUE(workspace_.SaveWorkspace(file));
  EXPECT_EQ(clsProfile(file).GetSectNames(), QStringList{u"A"_s});
}

TEST_F(WorkspaceFileTest, TwoControllersUnderOneSectionNameLeaveTheLaterValues) {
  for (const QString& name : {u"Cell"_s, u"Cell "_s}) {
    const auto record = ConnectWorld::Record(u"typed "_s + QString::number(name.size()));
    record->SetRealCtrlName(name);
    world_.session.gIxoCtrls().Add(record);
  }
  EXPECT_TRUE(workspace_.SaveWorkspace(In(u"s.fmg"_s)));
  const clsProfile profile(In(u"s.fmg"_s));
  EXPECT_EQ(profile.GetSectNames().size(), 1);
  EXPECT_EQ(profile.GetString(u"Cell"_s, u"CtrlName"_s), u"typed 5"_s);
}

TEST_F(WorkspaceFileTest, SaveAsksForANameOnceAndThenKeepsIt) {
  world_.Connect(u"A"_s);
  world_.prompts.ExpectFile(In(u"s.fmg"_s));
  workspace_.Save();
  EXPECT_EQ(saveImages_, 1);
  world_.Connect(u"B"_s);
  workspace_.Save();
  EXPECT_EQ(clsProfile(In(u"s.fmg"_s)).GetSectNames(), (QStringList{u"A"_s, u"B"_s}));
  EXPECT_EQ(world_.prompts.AskedFiles().size(), 1u);
  world_.prompts.ExpectFile(In(u"t.fmg"_s));
  workspace_.SaveAs();
  EXPECT_EQ(workspace_.CurrentFile(), In(u"t.fmg"_s));
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
  world_.Connect(u"A"_s);
  ASSERT_TRUE(QDir(folder_.path()).mkdir(u"real.fmg"_s));
  EXPECT_FALSE(workspace_.SaveWorkspace(In(u"real.fmg"_s)));
  const QString known = In(u"known.fmg"_s).replace(u'/', u'\\');
  world_.local->AddFolder(known.startsWith(u"C:") ? known : u"C:"_s + known);
  EXPECT_FALSE(workspace_.SaveWorkspace(In(u"known.fmg"_s)));
  EXPECT_EQ(Files(), QStringList{u"real.fmg"_s});
  EXPECT_TRUE(captions_.isEmpty());
}

TEST_F(WorkspaceFileTest, AReadOnlyFileAndAFolderThatIsNotThereGiveTheirMessage) {
  world_.Connect(u"A"_s);
  const QString file = Put(u"s.fmg"_s, "old");
  ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner));
  workspace_.SetWorkspaceCaption(file);
  world_.prompts.ExpectBox(kCannotOverwrite);
  workspace_.Save();
  EXPECT_EQ(Content(u"s.fmg"_s), "old");
  EXPECT_TRUE(world_.prompts.Asked().back().informativeText.startsWith(u"s.fmg\n"_s));
  EXPECT_TRUE(world_.prompts.Asked().back().informativeText.endsWith(u": "_s + file));
  world_.prompts.ExpectFile(In(u"none/s.fmg"_s));
  world_.prompts.ExpectBox(kCouldNotSave);
  workspace_.SaveAs();
  EXPECT_EQ(world_.prompts.Asked().back().informativeText.section(u'\n', 0, 0), u"s.fmg"_s);
  EXPECT_EQ(world_.host.reasons.size(), 2);
  EXPECT_EQ(saveImages_, 0);
  EXPECT_EQ(workspace_.CurrentFile(), file);
  EXPECT_EQ(Files(), QStringList{u"s.fmg"_s});
}

TEST_F(WorkspaceFileTest, APlaceThatNoDriveHoldsIsRefused) {
  world_.Connect(u"A"_s);
  world_.volumes.Set({{u"C:"_s, u"/elsewhere/"_s, drivetype::kFixed}});
  EXPECT_FALSE(workspace_.SaveWorkspace(In(u"s.fmg"_s)));
  EXPECT_TRUE(Files().isEmpty());
}

#ifdef Q_OS_LINUX
TEST_F(WorkspaceFileTest, AWriteThatFailsHalfwayLeavesTheOldFileAsItWas) {
  world_.Connect(u"A"_s);
  const QString file = Put(u"s.fmg"_s, "old");
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
    EXPECT_EQ(Content(u"s.fmg"_s), "old");
    EXPECT_EQ(Files(), QStringList{u"s.fmg"_s});
  }
  std::signal(SIGXFSZ, before);
  EXPECT_TRUE(workspace_.SaveWorkspace(file));
}

TEST_F(WorkspaceFileTest, ADiskThatIsFullOnlyInTheFlushLeavesTheOldFile) {
  world_.Connect(u"A"_s);
  const QString file = Put(u"s.fmg"_s, "old");
  const int before = FlushCount();
  {
    const FailingFlush full(ENOSPC);
    EXPECT_FALSE(workspace_.SaveWorkspace(file));
  }
  EXPECT_EQ(FlushCount() - before, 1);
  EXPECT_EQ(Content(u"s.fmg"_s), "old");
  EXPECT_EQ(Files(), QStringList{u"s.fmg"_s});
}

TEST_F(WorkspaceFileTest, ANewFileIsPrivateWhileItIsWrittenAndThenAsTheMaskHasIt) {
  world_.Connect(u"A"_s);
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
    EXPECT_TRUE(workspace_.SaveWorkspace(In(u"s.fmg"_s)));
  }
  ::umask(old);
  ASSERT_EQ(names.size(), 1);
  EXPECT_NE(names[0], u"s.fmg"_s);
  EXPECT_EQ(before, 0600U);
  EXPECT_EQ(modeOf(u"s.fmg"_s), 0640U);
}

TEST_F(WorkspaceFileTest, PermissionsStayALinkIsFollowedAndNamesThatAreNoTextAreKept) {
  world_.Connect(u"A"_s);
  const QString file = Put(u"s.fmg"_s, "old");
  ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
  ASSERT_TRUE(QFile::link(file, In(u"link.fmg"_s)));
  EXPECT_TRUE(workspace_.SaveWorkspace(In(u"link.fmg"_s)));
  EXPECT_EQ(clsProfile(file).GetSectNames(), QStringList{u"A"_s});
  EXPECT_TRUE(QFileInfo(In(u"link.fmg"_s)).isSymLink());
  struct stat status {};
  ASSERT_EQ(::stat(file.toUtf8().constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  const QString odd = In(u"x"_s + QChar(0xDCFF) + u".fmg"_s);
  EXPECT_TRUE(workspace_.SaveWorkspace(odd));
  const QByteArray bytes = folder_.path().toUtf8() + "/x\xFF.fmg";
  EXPECT_EQ(::stat(bytes.constData(), &status), 0);
  world_.prompts.ExpectBox(kDisconnectAll, PromptAnswer::Ok);
  EXPECT_TRUE(workspace_.OpenWorkspace(odd));
  ::unlink(bytes.constData());
}
#endif

TEST_F(WorkspaceFileTest, EveryFailingCallWhileOpeningLeavesAUsableWindow) {
  const QString file = Put(u"a.fmg"_s, Section("A") + Section("B"));
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    bool wentWrong = true;
    for (int call = 1; wentWrong; ++call) {
      SCOPED_TRACE(call);
      ASSERT_LT(call, 100);
      ASSERT_TRUE(world_.connector.DisconnectAllControllers());
      world_.Connect(u"Old%1"_s.arg(call));
      world_.prompts.ForgetAsked();
      captions_.clear();
      world_.engine->Arm(call, span);
      const bool opened = workspace_.OpenWorkspace(file);
      wentWrong = world_.engine->FaultCount() > 0;
      world_.engine->Disarm();
      world_.ExpectConsistent();
      EXPECT_EQ(captions_.isEmpty(), !opened);
      EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace"_s);
      const auto failures =
          world_.prompts.Texts().count(FailedText(u"A"_s)) + world_.prompts.Texts().count(FailedText(u"B"_s));
      EXPECT_EQ(world_.prompts.Texts().size(), 1 + failures);
      EXPECT_EQ(world_.Registered().size(), opened ? 2 - failures : 1);
      EXPECT_EQ(world_.log.Lines().size(), opened ? 1 + 2 - failures : 0);
      EXPECT_TRUE(wentWrong || (opened && failures == 0));
    }
  }
}

TEST_F(WorkspaceFileTest, EveryFailingCallWhileSavingLeavesTheOldFileOrTheNewOne) {
  world_.Connect(u"A"_s);
  world_.local->AddFile(u"C:"_s + In(u"s.fmg"_s).replace(u'/', u'\\'));
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (const EngineFault fault : {EngineFault::Raise, EngineFault::YieldNothing}) {
      bool wentWrong = true;
      for (int call = 1; wentWrong; ++call) {
        SCOPED_TRACE(call);
        ASSERT_LT(call, 100);
        const QString file = Put(u"s.fmg"_s, "old");
        world_.engine->Arm(call, span, error::kTimeOut, fault);
        const bool saved = workspace_.SaveWorkspace(file);
        wentWrong = world_.engine->FaultCount() > 0;
        world_.engine->Disarm();
        EXPECT_EQ(Content(u"s.fmg"_s) == "old", !saved);
        EXPECT_TRUE(wentWrong || saved);
        EXPECT_EQ(Files(), QStringList{u"s.fmg"_s});
        EXPECT_EQ(world_.engine->HeldFiles(), 0);
        world_.ExpectConsistent();
      }
    }
  }
}

}  // namespace
}  // namespace trevane::test
