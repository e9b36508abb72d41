#include "base/NameCodec.h"
#include "base/RunTimeError.h"
#include "engine/fetched/FetchedFiles.h"
#include "tests/engine/fetched/FetchedWorld.h"
#include "tests/support/WrongSizes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using Result = FetchedFiles::PutBackResult;

const QString kProgram = QStringLiteral("programs\\main.pac");

class FetchedFilesTest : public testing::Test, protected FetchedWorld {};

TEST_F(FetchedFilesTest, AFileIsFetchedAndOpened) {
  const QString path = RunFile();
  EXPECT_EQ(opened.size(), 1);
  EXPECT_TRUE(path.startsWith(Place()));
  EXPECT_EQ(QFileInfo(path).fileName(), QStringLiteral("main.pac"));
  EXPECT_EQ(ContentOf(path), "of the robot");
  EXPECT_EQ(EntriesOf(QFileInfo(path).path()), QStringList{QStringLiteral("main.pac")});
#ifndef Q_OS_WIN
  EXPECT_EQ(
      QFileInfo(path).permissions() & QFileDevice::Permissions(0x7777) & ~QFileDevice::Permissions(0x0700),
      QFileDevice::ReadOwner | QFileDevice::WriteOwner);
#endif
  EXPECT_FALSE(fetched->NextToAsk());
}

TEST_F(FetchedFilesTest, OddNamesAreMadeSafe) {
  const QString colon = QStringLiteral("a:b.txt");
  const QString bytes = DecodeBytes("x\xff.txt");
  const QString device = QStringLiteral("CON");
  const QString blanks = QStringLiteral("...");
  const QString longest = QString(251, u'n') + QStringLiteral(".txt");
  for (const QString& name : {colon, bytes, device, blanks, longest}) {
    robot->AddFile(name, "content");
    const QString path = RunFile(QStringLiteral("Robot\\") + name);
    EXPECT_EQ(ContentOf(path), "content") << path.toStdString();
    EXPECT_TRUE(QFileInfo(path).canonicalFilePath().startsWith(QFileInfo(Place()).canonicalFilePath()));
    Write(path, "changed");
    EXPECT_EQ(PutBack(), Result::Done);
    EXPECT_EQ(robot->Content(name), "changed");
  }
  EXPECT_EQ(QFileInfo(opened[0]).fileName(), QStringLiteral("a_b.txt"));
  EXPECT_EQ(QFileInfo(opened[1]).fileName(), QStringLiteral("x_.txt"));
  EXPECT_EQ(QFileInfo(opened[2]).fileName(), QStringLiteral("_CON"));
  EXPECT_EQ(QFileInfo(opened[3]).fileName(), QStringLiteral("___"));
  EXPECT_TRUE(opened[4].endsWith(QStringLiteral("nn.txt")));
}

TEST_F(FetchedFilesTest, EqualNamesOfTwoControllersDoNotMeet) {
  const QString ofRobot = RunFile();
  const QString ofCell = RunFile(QStringLiteral("Cell\\programs\\main.pac"));
  EXPECT_NE(ofRobot, ofCell);
  EXPECT_EQ(ContentOf(ofRobot), "of the robot");
  EXPECT_EQ(ContentOf(ofCell), "of the cell");
  Write(ofCell, "new");
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(cell->Content(kProgram), "new");
  EXPECT_EQ(robot->Content(kProgram), "of the robot");
}

TEST_F(FetchedFilesTest, AnUnchangedFileIsNotFetchedTwice) {
  const QString path = RunFile();
  robot->ClearCalls();
  EXPECT_EQ(RunFile(), path);
  EXPECT_EQ(robot->CallCount(FileSystemOperation::Read), 0);
  EXPECT_EQ(FetchedContents().size(), 1);
}

