#include "platform/OwnFile.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using test::ContentOf;
using test::EntriesOf;
using test::WriteFile;

class OwnFileTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    path_ = In(QStringLiteral("file"));
  }
  [[nodiscard]] QString In(const QString& name) const { return folder_.filePath(name); }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(OwnFileTest, IsReadAsItIsWritten) {
  EXPECT_EQ(ownfile::Read(path_).state, ownfile::State::Missing);
  for (const QByteArray& bytes : {QByteArray("one\r\n\0two", 9), QByteArray(), QByteArray(300000, 'x')}) {
    EXPECT_TRUE(ownfile::Replace(path_, bytes));
    EXPECT_EQ(ContentOf(path_), bytes);
    const ownfile::Content read = ownfile::Read(path_);
    EXPECT_EQ(read.state, ownfile::State::Read);
    EXPECT_EQ(read.bytes, bytes);
    EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("file")});
  }
}

TEST_F(OwnFileTest, LargerThanTheLimitIsUnreadable) {
  QFile file(path_);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_TRUE(file.resize(ownfile::kLargestFile));
  EXPECT_EQ(ownfile::Read(path_).bytes.size(), ownfile::kLargestFile);
  ASSERT_TRUE(file.resize(ownfile::kLargestFile + 1));
  EXPECT_EQ(ownfile::Read(path_).state, ownfile::State::Unreadable);
  EXPECT_TRUE(ownfile::Read(path_).bytes.isEmpty());
}

TEST_F(OwnFileTest, FolderIsNeitherReadNorReplaced) {
  ASSERT_TRUE(QDir().mkdir(path_));
  EXPECT_EQ(ownfile::Read(path_).state, ownfile::State::Unreadable);
  EXPECT_FALSE(ownfile::IsWritable(path_));
  EXPECT_FALSE(ownfile::Replace(path_, "new"));
  EXPECT_TRUE(QFileInfo(path_).isDir());
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("file")});
}

TEST_F(OwnFileTest, NamesThatNoFileHasAreRefused) {
  for (const QString& path :
       {QString(), In(QStringLiteral("none/file")), path_ + QChar(u'\0') + QStringLiteral(".old")}) {
    EXPECT_NE(ownfile::Read(path).state, ownfile::State::Read);
    EXPECT_FALSE(ownfile::Exists(path));
    EXPECT_FALSE(ownfile::IsWritable(path));
    EXPECT_FALSE(ownfile::Replace(path, "new"));
  }
  EXPECT_TRUE(EntriesOf(folder_.path()).isEmpty());
}

TEST_F(OwnFileTest, ReadOnlyFileIsNotReplaced) {
  WriteFile(path_, "old");
  ASSERT_TRUE(QFile::setPermissions(path_, QFile::ReadOwner));
  EXPECT_FALSE(ownfile::IsWritable(path_));
  EXPECT_FALSE(ownfile::Replace(path_, "new", {.inPlaceInClosedFolder = true}));
  EXPECT_EQ(ContentOf(path_), "old");
}

TEST_F(OwnFileTest, FirstFolderThatIsNoneIsPassedOver) {
  EXPECT_TRUE(ownfile::Replace(path_, "a", {.firstFolder = In(QStringLiteral("none"))}));
  EXPECT_EQ(ContentOf(path_), "a");
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("first")));
  EXPECT_TRUE(ownfile::Replace(path_, "b", {.firstFolder = In(QStringLiteral("first"))}));
  EXPECT_EQ(ContentOf(path_), "b");
  EXPECT_TRUE(QDir(In(QStringLiteral("first"))).isEmpty());
  EXPECT_EQ(EntriesOf(folder_.path()), (QStringList{QStringLiteral("file"), QStringLiteral("first")}));
}

TEST_F(OwnFileTest, IsMovedOverAnother) {
  WriteFile(path_, "new");
  WriteFile(In(QStringLiteral("other")), "old");
  EXPECT_TRUE(ownfile::MoveOver(path_, In(QStringLiteral("other"))));
  EXPECT_EQ(ContentOf(In(QStringLiteral("other"))), "new");
  EXPECT_FALSE(ownfile::MoveOver(path_, In(QStringLiteral("other"))));
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("other")});
}

TEST_F(OwnFileTest, FoldersAreMadeWithThoseAbove) {
  EXPECT_TRUE(ownfile::MakePrivateFolder(In(QStringLiteral("a/b/c"))));
  EXPECT_TRUE(ownfile::MakePrivateFolder(In(QStringLiteral("a/b/c"))));
  EXPECT_TRUE(QFileInfo(In(QStringLiteral("a/b/c"))).isDir());
  WriteFile(path_, "");
  EXPECT_FALSE(ownfile::MakePrivateFolder(In(QStringLiteral("file/b"))));
  EXPECT_FALSE(ownfile::MakePrivateFolder({}));
}

TEST_F(OwnFileTest, AppendsToWhatIsThere) {
  for (const char* line : {"one\n", "two\n"}) {
    QFile file;
    ASSERT_TRUE(ownfile::OpenForAppending(file, path_));
    EXPECT_EQ(file.write(line), 4);
  }
  EXPECT_EQ(ContentOf(path_), "one\ntwo\n");
  QFile file;
  EXPECT_FALSE(ownfile::OpenForAppending(file, folder_.path()));
  EXPECT_FALSE(ownfile::OpenForAppending(file, In(QStringLiteral("none/log"))));
}

}  // namespace
}  // namespace trevane
