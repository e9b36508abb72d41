#include "tests/views/bars/BarsFixture.h"

#include <QDir>
#include <QLineEdit>
#include <QTest>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

class AddressBarTest : public BarsFixture {};

TEST_F(AddressBarTest, RootAddressesIgnoreCaseAndATrailingSeparator) {
  EXPECT_TRUE(GoTo(u"workspace\\MY COMPUTER\\"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer"_s);
  EXPECT_EQ(ListTexts(), QStringList({u"A:"_s, u"C:"_s}));
  EXPECT_TRUE(GoTo(u"WORKSPACE"_s));
  EXPECT_EQ(Current(), u"Workspace"_s);
  EXPECT_TRUE(GoTo(u"Workspace\\"_s));
  EXPECT_EQ(Current(), u"Workspace"_s);
}

TEST_F(AddressBarTest, AFolderOfAnUnopenedDriveGetsItsMissingNodes) {
  ASSERT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\A:\\One"_s), nullptr);
  EXPECT_TRUE(GoTo(u"workspace\\my computer\\a:\\one\\two\\three"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\A:\\One\\Two\\Three"_s) << "as the names are spelt there";
  const FolderNode* node = navigator_.CurrentNode();
  for (const QString& name : {u"Three"_s, u"Two"_s, u"One"_s}) {
    EXPECT_EQ(node->Text(), name);
    EXPECT_TRUE(IsFolderTag(node->Tag()));
    EXPECT_FALSE(IsOnController(node->Tag()));
    EXPECT_EQ(tree_.ImageKey(node), fileTypes_.GetFolderImages().imageKey);
    EXPECT_EQ(tree_.ExpandedImageKey(node), fileTypes_.GetFolderImages().openImageKey);
    EXPECT_TRUE(node->Sorted());
    node = node->Parent();
  }
  EXPECT_TRUE(IsDrive(node->Tag()));
}

TEST_F(AddressBarTest, TheNodeGoneToIsSelectedInTheTreeAndInView) {
  treFile_.resize(200, 60);
  treFile_.show();
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\A:\\One\\Two\\Three"_s));
  EXPECT_EQ(treFile_.SelectedNode(), navigator_.CurrentNode());
  const QRect place = treFile_.visualRect(tree_.IndexOf(navigator_.CurrentNode()));
  EXPECT_TRUE(place.isValid());
  EXPECT_TRUE(treFile_.viewport()->rect().intersects(place));
}

TEST_F(AddressBarTest, TheTagOfANewNodeHasTheFoldersAttributes) {
  memory_->SetAttributes(u"A:\\One"_s, 0x1 | 0x2);
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\A:\\One"_s));
  EXPECT_EQ(navigator_.CurrentNode()->Tag() & 0x13, 0x13);
}

TEST_F(AddressBarTest, AWrongAddressStaysInTheBoxAndLeavesTheViews) {
  ASSERT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\Programs"_s));
  const int displays = displays_;
  for (const QString& wrong :
       {u"Workspace\\My Computer\\C:\\Nowhere"_s, u"Workspace\\My Computer\\X:"_s, u"Workspace\\Nobody"_s,
        u"Workspace\\My Computer\\C:\\readme.txt\\below"_s, u"C:\\Nowhere"_s, u""_s, u"\\"_s, u"\""_s,
        u"Elsewhere\\My Computer"_s, u"\\\\server"_s}) {
    EXPECT_FALSE(GoTo(wrong)) << wrong.toStdString();
    EXPECT_EQ(cmbAddress_.currentText(), wrong);
    EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
  }
  EXPECT_EQ(displays_, displays);
  EXPECT_EQ(cmbAddress_.History(), QStringList({u"Workspace\\My Computer\\C:\\Programs"_s}));
}

TEST_F(AddressBarTest, EnterThatLeadsNowhereSaysSo) {
  cmbAddress_.setEditText(u"Workspace\\Nobody"_s);
  prompts_.ExpectBox(u"Failed Move to a specified address."_s);
  QTest::keyClick(&cmbAddress_, Qt::Key_Return);
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].informativeText,
            u"Workspace\\Nobody\nThere is no controller with the name 'Nobody'"_s);
  EXPECT_EQ(host_.reasons, QStringList{u"There is no controller with the name 'Nobody'"_s});
  EXPECT_EQ(cmbAddress_.currentText(), u"Workspace\\Nobody"_s);
}

TEST_F(AddressBarTest, BothEnterKeysGoAndEnterWithAnotherKeyDoesNot) {
  for (const Qt::KeyboardModifiers held : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier}) {
    cmbAddress_.setEditText(u"Workspace\\My Computer\\C:"_s);
    QTest::keyClick(&cmbAddress_, Qt::Key_Return, held);
    EXPECT_EQ(Current(), u"Workspace"_s);
  }
  QTest::keyClick(&cmbAddress_, Qt::Key_Enter, Qt::KeypadModifier);
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:"_s);
  cmbAddress_.setEditText(u"Workspace\\My Computer\\A:"_s);
  QTest::keyClick(cmbAddress_.lineEdit(), Qt::Key_Return);
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\A:"_s);
}

TEST_F(AddressBarTest, AnAddressOfAFileDisplaysItsFolderAndSelectsTheFile) {
  EXPECT_TRUE(GoTo(u"workspace\\my computer\\c:\\programs\\MAIN.PAC"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_EQ(cmbAddress_.currentText(), u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_EQ(SelectedTexts(), QStringList({u"main.pac"_s}));
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\readme.txt"_s)) << "right below a drive";
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(SelectedTexts(), QStringList({u"readme.txt"_s}));
}

TEST_F(AddressBarTest, OfTwoFoldersThatDifferInCaseTheTypedOneIsShown) {
  memory_->AddFile(u"C:\\Case\\upper.txt"_s);
  memory_->AddFolder(u"C:\\Case\\Sub"_s);
  memory_->AddFile(u"C:\\case\\lower.txt"_s);
  const QString drive = u"Workspace\\My Computer\\C:\\"_s;
  EXPECT_TRUE(GoTo(drive + u"Case\\Sub"_s));
  EXPECT_TRUE(GoTo(drive + u"case"_s)) << "from within the other one";
  EXPECT_EQ(Current(), drive + u"case"_s);
  EXPECT_EQ(navigator_.CurrentAddress(), drive + u"case"_s);
  EXPECT_EQ(ListTexts(), QStringList{u"lower.txt"_s});
  EXPECT_TRUE(navigator_.CurrentNode()->Children().empty()) << "what is below the other one";
  EXPECT_TRUE(GoTo(drive + u"Case\\upper.txt"_s));
  EXPECT_EQ(Current(), drive + u"Case"_s);
  EXPECT_EQ(SelectedTexts(), QStringList{u"upper.txt"_s});
  EXPECT_FALSE(GoTo(drive + u"CASE"_s)) << "neither of them";
  EXPECT_EQ(Current(), drive + u"Case"_s);
}

TEST_F(AddressBarTest, AFolderOfAnotherCaseTypedDuringADisplayIsShown) {
  memory_->AddFolder(u"C:\\Case"_s);
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i)
    memory_->AddFolder(u"C:\\Case\\folder%1"_s.arg(i));
  memory_->AddFolder(u"C:\\case\\lower"_s);
  const QString drive = u"Workspace\\My Computer\\C:\\"_s;
  bool asked = false;
  onEvents_ = [&] {
    if (!std::exchange(asked, true)) {
      EXPECT_TRUE(GoTo(drive + u"case"_s));
    }
  };
  EXPECT_TRUE(GoTo(drive + u"Case"_s));
  EXPECT_TRUE(asked);
  EXPECT_EQ(navigator_.CurrentAddress(), drive + u"case"_s);
  EXPECT_EQ(Current(), drive + u"case"_s);
  EXPECT_EQ(ListTexts(), QStringList{u"lower"_s});
  ASSERT_EQ(navigator_.CurrentNode()->Children().size(), 1U);
  EXPECT_EQ(navigator_.CurrentNode()->Children().front()->Text(), u"lower"_s);
}

TEST_F(AddressBarTest, NoFileIsSelectedForOneOfAnotherCase) {
  memory_->AddFile(u"C:\\Programs\\MAIN.PAC"_s);
  const QString folder = u"Workspace\\My Computer\\C:\\Programs\\"_s;
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  ASSERT_TRUE(GoTo(folder));
  ASSERT_EQ(prompts_.Texts().size(), 1);
  const QString shown = list_.Text(list_.FindByText(u"main.pac"_s));
  const QString other = shown == u"main.pac" ? u"MAIN.PAC"_s : u"main.pac"_s;
  EXPECT_EQ(prompts_.Texts().front(), u"Can't display "_s + other + u"."_s);
  EXPECT_TRUE(GoTo(folder + other));
  EXPECT_TRUE(SelectedTexts().isEmpty());
  EXPECT_TRUE(GoTo(folder + shown));
  EXPECT_EQ(SelectedTexts(), QStringList{shown});
}

TEST_F(AddressBarTest, AFileThatTheListDoesNotShowStillLeadsToItsFolder) {
  memory_->SetAttributes(u"C:\\Programs\\main.pac"_s, 0x2);
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\Programs\\main.pac"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_TRUE(SelectedTexts().isEmpty());
}

TEST_F(AddressBarTest, AMachineIsNotTakenForOneWhoseNameBeginsWithIts) {
  ConnectCells();
  EXPECT_TRUE(GoTo(u"Workspace\\Cell10\\arm\\left"_s));
  EXPECT_EQ(Current(), u"Workspace\\Cell10\\arm\\left"_s);
  EXPECT_TRUE(IsOnController(navigator_.CurrentNode()->Tag()));
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\Cell1\\arm"_s), nullptr);
  EXPECT_FALSE(GoTo(u"Workspace\\Cell1\\arm"_s));
  EXPECT_TRUE(GoTo(u"workspace\\CELL1\\prog"_s));
  EXPECT_EQ(Current(), u"Workspace\\Cell1\\prog"_s);
}

TEST_F(AddressBarTest, AControllersNameAloneLeadsToItsTop) {
  ConnectCells();
  EXPECT_TRUE(GoTo(u"Workspace\\Cell1\\"_s));
  EXPECT_EQ(Current(), u"Workspace\\Cell1"_s);
  EXPECT_EQ(ListTexts(), QStringList({u"prog"_s}));
}

TEST_F(AddressBarTest, SlashesQuotesAndBlanksOfAPastedAddressAreRead) {
  const QString wanted = u"Workspace\\My Computer\\C:\\Programs"_s;
  for (const QString& pasted :
       {u"Workspace/My Computer/C:/Programs"_s, u"Workspace/My Computer/C:/Programs/"_s, u"  "_s + wanted,
        wanted + u"  "_s, u"\t"_s + wanted + u"\n"_s, u'"' + wanted + u'"', u" \""_s + wanted + u"\" "_s,
        u"\" "_s + wanted + u" \""_s, u"'"_s + wanted + u"'"_s, u"\u201C"_s + wanted + u"\u201D"_s,
        u'"' + wanted + u"\\\""_s, u'"' + wanted}) {
    ASSERT_TRUE(GoTo(u"Workspace"_s));
    EXPECT_TRUE(GoTo(pasted)) << pasted.toStdString();
    EXPECT_EQ(Current(), wanted) << pasted.toStdString();
  }
}

TEST_F(AddressBarTest, APathOfTheOperatingSystemLeadsToItsPlaceOnItsDrive) {
  const QString wanted = u"Workspace\\My Computer\\C:\\Programs"_s;
  for (const QString& pasted : {u"C:\\Programs"_s, u"c:/programs/"_s, u"\"C:\\Programs\\\""_s,
                                u"/c/Programs"_s, u" /c/Programs/Cell1/.. "_s, u"/c/programs/"_s}) {
    ASSERT_TRUE(GoTo(u"Workspace"_s));
    EXPECT_TRUE(GoTo(pasted)) << pasted.toStdString();
    EXPECT_EQ(Current(), wanted) << pasted.toStdString();
  }
  EXPECT_FALSE(GoTo(u"/nowhere"_s));
  EXPECT_FALSE(GoTo(u"Q:\\"_s));
  EXPECT_EQ(Current(), wanted);
}

TEST_F(AddressBarTest, AFileUrlAndTheHomeFolderLeadThere) {
  for (const QString& pasted :
       {u"file:///c/Programs"_s, u"file:///c/Programs/main.pac"_s, u"file:///C:/Programs"_s}) {
    ASSERT_TRUE(GoTo(u"Workspace"_s));
    EXPECT_TRUE(GoTo(pasted)) << pasted.toStdString();
    EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s) << pasted.toStdString();
  }
  ASSERT_TRUE(drives_.AddressOf(QDir::homePath()).isEmpty()) << "no drive of this test holds it";
  EXPECT_FALSE(GoTo(u"~"_s));
  if (!QDir::homePath().startsWith(u'/'))
    return;  // On Windows it stands on a drive of its own name.
  volumes_.Set({{u"A:"_s, u"/a/"_s, drivetype::kRemovable},
                {u"C:"_s, QDir::homePath() + QDir::separator(), drivetype::kFixed}});
  EXPECT_TRUE(GoTo(u"~"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:"_s);
  EXPECT_TRUE(GoTo(u"~/Programs/"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
}

TEST_F(AddressBarTest, PathsAreUnderstoodAsPeopleWriteThem) {
  const QString wanted = u"Workspace\\My Computer\\C:\\Programs"_s;
  for (const QString& typed :
       {u"C:\\Programs\\Cell1\\.."_s, u"\\\\?\\C:\\Programs"_s, u"file:///C:/Programs/"_s,
        u"Workspace\\My Computer\\C:\\Programs\\.\\Cell1\\.."_s, u"file:///c/Programs"_s,
        u"'C:\\..\\Programs'"_s}) {
    ASSERT_TRUE(GoTo(u"Workspace"_s));
    EXPECT_TRUE(GoTo(typed)) << typed.toStdString();
    EXPECT_EQ(Current(), wanted) << typed.toStdString();
  }
}

TEST_F(AddressBarTest, TheReasonOfAPathIsWhatTheDiskSaysOfIt) {
  volumes_.Set({{u"A:"_s, u"/a/"_s, drivetype::kRemovable}, {u"C:"_s, u"/c/"_s, drivetype::kFixed}});
  prompts_.ExpectBox(u"Failed Move to a specified address."_s);
  cmbAddress_.setEditText(u"/c/Programs/gone"_s);
  addressBar_.Go();
  const QString told = prompts_.Asked().back().informativeText;
  EXPECT_FALSE(told.contains(u"The address names no file or folder"_s)) << told.toStdString();
  EXPECT_TRUE(told.startsWith(u"/c/Programs/gone\n"_s)) << told.toStdString();
}

TEST_F(AddressBarTest, AShareLeadsToTheDriveOrControllerThatStandsForIt) {
  volumes_.Set({{u"A:"_s, u"/a/"_s, drivetype::kRemovable},
                {u"C:"_s, u"/c/"_s, drivetype::kRemote, 0, u"\\\\server\\cells"_s}});
  EXPECT_TRUE(GoTo(u"\\\\SERVER\\cells\\Programs"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
  ConnectCells();
  const auto record = session_.gIxoCtrls().Item(qint32{2});
  record->SetRoot(u"\\\\server\\plant"_s);
  prompts_.ExpectBox(u"Failed Move to a specified address."_s);
  cmbAddress_.setEditText(u"\\\\server\\plant"_s);
  addressBar_.Go();
  // Only a controller over this machine's files has a root that is a share.
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(
      u"No drive and no controller stands for this share. Connect it as a controller's root: "
      u"\\\\server\\plant"_s));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
}

TEST_F(AddressBarTest, ANameThatEndsWithABlankOrAQuoteCanBeGoneTo) {
  memory_->AddFolder(u"C:\\odd "_s);
  memory_->AddFolder(u"C:\\odd'"_s);
  memory_->AddFolder(u"C:\\Programs\\deep "_s);
  for (const QString& address : {u"Workspace\\My Computer\\C:\\odd "_s, u"Workspace\\My Computer\\C:\\odd'"_s,
                                 u"Workspace\\My Computer\\C:\\Programs\\deep "_s}) {
    EXPECT_TRUE(GoTo(address)) << address.toStdString();
    EXPECT_EQ(Current(), address);
  }
}

TEST_F(AddressBarTest, WhenAFolderVanishesOnTheWayTheNodesAddedBeforeStay) {
  const QString three = u"Workspace\\My Computer\\A:\\One\\Two\\Three"_s;
  ASSERT_TRUE(GoTo(u"Workspace"_s));
  faulty_->SetHook([&](const FileSystemCall& /*call*/) {
    if (tree_.FindByKey(u"Workspace\\My Computer\\A:\\One"_s) && memory_->Exists(u"A:\\One\\Two"_s))
      memory_->Vanish(u"A:\\One\\Two"_s);
  });
  EXPECT_FALSE(GoTo(three));
  EXPECT_NE(tree_.FindByKey(u"Workspace\\My Computer\\A:\\One"_s), nullptr);
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\A:\\One\\Two"_s), nullptr);
  EXPECT_EQ(Current(), u"Workspace"_s);
  EXPECT_EQ(cmbAddress_.currentText(), three);
}

TEST_F(AddressBarTest, AnEngineErrorOnTheWayIsAFailureWithoutMessage) {
  faulty_->Arm(1, FaultSpan::FromThenOn);
  EXPECT_FALSE(GoTo(u"Workspace\\My Computer\\A:\\One"_s));
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_EQ(Current(), u"Workspace"_s);
}

TEST_F(AddressBarTest, AnUnreadableFolderIsReportedOnceAndNotRemembered) {
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path.endsWith(u"Programs"))
      throw RunTimeError(error::kAccessDenied, u"Access is denied"_s);
  });
  prompts_.ExpectBox(u"Access is denied"_s);
  static_cast<void>(GoTo(u"Workspace\\My Computer\\C:\\Programs"_s));
  EXPECT_TRUE(cmbAddress_.History().isEmpty());
  faulty_->SetHook(nullptr);
}

TEST_F(AddressBarTest, WhatWasGoneToEntersTheHistoryAsTheTreeSpellsIt) {
  EXPECT_TRUE(GoTo(u"workspace/my computer/c:/programs"_s));
  EXPECT_TRUE(GoTo(u"workspace"_s));
  EXPECT_EQ(cmbAddress_.History(), QStringList({u"Workspace"_s, u"Workspace\\My Computer\\C:\\Programs"_s}));
}

TEST_F(AddressBarTest, ASixthAddressPushesTheOldestOut) {
  const QString drive = u"Workspace\\My Computer\\A:"_s;
  QStringList gone;
  for (const QString& below : {u""_s, u"\\One"_s, u"\\One\\Two"_s, u"\\One\\Two\\Three"_s}) {
    EXPECT_TRUE(GoTo(drive + below));
    gone.prepend(drive + below);
  }
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:"_s));
  gone.prepend(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(cmbAddress_.History(), gone);
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\Programs"_s));
  gone.prepend(u"Workspace\\My Computer\\C:\\Programs"_s);
  gone.removeLast();
  EXPECT_EQ(cmbAddress_.History(), gone);
}

TEST_F(AddressBarTest, AChosenEntryFillsTheBoxAndEnterDisplaysIt) {
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\Programs"_s));
  EXPECT_TRUE(GoTo(u"Workspace"_s));
  const int displays = displays_;
  cmbAddress_.setCurrentIndex(1);
  EXPECT_EQ(cmbAddress_.currentText(), u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_EQ(displays_, displays);
  QTest::keyClick(&cmbAddress_, Qt::Key_Return);
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\Programs"_s);
}

TEST_F(AddressBarTest, AnAddressEnteredDuringADisplayIsDisplayedAfterIt) {
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i)
    memory_->AddFile(u"C:\\Programs\\file%1"_s.arg(i));
  bool asked = false;
  onEvents_ = [&] {
    if (std::exchange(asked, true))
      return;
    EXPECT_TRUE(navigator_.IsDisplaying());
    EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\readme.txt"_s));
  };
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\Programs"_s));
  EXPECT_TRUE(asked);
  EXPECT_EQ(navigator_.CurrentAddress(), u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(cmbAddress_.currentText(), u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(SelectedTexts(), QStringList({u"readme.txt"_s}));
  // The newest stands first.
  EXPECT_EQ(cmbAddress_.History().first(), u"Workspace\\My Computer\\C:"_s);
}

class FilterBarTest : public BarsFixture {
 protected:
  FilterBarTest() {
    EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\Programs"_s));
    displays_ = 0;
  }
};

TEST_F(FilterBarTest, TheSwitchFiltersFilesAndNeverFolders) {
  cmbFilter_.setEditText(u"*.TXT"_s);
  filterBar_.SwitchClicked(true);
  EXPECT_EQ(displays_, 1);
  EXPECT_EQ(ListTexts(), QStringList({u"Cell1"_s, u"notes.txt"_s}));
  filterBar_.ModeClicked(true);
  EXPECT_EQ(ListTexts(), QStringList({u"Cell1"_s, u"main.pac"_s}));
  filterBar_.SwitchClicked(false);
  EXPECT_EQ(ListTexts(), QStringList({u"Cell1"_s, u"main.pac"_s, u"notes.txt"_s}));
  EXPECT_EQ(displays_, 3);
}

TEST_F(FilterBarTest, AnEmptyFilterHidesAllFilesInIncludeModeOnly) {
  cmbFilter_.setEditText(u""_s);
  filterBar_.SwitchClicked(true);
  EXPECT_EQ(ListTexts(), QStringList({u"Cell1"_s}));
  filterBar_.ModeClicked(true);
  EXPECT_EQ(ListTexts().size(), 3);
}

TEST_F(FilterBarTest, TheModeButtonDisplaysNothingWhileTheSwitchIsUp) {
  filterBar_.ModeClicked(true);
  EXPECT_EQ(displays_, 0);
  EXPECT_TRUE(cmbFilter_.History().isEmpty());
  EXPECT_EQ(filterBar_.Filter().Mode(), FilterMode::Exclude);
}

TEST_F(FilterBarTest, ButtonsDisplayNothingInWorkspaceAndMyComputer) {
  cmbFilter_.setEditText(u"*.txt"_s);
  for (const QString& address : {u"Workspace"_s, u"Workspace\\My Computer"_s}) {
    ASSERT_TRUE(GoTo(address));
    displays_ = 0;
    filterBar_.SwitchClicked(true);
    filterBar_.ModeClicked(true);
    EXPECT_TRUE(filterBar_.Filter().IsOn());
    EXPECT_EQ(filterBar_.Filter().Mode(), FilterMode::Exclude);
    filterBar_.ModeClicked(false);
    filterBar_.SwitchClicked(false);
    EXPECT_EQ(displays_, 0);
    EXPECT_TRUE(cmbFilter_.History().isEmpty());
  }
}

TEST_F(FilterBarTest, EnterAsksForTheSwitchAndEnterWithShiftDoesNot) {
  int asked = 0;
  QObject::connect(&filterBar_, &FilterBar::SwitchWanted, &filterBar_, [&] { ++asked; });
  QTest::keyClick(&cmbFilter_, Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_EQ(asked, 0);
  QTest::keyClick(&cmbFilter_, Qt::Key_Return);
  EXPECT_EQ(asked, 1);
}

TEST_F(FilterBarTest, EveryClickThatDisplaysRecordsTheFilter) {
  cmbFilter_.setEditText(u"*.txt"_s);
  filterBar_.SwitchClicked(true);
  cmbFilter_.setEditText(u"*.pac"_s);
  filterBar_.ModeClicked(true);
  EXPECT_EQ(cmbFilter_.History(), QStringList({u"*.pac"_s, u"*.txt"_s}));
  filterBar_.SwitchClicked(false);
  EXPECT_EQ(cmbFilter_.History(), QStringList({u"*.pac"_s, u"*.txt"_s})) << "an equal entry moves only";
  EXPECT_EQ(cmbFilter_.currentText(), u"*.pac"_s);
}

TEST_F(FilterBarTest, WhatIsTypedDuringADisplayCountsFromTheNextOne) {
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i)
    memory_->AddFile(u"C:\\Programs\\file%1.txt"_s.arg(i));
  cmbFilter_.setEditText(u"*.txt"_s);
  onEvents_ = [&] { cmbFilter_.setEditText(u"*.pac"_s); };
  filterBar_.SwitchClicked(true);
  EXPECT_EQ(ListTexts().size(), FolderDisplay::kGaugeFrom + 2);
  EXPECT_EQ(cmbFilter_.History(), QStringList({u"*.txt"_s})) << "what has filtered is remembered";
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), QStringList({u"Cell1"_s, u"main.pac"_s}));
}

TEST_F(FilterBarTest, TheBoxShowsWhyAPatternIsWrong) {
  cmbFilter_.setToolTip(u"Patterns"_s);
  cmbFilter_.setEditText(u"*.txt;[a"_s);
  EXPECT_TRUE(cmbFilter_.toolTip().remove(u'\n').contains(u"not closed"_s));
  EXPECT_TRUE(cmbFilter_.accessibleDescription().contains(u"not closed"_s));
  const QColor wrong = cmbFilter_.lineEdit()->palette().color(QPalette::Text);
  EXPECT_GT(wrong.red(), wrong.green() + 50);
  EXPECT_EQ(cmbFilter_.lineEdit()->actions().size(), 1) << "a picture, for those who see no red";
  cmbFilter_.setEditText(u"*.txt;[a]"_s);
  EXPECT_EQ(cmbFilter_.toolTip(), u"Patterns"_s);
  EXPECT_TRUE(cmbFilter_.accessibleDescription().isEmpty());
  EXPECT_NE(cmbFilter_.lineEdit()->palette().color(QPalette::Text), wrong);
  EXPECT_TRUE(cmbFilter_.lineEdit()->actions().isEmpty());
}

TEST(HistoryBoxTest, RecordingKeepsTextAndCursorAndPutsTheNewestOnTop) {
  HistoryBox box;
  for (const QString& text : {u"a"_s, u"b"_s, u"abc"_s}) {
    box.setEditText(text);
    box.lineEdit()->setCursorPosition(1);
    box.AddToHistory();
    EXPECT_EQ(box.currentText(), text);
    EXPECT_EQ(box.lineEdit()->cursorPosition(), 1);
  }
  EXPECT_EQ(box.History(), QStringList({u"abc"_s, u"b"_s, u"a"_s}));
}

TEST(HistoryBoxTest, AFullHistoryMayHoldATextTwice) {
  HistoryBox box;
  for (const QString& text : {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"e"_s}) {
    box.setEditText(text);
    box.AddToHistory();
  }
  EXPECT_EQ(box.History(), QStringList({u"e"_s, u"e"_s, u"d"_s, u"c"_s, u"b"_s}));
}

TEST(HistoryBoxTest, NothingIsCompletedAndEnterAddsNothingByItself) {
  HistoryBox box;
  box.setEditText(u"Workspace"_s);
  box.AddToHistory();
  box.clearEditText();
  QTest::keyClicks(&box, u"wor"_s);
  EXPECT_EQ(box.currentText(), u"wor"_s);
  QTest::keyClick(&box, Qt::Key_Return);
  EXPECT_EQ(box.History(), QStringList({u"Workspace"_s}));
  EXPECT_EQ(box.currentText(), u"wor"_s);
  QTest::keyClick(&box, Qt::Key_Down);
  EXPECT_EQ(box.currentText(), u"Workspace"_s) << "the arrow key walks through the history";
}

TEST_F(AddressBarTest, ADeepAddressCostsOneLookUpALevel) {
  constexpr int kDepth = 300;
  QStringList folders;
  for (int i = 0; i < kDepth; ++i) {
    folders.append(u"d%1"_s.arg(i));
  }
  const QString path = folders.join(u'\\');
  memory_->AddFolder(u"C:\\"_s + path);
  faulty_->ClearCalls();
  EXPECT_TRUE(GoTo(u"Workspace\\My Computer\\C:\\"_s + path));
  EXPECT_EQ(Current(), u"Workspace\\My Computer\\C:\\"_s + path);
  // One to know that it is there, one for each node that the tree lacks, and two for the display.
  EXPECT_EQ(faulty_->CallCount(), kDepth + 3);
}

}  // namespace
}  // namespace trevane::test