TEST_F(FetchedFilesTest, AFileThatChangedOnTheControllerIsFetchedAgainToTheSamePlace) {
  const QString path = RunFile();
  robot->AddFile(kProgram, "newer");
  EXPECT_EQ(RunFile(), path);
  EXPECT_EQ(ContentOf(path), "newer");
  EXPECT_EQ(FetchedContents(), QStringList{QStringLiteral("main.pac=newer")});
  Wait();
  EXPECT_FALSE(fetched->NextToAsk());
  EXPECT_TRUE(fetched->End().empty());
  EXPECT_EQ(FetchedContents(), QStringList());
}

TEST_F(FetchedFilesTest, ACopyThatWasChangedHereIsNotReplaced) {
  const QString path = RunFile();
  Write(path, "mine");
  robot->AddFile(kProgram, "newer");
  const QString other = RunFile();
  EXPECT_NE(other, path);
  EXPECT_EQ(ContentOf(path), "mine");
  EXPECT_EQ(ContentOf(other), "newer");
}

TEST_F(FetchedFilesTest, AChangeDuringTheFetchIsNotReplaced) {
  const QString path = RunFile();
  robot->AddFile(kProgram, "newer");
  faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Read) {
      WriteFile(path, "mine");
    }
  });
  EXPECT_NE(RunFile(), path);
  EXPECT_EQ(FetchedContents(),
            (QStringList{QStringLiteral("main.pac=mine"), QStringLiteral("main.pac=newer")}));
}

TEST_F(FetchedFilesTest, AProgramThatDoesNotStartIsAFailure) {
  outcome = {OpenOutcome::Code::NoProgram, QStringLiteral("Nothing opens it")};
  EXPECT_EQ(FailureOfRun().Description(), QStringLiteral("Nothing opens it"));
  outcome = {OpenOutcome::Code::Failed, QStringLiteral("It does not start")};
  EXPECT_EQ(FailureOfRun().Description(), QStringLiteral("It does not start"));
}

TEST_F(FetchedFilesTest, AFailureOfAnyCallLeavesNothing) {
  for (const qint32 number : {error::kCancelled, error::kTimeOut, error::kWin32Error + 64}) {
    for (int call = 1;; ++call) {
      clsIxoFile file = files.FileAt(At(kMain));
      faulty->Arm(call, FaultSpan::FromThenOn, number);
      bool failed = false;
      try {
        fetched->Run(file);
      } catch (const RunTimeError& failure) {
        failed = true;
        EXPECT_EQ(failure.Number(), number);
      }
      const int faults = faulty->FaultCount();
      faulty->Disarm();
      if (!failed) {
        EXPECT_GT(call, 2);
        break;
      }
      EXPECT_GT(faults, 0);
      EXPECT_EQ(FetchedContents(), QStringList()) << call;
      EXPECT_TRUE(opened.isEmpty());
    }
    EXPECT_TRUE(fetched->End().empty());
    EXPECT_EQ(EntriesOf(Place()), QStringList());
    opened.clear();
    Begin();
  }
}

TEST_F(FetchedFilesTest, AFileThatComesIncompleteIsAFailure) {
  clsIxoFile file = files.FileAt(At(kMain));
  faulty->Arm(1, FaultSpan::FromThenOn, error::kTimeOut, Fault::Lie);
  EXPECT_THROW(fetched->Run(file), RunTimeError);
  EXPECT_EQ(FetchedContents(), QStringList());
}

TEST_F(FetchedFilesTest, AFileOfAWrongSizeIsFetched) {
  ConnectRobotTo(std::make_shared<WrongSizes>(robot));
  const QString path = RunFile(robotName + QStringLiteral("\\programs\\main.pac"));
  EXPECT_EQ(ContentOf(path), "of the robot");
}

TEST_F(FetchedFilesTest, AChangedFileIsPutBack) {
  const QString path = RunFile();
  Write(path, "changed");
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "changed");
  Wait();
  EXPECT_FALSE(fetched->NextToAsk());
  // Once more, and then nothing is left of it.
  Write(path, QByteArray());
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "");
  EXPECT_TRUE(fetched->End().empty());
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, ALongFileIsPutBackInPieces) {
  const QByteArray content = QByteArray("0123456789abcdef").repeated(200'000);
  const QString path = RunFile();
  WriteFile(path, content);
  Wait();
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), content);
}

