// Files of earlier programs are in the system's own ANSI code page, and this program's manifest asks for
// UTF-8.

#include "app/settings/SettingsPlace.h"
#include "app/settings/clsProfile.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <windows.h>

namespace trevane {
namespace {

using test::ContentOf;

class OldEncodingTest : public testing::Test {
 protected:
  void SetUp() override {
    DWORD codePage = 0;
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<wchar_t*>(&codePage), sizeof codePage / sizeof(wchar_t));
    if (codePage != 1252) {
      GTEST_SKIP() << "the bytes below are chosen for code page 1252; this is " << codePage;
    }
    ASSERT_EQ(GetACP(), static_cast<UINT>(CP_UTF8));
    ASSERT_TRUE(folder_.isValid());
    path_ = folder_.filePath(QStringLiteral("cell.fmg"));
  }

  void Write(const QByteArray& content) { test::WriteFile(path_, content); }
  /// As the program saves: what was read is written anew.
  void ReadAndSave() {
    clsProfile read(path_);
    ASSERT_EQ(read.Hold().state, ownfile::State::Read);
    const QString name =
        read.GetString(QStringLiteral("Pr\u00FCf"), QStringLiteral("CtrlName"), QStringLiteral("none"));
    EXPECT_EQ(name, QStringLiteral("Pr\u00FCf\u20AC"));
    clsProfile written(path_);
    written.HoldAnew();
    ASSERT_TRUE(written.WriteString(QStringLiteral("Pr\u00FCf"), QStringLiteral("CtrlName"), name));
    ASSERT_TRUE(written.PutInPlace({}));
  }

  QTemporaryDir folder_;
  QString path_;
  const QByteArray old_ =
      "[Pr\xFC"
      "f]\r\nCtrlName=Pr\xFC"
      "f\x80\r\n";
};

TEST_F(OldEncodingTest, ItIsReadRightAndKeptBesideWhenItIsReplaced) {
  Write(old_);
  ReadAndSave();
  EXPECT_EQ(ContentOf(path_), QByteArray("[Pr\xC3\xBC"
                                         "f]\r\nCtrlName=Pr\xC3\xBC"
                                         "f\xE2\x82\xAC\r\n"));
  EXPECT_EQ(ContentOf(path_ + QStringLiteral(".old")), old_);
  // Once converted it is as any other.
  ReadAndSave();
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files),
            QStringList({QStringLiteral("cell.fmg"), QStringLiteral("cell.fmg.old")}));
}

TEST_F(OldEncodingTest, WhatIsKeptTakesNoOtherFilesPlace) {
  Write(old_);
  ASSERT_TRUE(QFile::rename(path_, path_ + QStringLiteral(".old")));
  Write(old_ + "; changed\r\n");
  ReadAndSave();
  EXPECT_EQ(ContentOf(path_ + QStringLiteral(".old")), old_);
  EXPECT_EQ(ContentOf(path_ + QStringLiteral(".old2")), old_ + "; changed\r\n");
}

TEST_F(OldEncodingTest, PuttingAFileAwayReplacesNoKeptFile) {
  test::WriteFile(path_ + QStringLiteral(".old"), old_);
  Write("[unreadable");
  EXPECT_TRUE(SettingsPlace(path_, {}).PutAway(path_));
  EXPECT_EQ(ContentOf(path_ + QStringLiteral(".old")), old_);
  EXPECT_EQ(ContentOf(path_ + QStringLiteral(".old2")), QByteArray("[unreadable"));
  // A file that was put away before is replaced by the newer one.
  Write("[again");
  EXPECT_TRUE(SettingsPlace(path_, {}).PutAway(path_));
  EXPECT_EQ(ContentOf(path_ + QStringLiteral(".old2")), QByteArray("[again"));
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files),
            QStringList({QStringLiteral("cell.fmg.old"), QStringLiteral("cell.fmg.old2")}));
}

}  // namespace
}  // namespace trevane
