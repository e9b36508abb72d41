#include "base/RunTimeError.h"
#include "engine/fetched/FetchedFile.h"
#include "engine/fetched/FetchedFolder.h"
#include "tests/support/TestFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {
namespace {

QByteArray HashOf(const QByteArray& content) {
  return QCryptographicHash::hash(content, QCryptographicHash::Sha256);
}

/// One file that holds "old" on both sides, and a clock.
class FetchedFileTest : public testing::Test {
 protected:
  FetchedFileTest() {
    WriteFile(file_.Path(), "old");
    file_.Renew(file_.Record());
    file_.WasFetched();
  }

  void Wait(qint64 milliseconds) {
    now_ += milliseconds;
    while (file_.Advance(now_)) {
    }
  }
  void Write(const QByteArray& content) {
    WriteFile(file_.Path(), content);
    file_.NoteWrite(now_);
  }

  QTemporaryDir temporary_;
  std::shared_ptr<FetchedFolder> folder_ = FetchedFolder::Make(temporary_.path());
  FetchedFile file_{folder_, QStringLiteral("1"),
                    FetchedRecord{.name = QStringLiteral("f.txt"), .size = 3, .hash = HashOf("old")}};
  qint64 now_ = 5000;
};

TEST_F(FetchedFileTest, NothingIsAskedWithoutAChange) {
  EXPECT_TRUE(file_.IsUntouched());
  Wait(10'000);
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_TRUE(file_.IsUntouched());
  EXPECT_FALSE(file_.MayBeChanged());
}

TEST_F(FetchedFileTest, AChangeIsAskedAboutASecondAfterTheLastWrite) {
  Write("new");
  Wait(900);
  EXPECT_FALSE(file_.IsToBeAsked());
  Write("newer");
  Wait(900);
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_FALSE(file_.IsSettled());
  Wait(100);
  EXPECT_TRUE(file_.IsToBeAsked());
  EXPECT_EQ(file_.Content(), HashOf("newer"));
}

TEST_F(FetchedFileTest, AChangeIsSeenWithoutANotice) {
  WriteFile(file_.Path(), "longer");
  Wait(0);
  EXPECT_TRUE(file_.MayBeChanged());
  Wait(1000);
  EXPECT_TRUE(file_.IsToBeAsked());
}

TEST_F(FetchedFileTest, ANoticeAboutSomethingElseInItsFolderIsNoWrite) {
  file_.NoteWriteBeside(now_);
  EXPECT_TRUE(file_.IsSettled());
  Write("new");
  Wait(600);
  file_.NoteWriteBeside(now_);
  Wait(600);
  EXPECT_FALSE(file_.IsToBeAsked());
  Wait(400);
  EXPECT_TRUE(file_.IsToBeAsked());
}

TEST_F(FetchedFileTest, AFileThatIsSavedUnderAnotherNameAndRenamedIsSeen) {
  WriteFile(file_.FolderPath() + QStringLiteral("/f.tmp"), "new");
  ASSERT_TRUE(QFile::remove(file_.Path()));
  file_.NoteWriteBeside(now_);
  Wait(300);
  ASSERT_TRUE(QFile::rename(file_.FolderPath() + QStringLiteral("/f.tmp"), file_.Path()));
  file_.NoteWriteBeside(now_);
  Wait(1000);
  EXPECT_TRUE(file_.IsToBeAsked());
}

TEST_F(FetchedFileTest, TheSameContentWrittenAgainIsNoChange) {
  Write("old");
  Wait(1000);
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_TRUE(file_.IsUntouched());
}

TEST_F(FetchedFileTest, OneContentIsAskedAboutOnce) {
  Write("new");
  Wait(1000);
  file_.WasAsked(file_.Content());
  EXPECT_FALSE(file_.IsToBeAsked());
  Write("new");
  Wait(1000);
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_TRUE(file_.IsChanged());
  Write("newer");
  Wait(1000);
  EXPECT_TRUE(file_.IsToBeAsked());
  file_.WasAsked(file_.Content());
  // Back to what was asked about before.
  Write("new");
  Wait(1000);
  EXPECT_FALSE(file_.IsToBeAsked());
}

TEST_F(FetchedFileTest, AContentThatWasPutBackOnceIsAskedAboutAfterAnother) {
  for (const char* content : {"new", "newer", "new", "old"}) {
    Write(content);
    Wait(1000);
    ASSERT_TRUE(file_.IsToBeAsked()) << content;
    file_.WasAsked(file_.Content());
    FetchedRecord record = file_.Record();
    record.hash = file_.Content();
    file_.WasPutBack(record);
  }
}

TEST_F(FetchedFileTest, WhatIsPutBackIsAskedAboutNoMore) {
  Write("new");
  Wait(1000);
  FetchedRecord record = file_.Record();
  record.hash = file_.Content();
  file_.Renew(record);
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_TRUE(file_.IsUntouched());
  EXPECT_EQ(ReadFetchedRecord(ContentOf(folder_->RecordOf(QStringLiteral("1")))), record);
}

TEST_F(FetchedFileTest, AFileThatIsGoneIsAskedAboutWhenItIsBack) {
  ASSERT_TRUE(QFile::remove(file_.Path()));
  Wait(0);
  Wait(1000);
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_FALSE(file_.MayBeChanged());
  WriteFile(file_.Path(), "new");
  Wait(0);
  Wait(1000);
  EXPECT_TRUE(file_.IsToBeAsked());
}

TEST_F(FetchedFileTest, ALongFileIsReadInPieces) {
  const QByteArray content(2 * LocalHash::kPiece + 1, 'x');
  Write(content);
  now_ += 1000;
  EXPECT_TRUE(file_.Advance(now_));
  EXPECT_FALSE(file_.IsToBeAsked());
  EXPECT_TRUE(file_.Advance(now_));
  EXPECT_TRUE(file_.Advance(now_));
  EXPECT_FALSE(file_.Advance(now_));
  EXPECT_TRUE(file_.IsToBeAsked());
  EXPECT_EQ(file_.Content(), HashOf(content));
}

TEST_F(FetchedFileTest, AWriteWhileItIsReadBeginsAnew) {
  Write(QByteArray(2 * LocalHash::kPiece, 'x'));
  now_ += 1000;
  EXPECT_TRUE(file_.Advance(now_));
  Write("new");
  Wait(500);
  EXPECT_FALSE(file_.IsToBeAsked());
  Wait(500);
  EXPECT_EQ(file_.Content(), HashOf("new"));
}

TEST_F(FetchedFileTest, ARecoveredFileIsAskedAboutWhenItsControllerIsConnected) {
  WriteFile(file_.Path(), "new");
  FetchedFile recovered(folder_, QStringLiteral("1"), file_.Record());
  recovered.Recovered(now_);
  while (recovered.Advance(now_)) {
  }
  EXPECT_TRUE(recovered.IsSettled());
  EXPECT_TRUE(recovered.IsChanged());
  EXPECT_FALSE(recovered.IsToBeAsked());
  recovered.Offer();
  EXPECT_TRUE(recovered.IsToBeAsked());
  EXPECT_TRUE(recovered.IsOffered());
}

TEST_F(FetchedFileTest, ADeclinedFileIsOfferedAgain) {
  Write("new");
  Wait(1000);
  file_.WasAsked(file_.Content());
  file_.Offer();
  EXPECT_TRUE(file_.IsToBeAsked());
  EXPECT_TRUE(file_.IsOffered());
}

TEST_F(FetchedFileTest, AtTheEndOnlyWhatIsTheSameIsRemoved) {
  Write("new");
  EXPECT_FALSE(file_.RemoveUnlessChanged());
  EXPECT_EQ(ContentOf(file_.Path()), "new");
  // Written, and not looked at yet.
  Write("old");
  EXPECT_TRUE(file_.RemoveUnlessChanged());
  EXPECT_EQ(EntriesOf(folder_->Path()), QStringList());
}

TEST_F(FetchedFileTest, LookNowKnowsTheSameContentAtOnce) {
  Write("old");
  EXPECT_TRUE(file_.MayBeChanged());
  file_.LookNow();
  EXPECT_TRUE(file_.IsUntouched());
  Write("new");
  file_.LookNow();
  EXPECT_TRUE(file_.MayBeChanged());
}

TEST_F(FetchedFileTest, ARecordThatCannotBeWrittenIsAFailure) {
  ASSERT_TRUE(QFile::remove(folder_->RecordOf(QStringLiteral("1"))));
  ASSERT_TRUE(QDir().mkpath(folder_->RecordOf(QStringLiteral("1"))));
  EXPECT_THROW(file_.Renew(file_.Record()), RunTimeError);
  // What is on the controller is known all the same.
  Write("new");
  Wait(1000);
  FetchedRecord record = file_.Record();
  record.hash = file_.Content();
  file_.WasPutBack(record);
  EXPECT_TRUE(file_.IsUntouched());
}

}  // namespace
}  // namespace trevane::test