TEST_F(FetchedFilesTest, WhatChangedOnBothSidesIsReplacedOnlyWithLeave) {
  const QString path = RunFile();
  Write(path, "mine");
  robot->AddFile(kProgram, "theirs, longer");
  int asked = 0;
  EXPECT_EQ(PutBack([&] {
              ++asked;
              return false;
            }),
            Result::Refused);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(robot->Content(kProgram), "theirs, longer");
  EXPECT_FALSE(fetched->NextToAsk());
  EXPECT_EQ(fetched->End().size(), 1U);
  EXPECT_EQ(ContentOf(path), "mine");
}

TEST_F(FetchedFilesTest, WhatChangedOnBothSidesIsReplacedWithLeave) {
  Write(RunFile(), "mine");
  robot->AddFile(kProgram, "theirs, longer");
  EXPECT_EQ(PutBack([] { return true; }), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
}

TEST_F(FetchedFilesTest, AnotherChangeDuringTheQuestionIsAskedAboutOnceMore) {
  Write(RunFile(), "mine");
  robot->AddFile(kProgram, "theirs, longer");
  int asked = 0;
  EXPECT_EQ(PutBack([&] {
              if (++asked == 1) {
                robot->AddFile(kProgram, "theirs, even longer");
              }
              return true;
            }),
            Result::Done);
  EXPECT_EQ(asked, 2);
}

TEST_F(FetchedFilesTest, AnotherSizeThereNeedsNoReading) {
  Write(RunFile(), "mine");
  robot->AddFile(kProgram, "theirs, longer");
  robot->ClearCalls();
  EXPECT_EQ(PutBack([] { return false; }), Result::Refused);
  EXPECT_EQ(robot->CallCount(FileSystemOperation::Read), 0);
}

TEST_F(FetchedFilesTest, ADateAloneIsNoChange) {
  Write(RunFile(), "mine");
  robot->SetTimes(kProgram, {}, {}, {1});
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
}

TEST_F(FetchedFilesTest, ACoarseDateIsNoProof) {
  FetchedWorld world({.dateStep = 60'000});
  world.Write(world.RunFile(), "mine");
  // As long, and in the same minute.
  world.robot->AddFile(kProgram, "by somebody!");
  int asked = 0;
  EXPECT_EQ(world.PutBack([&] {
    ++asked;
    return false;
  }),
            Result::Refused);
  EXPECT_EQ(asked, 1);
}

TEST_F(FetchedFilesTest, ContentThatIsThereAlreadyIsNotWritten) {
  Write(RunFile(), "mine");
  robot->AddFile(kProgram, "mine");
  robot->ClearCalls();
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->CallCount(FileSystemOperation::Write), 0);
  EXPECT_TRUE(fetched->End().empty());
}

TEST_F(FetchedFilesTest, AWriteDuringPuttingBackIsAskedAboutAgain) {
  const QString path = RunFile();
  Write(path, "mine");
  const FetchedFiles::File file = fetched->NextToAsk();
  const QByteArray content = file->Content();
  file->WasAsked(content);
  WriteFile(path, "half wri");
  EXPECT_EQ(fetched->PutBack(*file, content, [] { return false; }), Result::ChangedAgain);
  EXPECT_EQ(robot->Content(kProgram), "of the robot");
  Wait();
  EXPECT_TRUE(fetched->NextToAsk());
}

TEST_F(FetchedFilesTest, AChangeThereDuringTheWritingEndsIt) {
  Write(RunFile(), "mine");
  faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Write && robot->Content(kProgram) == "of the robot") {
      robot->AddFile(kProgram, "theirs");
    }
  });
  static_cast<void>(FailureOfPutBack());
  EXPECT_EQ(robot->Content(kProgram), "theirs");
}

