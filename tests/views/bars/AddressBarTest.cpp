#include "tests/views/bars/BarsFixture.h"

#include <QDir>
#include <QLineEdit>
#include <QTest>

namespace trevane::test {
namespace {

class AddressBarTest : public BarsFixture {};

TEST_F(AddressBarTest, RootAddressesIgnoreCaseAndATrailingSeparator) {
  EXPECT_TRUE(GoTo(QStringLiteral("workspace\\MY COMPUTER\\")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(ListTexts(), QStringList({QStringLiteral("A:"), QStringLiteral("C:")}));
  EXPECT_TRUE(GoTo(QStringLiteral("WORKSPACE")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace"));
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace"));
}

TEST_F(AddressBarTest, AFolderOfAnUnopenedDriveGetsItsMissingNodes) {
  ASSERT_EQ(tree_.FindByKey(QStringLiteral("Workspace\\My Computer\\A:\\One")), nullptr);
  EXPECT_TRUE(GoTo(QStringLiteral("workspace\\my computer\\a:\\one\\two\\three")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\A:\\One\\Two\\Three"))
      << "as the names are spelt there";
  const FolderNode* node = navigator_.CurrentNode();
  for (const QString& name : {QStringLiteral("Three"), QStringLiteral("Two"), QStringLiteral("One")}) {
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
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\A:\\One\\Two\\Three")));
  EXPECT_EQ(treFile_.SelectedNode(), navigator_.CurrentNode());
  const QRect place = treFile_.visualRect(tree_.IndexOf(navigator_.CurrentNode()));
  EXPECT_TRUE(place.isValid());
  EXPECT_TRUE(treFile_.viewport()->rect().intersects(place));
}

TEST_F(AddressBarTest, TheTagOfANewNodeHasTheFoldersAttributes) {
  memory_->SetAttributes(QStringLiteral("A:\\One"), 0x1 | 0x2);
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\A:\\One")));
  EXPECT_EQ(navigator_.CurrentNode()->Tag() & 0x13, 0x13);
}

TEST_F(AddressBarTest, AWrongAddressStaysInTheBoxAndLeavesTheViews) {
  ASSERT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
  const int displays = displays_;
  for (const QString& wrong :
       {QStringLiteral("Workspace\\My Computer\\C:\\Nowhere"), QStringLiteral("Workspace\\My Computer\\X:"),
        QStringLiteral("Workspace\\Nobody"), QStringLiteral("Workspace\\My Computer\\C:\\readme.txt\\below"),
        QStringLiteral("C:\\Nowhere"), QStringLiteral(""), QStringLiteral("\\"), QStringLiteral("\""),
        QStringLiteral("Elsewhere\\My Computer"), QStringLiteral("\\\\server")}) {
    EXPECT_FALSE(GoTo(wrong)) << wrong.toStdString();
    EXPECT_EQ(cmbAddress_.currentText(), wrong);
    EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  }
  EXPECT_EQ(displays_, displays);
  EXPECT_EQ(cmbAddress_.History(), QStringList({QStringLiteral("Workspace\\My Computer\\C:\\Programs")}));
}

TEST_F(AddressBarTest, EnterThatLeadsNowhereSaysSo) {
  cmbAddress_.setEditText(QStringLiteral("Workspace\\Nobody"));
  prompts_.ExpectBox(QStringLiteral("Failed Move to a specified address."));
  QTest::keyClick(&cmbAddress_, Qt::Key_Return);
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].informativeText,
            QStringLiteral("Workspace\\Nobody\nThere is no controller with the name 'Nobody'"));
  EXPECT_EQ(host_.reasons, QStringList{QStringLiteral("There is no controller with the name 'Nobody'")});
  EXPECT_EQ(cmbAddress_.currentText(), QStringLiteral("Workspace\\Nobody"));
}

TEST_F(AddressBarTest, BothEnterKeysGoAndEnterWithAnotherKeyDoesNot) {
  for (const Qt::KeyboardModifiers held : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier}) {
    cmbAddress_.setEditText(QStringLiteral("Workspace\\My Computer\\C:"));
    QTest::keyClick(&cmbAddress_, Qt::Key_Return, held);
    EXPECT_EQ(Current(), QStringLiteral("Workspace"));
  }
  QTest::keyClick(&cmbAddress_, Qt::Key_Enter, Qt::KeypadModifier);
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:"));
  cmbAddress_.setEditText(QStringLiteral("Workspace\\My Computer\\A:"));
  QTest::keyClick(cmbAddress_.lineEdit(), Qt::Key_Return);
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\A:"));
}

TEST_F(AddressBarTest, AnAddressOfAFileDisplaysItsFolderAndSelectsTheFile) {
  EXPECT_TRUE(GoTo(QStringLiteral("workspace\\my computer\\c:\\programs\\MAIN.PAC")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(cmbAddress_.currentText(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(SelectedTexts(), QStringList({QStringLiteral("main.pac")}));
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\readme.txt"))) << "right below a drive";
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(SelectedTexts(), QStringList({QStringLiteral("readme.txt")}));
}

TEST_F(AddressBarTest, OfTwoFoldersThatDifferInCaseTheTypedOneIsShown) {
  memory_->AddFile(QStringLiteral("C:\\Case\\upper.txt"));
  memory_->AddFolder(QStringLiteral("C:\\Case\\Sub"));
  memory_->AddFile(QStringLiteral("C:\\case\\lower.txt"));
  const QString drive = QStringLiteral("Workspace\\My Computer\\C:\\");
  EXPECT_TRUE(GoTo(drive + QStringLiteral("Case\\Sub")));
  EXPECT_TRUE(GoTo(drive + QStringLiteral("case"))) << "from within the other one";
  EXPECT_EQ(Current(), drive + QStringLiteral("case"));
  EXPECT_EQ(navigator_.CurrentAddress(), drive + QStringLiteral("case"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("lower.txt")});
  EXPECT_TRUE(navigator_.CurrentNode()->Children().empty()) << "what is below the other one";
  EXPECT_TRUE(GoTo(drive + QStringLiteral("Case\\upper.txt")));
  EXPECT_EQ(Current(), drive + QStringLiteral("Case"));
  EXPECT_EQ(SelectedTexts(), QStringList{QStringLiteral("upper.txt")});
  EXPECT_FALSE(GoTo(drive + QStringLiteral("CASE"))) << "neither of them";
  EXPECT_EQ(Current(), drive + QStringLiteral("Case"));
}

TEST_F(AddressBarTest, AFolderOfAnotherCaseTypedDuringADisplayIsShown) {
  memory_->AddFolder(QStringLiteral("C:\\Case"));
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i) {
    memory_->AddFolder(QStringLiteral("C:\\Case\\folder%1").arg(i));
  }
  memory_->AddFolder(QStringLiteral("C:\\case\\lower"));
  const QString drive = QStringLiteral("Workspace\\My Computer\\C:\\");
  bool asked = false;
  onEvents_ = [&] {
    if (!std::exchange(asked, true)) {
      EXPECT_TRUE(GoTo(drive + QStringLiteral("case")));
    }
  };
  EXPECT_TRUE(GoTo(drive + QStringLiteral("Case")));
  EXPECT_TRUE(asked);
  EXPECT_EQ(navigator_.CurrentAddress(), drive + QStringLiteral("case"));
  EXPECT_EQ(Current(), drive + QStringLiteral("case"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("lower")});
  ASSERT_EQ(navigator_.CurrentNode()->Children().size(), 1U);
  EXPECT_EQ(navigator_.CurrentNode()->Children().front()->Text(), QStringLiteral("lower"));
}

TEST_F(AddressBarTest, NoFileIsSelectedForOneOfAnotherCase) {
  memory_->AddFile(QStringLiteral("C:\\Programs\\MAIN.PAC"));
  const QString folder = QStringLiteral("Workspace\\My Computer\\C:\\Programs\\");
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  ASSERT_TRUE(GoTo(folder));
  ASSERT_EQ(prompts_.Texts().size(), 1);
  const QString shown = list_.Text(list_.FindByText(QStringLiteral("main.pac")));
  const QString other = shown == u"main.pac" ? QStringLiteral("MAIN.PAC") : QStringLiteral("main.pac");
  EXPECT_EQ(prompts_.Texts().front(), QStringLiteral("Can't display ") + other + QStringLiteral("."));
  EXPECT_TRUE(GoTo(folder + other));
  EXPECT_TRUE(SelectedTexts().isEmpty());
  EXPECT_TRUE(GoTo(folder + shown));
  EXPECT_EQ(SelectedTexts(), QStringList{shown});
}

TEST_F(AddressBarTest, AFileThatTheListDoesNotShowStillLeadsToItsFolder) {
  memory_->SetAttributes(QStringLiteral("C:\\Programs\\main.pac"), 0x2);
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs\\main.pac")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_TRUE(SelectedTexts().isEmpty());
}

TEST_F(AddressBarTest, AMachineIsNotTakenForOneWhoseNameBeginsWithIts) {
  ConnectCells();
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\Cell10\\arm\\left")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\Cell10\\arm\\left"));
  EXPECT_TRUE(IsOnController(navigator_.CurrentNode()->Tag()));
  EXPECT_EQ(tree_.FindByKey(QStringLiteral("Workspace\\Cell1\\arm")), nullptr);
  EXPECT_FALSE(GoTo(QStringLiteral("Workspace\\Cell1\\arm")));
  EXPECT_TRUE(GoTo(QStringLiteral("workspace\\CELL1\\prog")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\Cell1\\prog"));
}

TEST_F(AddressBarTest, AControllersNameAloneLeadsToItsTop) {
  ConnectCells();
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\Cell1\\")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\Cell1"));
  EXPECT_EQ(ListTexts(), QStringList({QStringLiteral("prog")}));
}

TEST_F(AddressBarTest, SlashesQuotesAndBlanksOfAPastedAddressAreRead) {
  const QString wanted = QStringLiteral("Workspace\\My Computer\\C:\\Programs");
  for (const QString& pasted :
       {QStringLiteral("Workspace/My Computer/C:/Programs"),
        QStringLiteral("Workspace/My Computer/C:/Programs/"), QStringLiteral("  ") + wanted,
        wanted + QStringLiteral("  "), QStringLiteral("\t") + wanted + QStringLiteral("\n"),
        u'"' + wanted + u'"', QStringLiteral(" \"") + wanted + QStringLiteral("\" "),
        QStringLiteral("\" ") + wanted + QStringLiteral(" \""),
        QStringLiteral("'") + wanted + QStringLiteral("'"),
        QStringLiteral("\u201C") + wanted + QStringLiteral("\u201D"), u'"' + wanted + QStringLiteral("\\\""),
        u'"' + wanted}) {
    ASSERT_TRUE(GoTo(QStringLiteral("Workspace")));
    EXPECT_TRUE(GoTo(pasted)) << pasted.toStdString();
    EXPECT_EQ(Current(), wanted) << pasted.toStdString();
  }
}

TEST_F(AddressBarTest, APathOfTheOperatingSystemLeadsToItsPlaceOnItsDrive) {
  const QString wanted = QStringLiteral("Workspace\\My Computer\\C:\\Programs");
  for (const QString& pasted : {QStringLiteral("C:\\Programs"), QStringLiteral("c:/programs/"),
                                QStringLiteral("\"C:\\Programs\\\""), QStringLiteral("/c/Programs"),
                                QStringLiteral(" /c/Programs/Cell1/.. "), QStringLiteral("/c/programs/")}) {
    ASSERT_TRUE(GoTo(QStringLiteral("Workspace")));
    EXPECT_TRUE(GoTo(pasted)) << pasted.toStdString();
    EXPECT_EQ(Current(), wanted) << pasted.toStdString();
  }
  EXPECT_FALSE(GoTo(QStringLiteral("/nowhere")));
  EXPECT_FALSE(GoTo(QStringLiteral("Q:\\")));
  EXPECT_EQ(Current(), wanted);
}

TEST_F(AddressBarTest, AFileUrlAndTheHomeFolderLeadThere) {
  for (const QString& pasted :
       {QStringLiteral("file:///c/Programs"), QStringLiteral("file:///c/Programs/main.pac"),
        QStringLiteral("file:///C:/Programs")}) {
    ASSERT_TRUE(GoTo(QStringLiteral("Workspace")));
    EXPECT_TRUE(GoTo(pasted)) << pasted.toStdString();
    EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs")) << pasted.toStdString();
  }
  ASSERT_TRUE(drives_.AddressOf(QDir::homePath()).isEmpty()) << "no drive of this test holds it";
  EXPECT_FALSE(GoTo(QStringLiteral("~")));
  if (!QDir::homePath().startsWith(u'/')) {
    return;  // On Windows it is on a drive of its own name.
  }
  volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                {QStringLiteral("C:"), QDir::homePath() + QDir::separator(), drivetype::kFixed}});
  EXPECT_TRUE(GoTo(QStringLiteral("~")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_TRUE(GoTo(QStringLiteral("~/Programs/")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
}

TEST_F(AddressBarTest, PathsAreUnderstoodAsPeopleWriteThem) {
  const QString wanted = QStringLiteral("Workspace\\My Computer\\C:\\Programs");
  for (const QString& typed : {QStringLiteral("C:\\Programs\\Cell1\\.."),
                               QStringLiteral("\\\\?\\C:\\Programs"), QStringLiteral("file:///C:/Programs/"),
                               QStringLiteral("Workspace\\My Computer\\C:\\Programs\\.\\Cell1\\.."),
                               QStringLiteral("file:///c/Programs"), QStringLiteral("'C:\\..\\Programs'")}) {
    ASSERT_TRUE(GoTo(QStringLiteral("Workspace")));
    EXPECT_TRUE(GoTo(typed)) << typed.toStdString();
    EXPECT_EQ(Current(), wanted) << typed.toStdString();
  }
}

TEST_F(AddressBarTest, TheReasonOfAPathIsWhatTheDiskSaysOfIt) {
  volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
  prompts_.ExpectBox(QStringLiteral("Failed Move to a specified address."));
  cmbAddress_.setEditText(QStringLiteral("/c/Programs/gone"));
  addressBar_.Go();
  const QString told = prompts_.Asked().back().informativeText;
  EXPECT_FALSE(told.contains(QStringLiteral("The address names no file or folder"))) << told.toStdString();
  EXPECT_TRUE(told.startsWith(QStringLiteral("/c/Programs/gone\n"))) << told.toStdString();
}

TEST_F(AddressBarTest, AShareLeadsToTheDriveOrControllerThatStandsForIt) {
  volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kRemote, 0,
                 QStringLiteral("\\\\server\\cells")}});
  EXPECT_TRUE(GoTo(QStringLiteral("\\\\SERVER\\cells\\Programs")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  ConnectCells();
  const auto record = session_.gIxoCtrls().Item(qint32{2});
  record->SetRoot(QStringLiteral("\\\\server\\plant"));
  prompts_.ExpectBox(QStringLiteral("Failed Move to a specified address."));
  cmbAddress_.setEditText(QStringLiteral("\\\\server\\plant"));
  addressBar_.Go();
  // Only a controller over this machine's files has a root that is a share.
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(
      QStringLiteral("No drive and no controller leads to this share. Connect it as a controller's root: "
                     "\\\\server\\plant")));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
}

TEST_F(AddressBarTest, ANameThatEndsWithABlankOrAQuoteCanBeGoneTo) {
  memory_->AddFolder(QStringLiteral("C:\\odd "));
  memory_->AddFolder(QStringLiteral("C:\\odd'"));
  memory_->AddFolder(QStringLiteral("C:\\Programs\\deep "));
  for (const QString& address : {QStringLiteral("Workspace\\My Computer\\C:\\odd "),
                                 QStringLiteral("Workspace\\My Computer\\C:\\odd'"),
                                 QStringLiteral("Workspace\\My Computer\\C:\\Programs\\deep ")}) {
    EXPECT_TRUE(GoTo(address)) << address.toStdString();
    EXPECT_EQ(Current(), address);
  }
}

TEST_F(AddressBarTest, WhenAFolderVanishesOnTheWayTheNodesAddedBeforeStay) {
  const QString three = QStringLiteral("Workspace\\My Computer\\A:\\One\\Two\\Three");
  ASSERT_TRUE(GoTo(QStringLiteral("Workspace")));
  faulty_->SetHook([&](const FileSystemCall& /*call*/) {
    if (tree_.FindByKey(QStringLiteral("Workspace\\My Computer\\A:\\One")) &&
        memory_->Exists(QStringLiteral("A:\\One\\Two"))) {
      memory_->Vanish(QStringLiteral("A:\\One\\Two"));
    }
  });
  EXPECT_FALSE(GoTo(three));
  EXPECT_NE(tree_.FindByKey(QStringLiteral("Workspace\\My Computer\\A:\\One")), nullptr);
  EXPECT_EQ(tree_.FindByKey(QStringLiteral("Workspace\\My Computer\\A:\\One\\Two")), nullptr);
  EXPECT_EQ(Current(), QStringLiteral("Workspace"));
  EXPECT_EQ(cmbAddress_.currentText(), three);
}

TEST_F(AddressBarTest, AnEngineErrorOnTheWayIsAFailureWithoutMessage) {
  faulty_->Arm(1, FaultSpan::FromThenOn);
  EXPECT_FALSE(GoTo(QStringLiteral("Workspace\\My Computer\\A:\\One")));
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_EQ(Current(), QStringLiteral("Workspace"));
}

TEST_F(AddressBarTest, AnUnreadableFolderIsReportedOnceAndNotRemembered) {
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path.endsWith(u"Programs")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("Access is denied"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Access is denied"));
  static_cast<void>(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
  EXPECT_TRUE(cmbAddress_.History().isEmpty());
  faulty_->SetHook(nullptr);
}

TEST_F(AddressBarTest, WhatWasGoneToEntersTheHistoryAsTheTreeSpellsIt) {
  EXPECT_TRUE(GoTo(QStringLiteral("workspace/my computer/c:/programs")));
  EXPECT_TRUE(GoTo(QStringLiteral("workspace")));
  EXPECT_EQ(cmbAddress_.History(), QStringList({QStringLiteral("Workspace"),
                                                QStringLiteral("Workspace\\My Computer\\C:\\Programs")}));
}

TEST_F(AddressBarTest, ASixthAddressPushesTheOldestOut) {
  const QString drive = QStringLiteral("Workspace\\My Computer\\A:");
  QStringList gone;
  for (const QString& below : {QStringLiteral(""), QStringLiteral("\\One"), QStringLiteral("\\One\\Two"),
                               QStringLiteral("\\One\\Two\\Three")}) {
    EXPECT_TRUE(GoTo(drive + below));
    gone.prepend(drive + below);
  }
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:")));
  gone.prepend(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(cmbAddress_.History(), gone);
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
  gone.prepend(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  gone.removeLast();
  EXPECT_EQ(cmbAddress_.History(), gone);
}

TEST_F(AddressBarTest, AChosenEntryFillsTheBoxAndEnterDisplaysIt) {
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace")));
  const int displays = displays_;
  cmbAddress_.setCurrentIndex(1);
  EXPECT_EQ(cmbAddress_.currentText(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(displays_, displays);
  QTest::keyClick(&cmbAddress_, Qt::Key_Return);
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
}

TEST_F(AddressBarTest, AnAddressEnteredDuringADisplayIsDisplayedAfterIt) {
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Programs\\file%1").arg(i));
  }
  bool asked = false;
  onEvents_ = [&] {
    if (std::exchange(asked, true)) {
      return;
    }
    EXPECT_TRUE(navigator_.IsDisplaying());
    EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\readme.txt")));
  };
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
  EXPECT_TRUE(asked);
  EXPECT_EQ(navigator_.CurrentAddress(), QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(cmbAddress_.currentText(), QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(SelectedTexts(), QStringList({QStringLiteral("readme.txt")}));
  // The newest is first.
  EXPECT_EQ(cmbAddress_.History().first(), QStringLiteral("Workspace\\My Computer\\C:"));
}

class FilterBarTest : public BarsFixture {
 protected:
  FilterBarTest() {
    EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
    displays_ = 0;
  }
};

TEST_F(FilterBarTest, TheSwitchFiltersFilesAndNeverFolders) {
  cmbFilter_.setEditText(QStringLiteral("*.TXT"));
  filterBar_.SwitchClicked(true);
  EXPECT_EQ(displays_, 1);
  EXPECT_EQ(ListTexts(), QStringList({QStringLiteral("Cell1"), QStringLiteral("notes.txt")}));
  filterBar_.ModeClicked(true);
  EXPECT_EQ(ListTexts(), QStringList({QStringLiteral("Cell1"), QStringLiteral("main.pac")}));
  filterBar_.SwitchClicked(false);
  EXPECT_EQ(ListTexts(),
            QStringList({QStringLiteral("Cell1"), QStringLiteral("main.pac"), QStringLiteral("notes.txt")}));
  EXPECT_EQ(displays_, 3);
}

TEST_F(FilterBarTest, AnEmptyFilterHidesAllFilesInIncludeModeOnly) {
  cmbFilter_.setEditText(QStringLiteral(""));
  filterBar_.SwitchClicked(true);
  EXPECT_EQ(ListTexts(), QStringList({QStringLiteral("Cell1")}));
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
  cmbFilter_.setEditText(QStringLiteral("*.txt"));
  for (const QString& address : {QStringLiteral("Workspace"), QStringLiteral("Workspace\\My Computer")}) {
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
  cmbFilter_.setEditText(QStringLiteral("*.txt"));
  filterBar_.SwitchClicked(true);
  cmbFilter_.setEditText(QStringLiteral("*.pac"));
  filterBar_.ModeClicked(true);
  EXPECT_EQ(cmbFilter_.History(), QStringList({QStringLiteral("*.pac"), QStringLiteral("*.txt")}));
  filterBar_.SwitchClicked(false);
  EXPECT_EQ(cmbFilter_.History(), QStringList({QStringLiteral("*.pac"), QStringLiteral("*.txt")}))
      << "an equal entry moves only";
  EXPECT_EQ(cmbFilter_.currentText(), QStringLiteral("*.pac"));
}

TEST_F(FilterBarTest, WhatIsTypedDuringADisplayCountsFromTheNextOne) {
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Programs\\file%1.txt").arg(i));
  }
  cmbFilter_.setEditText(QStringLiteral("*.txt"));
  onEvents_ = [&] { cmbFilter_.setEditText(QStringLiteral("*.pac")); };
  filterBar_.SwitchClicked(true);
  EXPECT_EQ(ListTexts().size(), FolderDisplay::kGaugeFrom + 2);
  EXPECT_EQ(cmbFilter_.History(), QStringList({QStringLiteral("*.txt")}))
      << "what has filtered is remembered";
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), QStringList({QStringLiteral("Cell1"), QStringLiteral("main.pac")}));
}

TEST_F(FilterBarTest, TheBoxShowsWhyAPatternIsWrong) {
  cmbFilter_.setToolTip(QStringLiteral("Patterns"));
  cmbFilter_.setEditText(QStringLiteral("*.txt;[a"));
  EXPECT_TRUE(cmbFilter_.toolTip().remove(u'\n').contains(QStringLiteral("not closed")));
  EXPECT_TRUE(cmbFilter_.accessibleDescription().contains(QStringLiteral("not closed")));
  const QColor wrong = cmbFilter_.lineEdit()->palette().color(QPalette::Text);
  EXPECT_GT(wrong.red(), wrong.green() + 50);
  EXPECT_EQ(cmbFilter_.lineEdit()->actions().size(), 1) << "a picture, for those who see no red";
  cmbFilter_.setEditText(QStringLiteral("*.txt;[a]"));
  EXPECT_EQ(cmbFilter_.toolTip(), QStringLiteral("Patterns"));
  EXPECT_TRUE(cmbFilter_.accessibleDescription().isEmpty());
  EXPECT_NE(cmbFilter_.lineEdit()->palette().color(QPalette::Text), wrong);
  EXPECT_TRUE(cmbFilter_.lineEdit()->actions().isEmpty());
}

TEST(HistoryBoxTest, RecordingKeepsTextAndCursorAndPutsTheNewestOnTop) {
  HistoryBox box;
  for (const QString& text : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("abc")}) {
    box.setEditText(text);
    box.lineEdit()->setCursorPosition(1);
    box.AddToHistory();
    EXPECT_EQ(box.currentText(), text);
    EXPECT_EQ(box.lineEdit()->cursorPosition(), 1);
  }
  EXPECT_EQ(box.History(), QStringList({QStringLiteral("abc"), QStringLiteral("b"), QStringLiteral("a")}));
}

TEST(HistoryBoxTest, AFullHistoryMayHoldATextTwice) {
  HistoryBox box;
  for (const QString& text : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                              QStringLiteral("d"), QStringLiteral("e"), QStringLiteral("e")}) {
    box.setEditText(text);
    box.AddToHistory();
  }
  EXPECT_EQ(box.History(), QStringList({QStringLiteral("e"), QStringLiteral("e"), QStringLiteral("d"),
                                        QStringLiteral("c"), QStringLiteral("b")}));
}

TEST(HistoryBoxTest, NothingIsCompletedAndEnterAddsNothingByItself) {
  HistoryBox box;
  box.setEditText(QStringLiteral("Workspace"));
  box.AddToHistory();
  box.clearEditText();
  QTest::keyClicks(&box, QStringLiteral("wor"));
  EXPECT_EQ(box.currentText(), QStringLiteral("wor"));
  QTest::keyClick(&box, Qt::Key_Return);
  EXPECT_EQ(box.History(), QStringList({QStringLiteral("Workspace")}));
  EXPECT_EQ(box.currentText(), QStringLiteral("wor"));
  QTest::keyClick(&box, Qt::Key_Down);
  EXPECT_EQ(box.currentText(), QStringLiteral("Workspace")) << "the arrow key walks through the history";
}

TEST_F(AddressBarTest, ADeepAddressCostsOneLookUpALevel) {
  constexpr int kDepth = 300;
  QStringList folders;
  for (int i = 0; i < kDepth; ++i) {
    folders.append(QStringLiteral("d%1").arg(i));
  }
  const QString path = folders.join(u'\\');
  memory_->AddFolder(QStringLiteral("C:\\") + path);
  faulty_->ClearCalls();
  EXPECT_TRUE(GoTo(QStringLiteral("Workspace\\My Computer\\C:\\") + path));
  EXPECT_EQ(Current(), QStringLiteral("Workspace\\My Computer\\C:\\") + path);
  // One to know that it is there, one for each other node that the tree lacks, and one for the display.
  EXPECT_EQ(faulty_->CallCount(), kDepth + 1);
}

}  // namespace
}  // namespace trevane::test
