#include "base/RunTimeError.h"
#include "engine/fetched/FetchedFolder.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

class FetchedFolderTest : public testing::Test {
 protected:
  [[nodiscard]] QString Place() const { return temporary_.filePath(QStringLiteral("user/fetched")); }
  [[nodiscard]] QStringList Entries() const { return EntriesOf(Place()); }

  QTemporaryDir temporary_;
};

TEST_F(FetchedFolderTest, ANewOneIsForThisUserAlone) {
  const auto folder = FetchedFolder::Make(Place());
  EXPECT_TRUE(QFileInfo(folder->Path()).isDir());
  EXPECT_GE(QFileInfo(folder->Path()).fileName().size(), 36);
#ifndef Q_OS_WIN
  constexpr QFileDevice::Permissions kOthers = QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                               QFileDevice::ExeGroup | QFileDevice::ReadOther |
                                               QFileDevice::WriteOther | QFileDevice::ExeOther;
  EXPECT_FALSE(QFileInfo(folder->Path()).permissions() & kOthers);
  EXPECT_FALSE(QFileInfo(Place()).permissions() & kOthers);
#endif
}

TEST_F(FetchedFolderTest, TwoRunningProgramsHaveTwo) {
  const auto one = FetchedFolder::Make(Place());
  const auto two = FetchedFolder::Make(Place());
  EXPECT_NE(one->Path(), two->Path());
  EXPECT_TRUE(FetchedFolder::TakeAbandoned(Place()).empty());
}

TEST_F(FetchedFolderTest, OneThatNobodyHoldsIsTakenByOne) {
  QString path;
  {
    const auto crashed = FetchedFolder::Make(Place());
    path = crashed->Path();
    WriteFile(crashed->FolderOf(QStringLiteral("1")) + QStringLiteral("/f"), "x");
  }
  const auto taken = FetchedFolder::TakeAbandoned(Place());
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken.front()->Path(), path);
  EXPECT_EQ(taken.front()->Items(), QStringList{QStringLiteral("1")});
  EXPECT_TRUE(FetchedFolder::TakeAbandoned(Place()).empty());
}

TEST_F(FetchedFolderTest, OneWithoutALockIsTaken) {
  ASSERT_TRUE(QDir().mkpath(Place() + QStringLiteral("/run-1")));
  EXPECT_EQ(FetchedFolder::TakeAbandoned(Place()).size(), 1U);
}

TEST_F(FetchedFolderTest, ALockAloneIsRemoved) {
  WriteFile(Place() + QStringLiteral("/run-1.lock"), "");
  EXPECT_TRUE(FetchedFolder::TakeAbandoned(Place()).empty());
  EXPECT_EQ(Entries(), QStringList());
}

TEST_F(FetchedFolderTest, WhatIsNoFolderOfAProgramIsLeftAlone) {
  WriteFile(Place() + QStringLiteral("/notes.txt"), "");
  WriteFile(Place() + QStringLiteral("/running/x"), "");
  EXPECT_TRUE(FetchedFolder::TakeAbandoned(Place()).empty());
  EXPECT_EQ(Entries(), (QStringList{QStringLiteral("notes.txt"), QStringLiteral("running")}));
}

TEST_F(FetchedFolderTest, AnEmptyOneIsRemovedWithItsLock) {
  auto folder = FetchedFolder::Make(Place());
  WriteFile(folder->FolderOf(QStringLiteral("1")) + QStringLiteral("/f"), "x");
  EXPECT_FALSE(folder->RemoveIfEmpty());
  EXPECT_TRUE(folder->RemoveItem(QStringLiteral("1"), QStringLiteral("f")));
  EXPECT_TRUE(folder->RemoveIfEmpty());
  folder.reset();
  EXPECT_EQ(Entries(), QStringList());
}

TEST_F(FetchedFolderTest, AFileGoesWithTheCopiesOfEditors) {
  const auto folder = FetchedFolder::Make(Place());
  const QString item = folder->NewItem();
  for (const char* name : {"f.txt", "f.txt~", "f.txt.bak"}) {
    WriteFile(folder->FolderOf(item) + u'/' + QString::fromLatin1(name), "x");
  }
  WriteFile(folder->RecordOf(item), "record");
  WriteFile(folder->PartOf(item), "part");
  EXPECT_TRUE(folder->RemoveItem(item, QStringLiteral("f.txt")));
  EXPECT_EQ(EntriesOf(folder->Path()), QStringList());
}

TEST_F(FetchedFolderTest, AFileWithUnsavedEditsOrALockBesideItStays) {
  for (const char* sign : {".f.txt.swp", ".f.txt.swo", ".f.txt.swn", "#f.txt#", ".#f.txt", "~$f.txt", "~$txt",
                           ".~lock.f.txt#", ".f.txt.kate-swp", "f.txt.save"}) {
    const auto folder = FetchedFolder::Make(Place());
    const QString item = folder->NewItem();
    const QString beside = QString::fromLatin1(sign);
    WriteFile(folder->FolderOf(item) + QStringLiteral("/f.txt"), "x");
    WriteFile(folder->FolderOf(item) + QStringLiteral("/f.txt~"), "older");
    WriteFile(folder->FolderOf(item) + u'/' + beside, "edits");
    WriteFile(folder->RecordOf(item), "record");
    EXPECT_EQ(folder->Beside(item, QStringLiteral("f.txt")), QStringList{beside});
    EXPECT_FALSE(folder->RemoveItem(item, QStringLiteral("f.txt"))) << sign;
    EXPECT_EQ(ContentOf(folder->FolderOf(item) + QStringLiteral("/f.txt")), "x");
    EXPECT_EQ(ContentOf(folder->FolderOf(item) + u'/' + beside), "edits");
    EXPECT_TRUE(QFile::exists(folder->RecordOf(item)));
  }
}

#ifndef Q_OS_WIN
TEST_F(FetchedFolderTest, ALockThatIsALinkToNothingIsSeen) {
  const auto folder = FetchedFolder::Make(Place());
  const QString item = folder->NewItem();
  WriteFile(folder->FolderOf(item) + QStringLiteral("/f.txt"), "x");
  ASSERT_TRUE(
      QFile::link(QStringLiteral("user@machine.42"), folder->FolderOf(item) + QStringLiteral("/.#f.txt")));
  EXPECT_FALSE(folder->RemoveItem(item, QStringLiteral("f.txt")));
  EXPECT_TRUE(QFile::exists(folder->FolderOf(item) + QStringLiteral("/f.txt")));
}
#endif

TEST_F(FetchedFolderTest, AnotherFileInItStays) {
  const auto folder = FetchedFolder::Make(Place());
  const QString item = folder->NewItem();
  WriteFile(folder->FolderOf(item) + QStringLiteral("/f.txt"), "x");
  WriteFile(folder->FolderOf(item) + QStringLiteral("/mine.txt"), "x");
  WriteFile(folder->RecordOf(item), "record");
  EXPECT_FALSE(folder->RemoveItem(item, QStringLiteral("f.txt")));
  EXPECT_EQ(EntriesOf(folder->FolderOf(item)),
            (QStringList{QStringLiteral("f.txt"), QStringLiteral("mine.txt")}));
  EXPECT_TRUE(QFile::exists(folder->RecordOf(item)));
}

TEST_F(FetchedFolderTest, APlaceThatCannotBeMadeIsAFailure) {
  WriteFile(temporary_.filePath(QStringLiteral("user")), "a file");
  EXPECT_THROW(static_cast<void>(FetchedFolder::Make(Place())), RunTimeError);
}

}  // namespace
}  // namespace trevane::test