TEST_F(FetchedFilesTest, AFailureOfAnyCallLeavesEitherContentWhole) {
  const QString path = RunFile();
  for (int call = 1;; ++call) {
    const QByteArray content = "content " + QByteArray::number(call);
    Write(path, content);
    const QByteArray before = robot->Content(kProgram);
    const FetchedFiles::File file = fetched->NextToAsk();
    ASSERT_TRUE(file);
    const QByteArray hash = file->Content();
    file->WasAsked(hash);
    faulty->Arm(call, FaultSpan::FromThenOn, error::kWin32Error + 64,
                call % 2 == 0 ? Fault::DoAndFail : Fault::Refuse);
    bool failed = false;
    try {
      static_cast<void>(fetched->PutBack(*file, hash, [] { return true; }));
    } catch (const RunTimeError&) {
      failed = true;
    }
    faulty->Disarm();
    const QByteArray after = robot->Content(kProgram);
    EXPECT_TRUE(after == before || after == content) << after.toStdString();
    EXPECT_EQ(ContentOf(path), content);
    EXPECT_EQ(robot->Tree().size(), 2) << robot->Tree().join(u'\n').toStdString();
    EXPECT_FALSE(fetched->NextToAsk());
    if (!failed) {
      EXPECT_GT(call, 5);
      break;
    }
    EXPECT_TRUE(file->IsChanged());
  }
}

TEST_F(FetchedFilesTest, AFileThatIsGoneThereIsNotMadeAgain) {
  Write(RunFile(), "mine");
  robot->Vanish(kProgram);
  EXPECT_EQ(FailureOfPutBack().Number(), error::kNotFound);
  EXPECT_FALSE(robot->Exists(kProgram));
}

TEST_F(FetchedFilesTest, NothingIsWrittenThroughALink) {
  robot->AddLink(QStringLiteral("link.pac"), kProgram);
  const QString path = RunFile(QStringLiteral("Robot\\link.pac"));
  EXPECT_EQ(ContentOf(path), "of the robot");
  Write(path, "mine");
  EXPECT_EQ(FailureOfPutBack().Number(), error::kExists);
  EXPECT_EQ(robot->Content(kProgram), "of the robot");
  EXPECT_EQ(ContentOf(path), "mine");
}

TEST_F(FetchedFilesTest, AWriteProtectedControllerRefuses) {
  Write(RunFile(), "mine");
  robot->SetWriteProtected(QString(), true);
  EXPECT_NE(FailureOfPutBack().Number(), 0);
  EXPECT_EQ(robot->Content(kProgram), "of the robot");
  EXPECT_EQ(fetched->End().size(), 1U);
}

TEST_F(FetchedFilesTest, AFullControllerKeepsTheOldContent) {
  Write(RunFile(), QByteArray(1000, 'x'));
  robot->SetCapacity(100);
  EXPECT_EQ(FailureOfPutBack().Number(), error::kDiskFull);
  EXPECT_EQ(robot->Content(kProgram), "of the robot");
}

TEST_F(FetchedFilesTest, WithoutItsControllerNothingIsPutBack) {
  const QString path = RunFile();
  session.gIxoCtrls().Remove(QStringLiteral("Robot"));
  Write(path, "mine");
  EXPECT_EQ(FailureOfPutBack().Number(), error::kDeviceNotReady);
  EXPECT_FALSE(fetched->NextToAsk());
  // It is offered as soon as it is back, by whatever name.
  Register(QStringLiteral("R2"), QStringLiteral("IxoProv.Robot"));
  Wait();
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_TRUE(fetched->NextToAsk()->IsOffered());
  EXPECT_EQ(fetched->ControllerOf(fetched->NextToAsk()->Record()), QStringLiteral("R2"));
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
}

TEST_F(FetchedFilesTest, AnotherControllerOfTheProviderIsNotOfferedIt) {
  const QString path = RunFile();
  session.gIxoCtrls().Remove(QStringLiteral("Robot"));
  Write(path, "mine");
  EXPECT_EQ(FailureOfPutBack().Number(), error::kDeviceNotReady);
  Register(QStringLiteral("Other"), QStringLiteral("IxoProv.Robot"), {}, QStringLiteral("User=other"));
  Wait();
  EXPECT_FALSE(fetched->NextToAsk());
}

