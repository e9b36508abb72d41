#include "app/settings/SettingsPlace.h"
#include "app/settings/TrustFiles.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using test::ContentOf;
using test::WriteFile;

class SettingsPlaceTest : public testing::Test {
 protected:
  [[nodiscard]] QString Beside() const { return beside_.filePath(QStringLiteral("Trevane.ini")); }
  [[nodiscard]] QString Own() const { return own_.filePath(QStringLiteral("below/Trevane.ini")); }
  [[nodiscard]] SettingsPlace Place() const { return {Beside(), Own()}; }

  QTemporaryDir beside_;
  QTemporaryDir own_;
};

TEST_F(SettingsPlaceTest, TheFileBesideTheProgramIsUsedWhereItCanBeWritten) {
  WriteFile(Own(), "own");
  EXPECT_EQ(Place().ToRead(), Beside());
  EXPECT_EQ(Place().ToWrite(), Beside());
  WriteFile(Beside(), "beside");
  EXPECT_EQ(Place().ToRead(), Beside());
  EXPECT_EQ(Place().ToWrite(), Beside());
}

TEST_F(SettingsPlaceTest, AReadOnlyFileIsReadUntilTheUserHasOne) {
  WriteFile(Beside(), "beside");
  ASSERT_TRUE(QFile::setPermissions(Beside(), QFile::ReadOwner));
  EXPECT_EQ(Place().ToRead(), Beside());
  EXPECT_EQ(Place().ToWrite(), Own());
  WriteFile(Own(), "own");
  EXPECT_EQ(Place().ToRead(), Own());
  EXPECT_EQ(Place().ToWrite(), Own());
}

TEST_F(SettingsPlaceTest, TrustedCertificatesStandBesideIt) {
  const QString beside = Beside() + QStringLiteral(".trust");
  const QString own = Own() + QStringLiteral(".trust");
  EXPECT_EQ(TrustFiles(Beside(), Own()), (QStringList{beside, own}));
  EXPECT_EQ(TrustFiles(Beside(), QString()), QStringList{beside});
  // What was trusted before the file was closed still is.
  WriteFile(beside, "cell4:21");
  ASSERT_TRUE(QFile::setPermissions(beside, QFile::ReadOwner));
  EXPECT_EQ(TrustFiles(Beside(), Own()), (QStringList{own, beside}));
  EXPECT_EQ(TrustFiles(Beside(), QString()), QStringList{beside});
}

TEST_F(SettingsPlaceTest, WithoutAPlaceOfTheUsersThereIsOnlyTheOther) {
  ASSERT_TRUE(QDir().mkdir(Beside()));
  const SettingsPlace place(Beside(), {});
  EXPECT_EQ(place.ToRead(), Beside());
  EXPECT_EQ(place.ToWrite(), Beside());
}

TEST_F(SettingsPlaceTest, AFileThatIsPutAwayIsRenamed) {
  EXPECT_TRUE(Place().PutAway(Beside())) << "nothing is there";
  WriteFile(Beside(), "first");
  EXPECT_TRUE(Place().PutAway(Beside()));
  EXPECT_EQ(ContentOf(Beside() + QStringLiteral(".old")), "first");
  EXPECT_FALSE(QFile::exists(Beside()));
  WriteFile(Beside(), "second");
  EXPECT_TRUE(Place().PutAway(Beside()));
  EXPECT_EQ(ContentOf(Beside() + QStringLiteral(".old")), "second");
  ASSERT_TRUE(QDir().mkdir(Beside()));
  EXPECT_TRUE(Place().PutAway(Beside()));
  EXPECT_EQ(ContentOf(Beside() + QStringLiteral(".old")), "second");
  EXPECT_TRUE(QFileInfo(Beside() + QStringLiteral(".old2")).isDir());
}

#ifdef Q_OS_LINUX
TEST_F(SettingsPlaceTest, AReadOnlyFolderIsUsedOnlyForAnExistingFile) {
  ASSERT_TRUE(QFile::setPermissions(beside_.path(), QFile::ReadOwner | QFile::ExeOwner));
  EXPECT_EQ(Place().ToWrite(), Own());
  EXPECT_EQ(Place().ToRead(), Beside()) << "nothing is there, and nothing is read";
  ASSERT_TRUE(QFile::setPermissions(beside_.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  WriteFile(Beside(), "beside");
  ASSERT_TRUE(QFile::setPermissions(beside_.path(), QFile::ReadOwner | QFile::ExeOwner));
  EXPECT_EQ(Place().ToWrite(), Beside());
  EXPECT_EQ(Place().ToRead(), Beside());
  ASSERT_TRUE(QFile::setPermissions(beside_.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}
#endif

}  // namespace
}  // namespace trevane
