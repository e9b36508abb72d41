// The volume that these fill is mounted by test.sh, where it may.

#include "platform/OwnFile.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using test::ContentOf;

class FullDiskTest : public testing::Test {
 protected:
  void SetUp() override {
    const QString disk = qEnvironmentVariable("TREVANE_SMALL_DISK");
    if (disk.isEmpty()) {
      GTEST_SKIP() << "no small disk here";
    }
    folder_ = disk + QStringLiteral("/full");
    ASSERT_TRUE(QDir().mkpath(folder_));
    path_ = folder_ + QStringLiteral("/settings.ini");
  }
  void TearDown() override {
    if (!folder_.isEmpty()) {
      QDir(folder_).removeRecursively();
    }
  }
  /// To the last byte, in a file of its own.
  void Fill() const {
    QFile file(folder_ + QStringLiteral("/filling"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    for (int size = 4096; size > 0; size /= 2) {
      while (file.write(QByteArray(size, 'f')) == size) {
      }
    }
  }

  QString folder_;
  QString path_;
};

TEST_F(FullDiskTest, AFileThatCannotBeReplacedStaysAsItIs) {
  ASSERT_TRUE(ownfile::Replace(path_, "old"));
  Fill();
  const ownfile::Outcome outcome = ownfile::Replace(path_, QByteArray(10000, 'n'));
  EXPECT_FALSE(outcome.done);
  EXPECT_FALSE(outcome.reason.isEmpty());
  EXPECT_EQ(ContentOf(path_), QByteArray("old"));
  EXPECT_EQ(QDir(folder_).entryList(QDir::Files),
            QStringList({QStringLiteral("filling"), QStringLiteral("settings.ini")}));
}

TEST_F(FullDiskTest, ANewFileThatDoesNotFitIsNotMade) {
  Fill();
  EXPECT_FALSE(ownfile::Replace(path_, QByteArray(10000, 'n')));
  EXPECT_EQ(QDir(folder_).entryList(QDir::Files), QStringList{QStringLiteral("filling")});
}

}  // namespace
}  // namespace trevane