TEST_F(FetchedFilesTest, AnotherRootThatHoldsTheFileFindsIt) {
  const QString path = RunFile();
  session.gIxoCtrls().Remove(QStringLiteral("Robot"));
  Write(path, "mine");
  EXPECT_EQ(FailureOfPutBack().Number(), error::kDeviceNotReady);
  const auto record =
      Register(QStringLiteral("Programs"), QStringLiteral("IxoProv.Robot"), QStringLiteral("/programs"));
  EXPECT_EQ(files.FileAt(At(QStringLiteral("Programs"))).Result(), 0);
  Wait();
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_EQ(fetched->AddressOf(fetched->NextToAsk()->Record()), At(QStringLiteral("Programs\\main.pac")));
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
}

TEST_F(FetchedFilesTest, TheEndRemovesWhatWasNotChanged) {
  RunFile();
  RunFile(QStringLiteral("Cell\\programs\\main.pac"));
  EXPECT_EQ(FetchedContents().size(), 2);
  EXPECT_TRUE(fetched->End().empty());
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, TheEndNamesWhatWasChanged) {
  const QString path = RunFile();
  RunFile(QStringLiteral("Cell\\programs\\main.pac"));
  // At the last moment: nobody has looked at it.
  WriteFile(path, "mine");
  const auto kept = fetched->End();
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept.front().name, QStringLiteral("main.pac"));
  EXPECT_EQ(kept.front().controller, QStringLiteral("Robot"));
  EXPECT_EQ(QDir::fromNativeSeparators(kept.front().folder), QFileInfo(path).path());
  EXPECT_EQ(FetchedContents(), QStringList{QStringLiteral("main.pac=mine")});
}

TEST_F(FetchedFilesTest, AnotherFileThatWasSavedThereIsKeptAndNamed) {
  const QStringList both{QStringLiteral("main.pac=of the robot"), QStringLiteral("other.pac=mine")};
  const QString path = RunFile();
  WriteFile(QFileInfo(path).path() + QStringLiteral("/other.pac"), "mine");
  Wait();
  EXPECT_FALSE(fetched->NextToAsk());
  EXPECT_EQ(fetched->End().size(), 1U);
  EXPECT_EQ(FetchedContents(), both);
  Begin();
  Wait();
  EXPECT_EQ(fetched->End().size(), 1U);
  EXPECT_EQ(FetchedContents(), both);
}

TEST_F(FetchedFilesTest, AtTheEndUnsavedEditsKeepTheFileAndAreNamed) {
  const QString path = RunFile();
  WriteFile(QFileInfo(path).path() + QStringLiteral("/.main.pac.swp"), "edits");
  const auto kept = fetched->End();
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept.front().name, QStringLiteral("main.pac"));
  EXPECT_EQ(kept.front().why, FetchedFiles::Kept::Why::InUse);
  EXPECT_EQ(kept.front().beside, QStringList{QStringLiteral(".main.pac.swp")});
  EXPECT_EQ(FetchedContents(),
            (QStringList{QStringLiteral(".main.pac.swp=edits"), QStringLiteral("main.pac=of the robot")}));
}

TEST_F(FetchedFilesTest, AfterACrashUnsavedEditsKeepTheFileUntilTheyAreSavedOrGone) {
  const QString path = RunFile();
  const QString lock = QFileInfo(path).path() + QStringLiteral("/.~lock.main.pac#");
  WriteFile(lock, "user");
  Crash();
  Wait();
  Wait();
  EXPECT_EQ(FetchedContents().size(), 2);
  // It is saved after all.
  Write(path, "mine");
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
  ASSERT_TRUE(QFile::remove(lock));
  EXPECT_TRUE(fetched->End().empty());
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, ACopyThatIsOpenIsNotReplacedByANewerContent) {
  const QString path = RunFile();
  WriteFile(QFileInfo(path).path() + QStringLiteral("/.main.pac.swp"), "edits");
  robot->AddFile(kProgram, "newer");
  const QString other = RunFile();
  EXPECT_NE(other, path);
  EXPECT_EQ(ContentOf(path), "of the robot");
  EXPECT_EQ(ContentOf(other), "newer");
}

/// A machine with the same file, at the same time.
std::shared_ptr<MemoryFileSystem> Twin() {
  auto twin = std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.execute = false});
  twin->AddFile(kProgram, "of the robot");
  return twin;
}

TEST_F(FetchedFilesTest, AFileIsNotPutBackOnAnotherMachineAtTheAddress) {
  const auto other = Twin();
  const QString path = RunFile();
  Write(path, "mine");
  ConnectRobotTo(other);
  Wait();
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_TRUE(fetched->IsOfAnotherMachine(fetched->NextToAsk()->Record()));
  EXPECT_TRUE(
      FailureOfPutBack().Description().startsWith(QStringLiteral("Another machine answers as 'Robot2'")));
  EXPECT_EQ(other->Content(kProgram), "of the robot");
  EXPECT_EQ(ContentOf(path), "mine");
  // The right one is back.
  ConnectRobotTo(robot);
  Wait();
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_FALSE(fetched->IsOfAnotherMachine(fetched->NextToAsk()->Record()));
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
  EXPECT_EQ(other->Content(kProgram), "of the robot");
}

TEST_F(FetchedFilesTest, AfterACrashAFileIsNotPutBackOnAnotherMachineAtTheAddress) {
  const auto other = Twin();
  Write(RunFile(), "mine");
  Crash();
  ConnectRobotTo(other);
  Wait();
  EXPECT_TRUE(FailureOfPutBack().Description().startsWith(QStringLiteral("Another machine answers")));
  EXPECT_EQ(other->Content(kProgram), "of the robot");
  EXPECT_EQ(fetched->End().size(), 1U);
}

TEST_F(FetchedFilesTest, AnotherMachineAtTheAddressHasACopyOfItsOwn) {
  const QString path = RunFile();
  ConnectRobotTo(Twin());
  EXPECT_NE(RunFile(robotName + QStringLiteral("\\programs\\main.pac")), path);
}

TEST_F(FetchedFilesTest, AfterACrashTheUnchangedIsRemovedAndTheChangedIsOffered) {
  const QString path = RunFile();
  RunFile(QStringLiteral("Cell\\programs\\main.pac"));
  WriteFile(path, "mine");
  session.gIxoCtrls().Remove(QStringLiteral("Robot"));
  Crash();
  Wait();
  EXPECT_EQ(FetchedContents(), QStringList{QStringLiteral("main.pac=mine")});
  EXPECT_FALSE(fetched->NextToAsk());
  Register(QStringLiteral("R2"), QStringLiteral("IxoProv.Robot"));
  Wait();
  ASSERT_TRUE(fetched->NextToAsk());
  EXPECT_TRUE(fetched->NextToAsk()->IsOffered());
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
  Wait();
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, ADeclinedFileStaysForTheNextStart) {
  const QString path = RunFile();
  Write(path, "mine");
  for (int start = 0; start < 3; ++start) {
    {
      const FetchedFiles::File file = fetched->NextToAsk();
      ASSERT_TRUE(file) << start;
      file->WasAsked(file->Content());
    }
    Wait();
    EXPECT_FALSE(fetched->NextToAsk());
    EXPECT_EQ(fetched->End().size(), 1U);
    Begin();
    Wait();
  }
  EXPECT_EQ(ContentOf(path), "mine");
}

TEST_F(FetchedFilesTest, ACrashDuringTheFetchLeavesNothing) {
  RunFile();
  const QString run =
      Place() + u'/' + QFileInfo(QFileInfo(QFileInfo(opened.front()).path()).path()).fileName();
  WriteFile(run + QStringLiteral("/aaaaaaaa.part"), "half");
  ASSERT_TRUE(QDir().mkpath(run + QStringLiteral("/bbbbbbbb")));
  WriteFile(run + QStringLiteral("/bbbbbbbb.part"), "half");
  Crash();
  Wait();
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, ACrashBeforeTheFileHasItsNameLeavesNothing) {
  const QString path = RunFile();
  ASSERT_TRUE(QFile::remove(path));
  Crash();
  Wait();
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, ADamagedRecordKeepsTheFile) {
  const QString path = RunFile();
  WriteFile(QFileInfo(path).path() + QStringLiteral(".record"), "damaged");
  Crash();
  Wait();
  EXPECT_EQ(FetchedContents().size(), 1);
  EXPECT_EQ(ContentOf(path), "of the robot");
}

TEST_F(FetchedFilesTest, TheEndNamesAFileWithADamagedRecord) {
  const QString path = RunFile();
  WriteFile(QFileInfo(path).path() + QStringLiteral(".record"), "damaged");
  Crash();
  Wait();
  const auto kept = fetched->End();
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept.front().name, QStringLiteral("main.pac"));
  EXPECT_EQ(kept.front().why, FetchedFiles::Kept::Why::Unknown);
  EXPECT_EQ(QDir::fromNativeSeparators(kept.front().folder), QFileInfo(path).path());
  EXPECT_EQ(ContentOf(path), "of the robot");
}

TEST_F(FetchedFilesTest, ARecordCannotLeadOutOfItsFolder) {
  const QString path = RunFile();
  const QString outside = temporary.filePath(QStringLiteral("outside"));
  WriteFile(outside, "of the robot");
  const QString recordPath = QFileInfo(path).path() + QStringLiteral(".record");
  auto record = ReadFetchedRecord(ContentOf(recordPath));
  ASSERT_TRUE(record);
  record->name = QStringLiteral("../../../outside");
  WriteFile(recordPath, WriteFetchedRecord(*record));
  Crash();
  Wait();
  EXPECT_EQ(ContentOf(outside), "of the robot");
  EXPECT_EQ(ContentOf(path), "of the robot");
}

TEST_F(FetchedFilesTest, ARunningProgramKeepsItsFiles) {
  const QString path = RunFile();
  const std::unique_ptr<FetchedFiles> first = std::move(fetched);
  Begin();
  Wait();
  EXPECT_EQ(ContentOf(path), "of the robot");
  const QString own = RunFile();
  EXPECT_NE(own, path);
  EXPECT_TRUE(fetched->End().empty());
  EXPECT_EQ(FetchedContents().size(), 1);
  EXPECT_TRUE(first->End().empty());
  EXPECT_EQ(EntriesOf(Place()), QStringList());
}

TEST_F(FetchedFilesTest, ARecoveredFileThatIsRunAgainStays) {
  const QString path = RunFile();
  Crash();
  EXPECT_EQ(RunFile(), path);
  Wait();
  EXPECT_EQ(ContentOf(path), "of the robot");
  Write(path, "mine");
  EXPECT_EQ(PutBack(), Result::Done);
  EXPECT_EQ(robot->Content(kProgram), "mine");
}

TEST_F(FetchedFilesTest, AUserWhoEmptiesThePlaceDoesNoHarm) {
  const QString path = RunFile();
  Write(path, "mine");
  // Not every system lets the lock go.
  static_cast<void>(QDir(Place()).removeRecursively());
  ASSERT_FALSE(QFile::exists(path));
  Wait();
  EXPECT_FALSE(fetched->NextToAsk());
  EXPECT_TRUE(fetched->End().empty());
}

TEST_F(FetchedFilesTest, TheWatcherNoticesASaveByRename) {
  const QString path = RunFile();
  WriteFile(path + QStringLiteral(".new"), "mine");
  ASSERT_TRUE(QFile::remove(path));
  ASSERT_TRUE(QFile::rename(path + QStringLiteral(".new"), path));
  Wait();
  EXPECT_TRUE(fetched->NextToAsk());
}

}  // namespace
}  // namespace trevane::test
