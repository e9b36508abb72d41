#include "app/settings/clsProfile.h"
#include "platform/AppInfo.h"
#include "tests/support/TestFiles.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

class clsProfileTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    profile_.SetFileName(folder_.filePath(u"settings.ini"_s));
  }

  void Write(const QByteArray& content) { test::WriteFile(profile_.FileName(), content); }
  QByteArray Content() const { return test::ContentOf(profile_.FileName()); }

  QTemporaryDir folder_;
  clsProfile profile_{u""_s};
};

TEST_F(clsProfileTest, DefaultFileStandsBesideTheExecutable) {
  const clsProfile profile;
  EXPECT_EQ(profile.FileName(), appinfo::ProgramFolder() + appinfo::PathSeparator() + u"profile_test.ini"_s);
}

TEST_F(clsProfileTest, MissingFileHasNoSectionsAndGivesDefaults) {
  EXPECT_TRUE(profile_.GetSectNames().isEmpty());
  EXPECT_EQ(profile_.GetString(u"Form"_s, u"Width"_s, u"d"_s), u"d"_s);
  EXPECT_EQ(profile_.GetInt(u"Form"_s, u"Width"_s, -15), -15);
  EXPECT_FALSE(QFile::exists(profile_.FileName()));
}

TEST_F(clsProfileTest, PresentButEmptyKeyIsEmptyEvenWithADefault) {
  Write("[s]\r\nk=\r\n");
  EXPECT_EQ(profile_.GetString(u"s"_s, u"k"_s, u"d"_s), u""_s);
}

TEST_F(clsProfileTest, ControllerSectionWithoutRootGivesSlash) {
  Write("[Controller1]\r\nControllerName=Cell\r\n");
  EXPECT_EQ(profile_.GetString(u"Controller1"_s, u"Root"_s, u"/"_s), u"/"_s);
}

TEST_F(clsProfileTest, SectionsAreFoundInAnyCaseAndListedAsWritten) {
  Write("[FORM]\r\nWidth=15\r\n[CONTROLLER9]\r\n[controllerX]\r\n");
  EXPECT_EQ(profile_.GetSectNames(), (QStringList{u"FORM"_s, u"CONTROLLER9"_s, u"controllerX"_s}));
  EXPECT_EQ(profile_.GetInt(u"Form"_s, u"width"_s), 15);
}

TEST_F(clsProfileTest, ValueLongerThanTheBufferIsCut) {
  Write("[s]\r\nfits=" + QByteArray(199998, 'f') + "\r\nlong=" + QByteArray(250000, 'l') + "\r\n");
  EXPECT_EQ(profile_.GetString(u"s"_s, u"fits"_s).size(), 199998);
  EXPECT_EQ(profile_.GetString(u"s"_s, u"long"_s), QString(199998, u'l'));
}

TEST_F(clsProfileTest, ValueIsCutBeforeItsFirstNul) {
  Write(QByteArray("[s]\r\nk=a\0b\r\n", 13));
  EXPECT_EQ(profile_.GetString(u"s"_s, u"k"_s), u"a"_s);
}

TEST_F(clsProfileTest, ListOfSectionsThatDoesNotFitIsCut) {
  QByteArray content;
  for (int i = 0; i < 30000; ++i) {
    content += "[section" + QByteArray::number(i).rightJustified(6, '0') + "]\n";
  }
  Write(content);
  const QStringList names = profile_.GetSectNames();
  // 199997 characters: 14285 names of 14 with their NULs, and seven characters of the next.
  EXPECT_EQ(names.size(), 14286);
  EXPECT_EQ(names.last(), u"section"_s);
}

TEST_F(clsProfileTest, EmptyNameAmongTheSectionsIsListedAndEndsTheNamesInUse) {
  if (test::RunsUnderWine())
    GTEST_SKIP() << "Wine finds no section without a name";
  Write("[a]\r\n[]\r\n[b]\r\n[]\r\n");
  const QStringList names = profile_.GetSectNames();
  EXPECT_EQ(names, (QStringList{u"a"_s, u""_s, u"b"_s}));
  EXPECT_EQ(clsProfile::NamesInUse(names), QStringList{u"a"_s});
  EXPECT_TRUE(clsProfile::NamesInUse({}).isEmpty());
  EXPECT_EQ(clsProfile::NamesInUse({u"a"_s, u"b"_s}).size(), 2);
}

TEST_F(clsProfileTest, WritesAndDeletes) {
  EXPECT_TRUE(profile_.WriteString(u"Form"_s, u"WindowState"_s, u"2"_s));
  EXPECT_TRUE(profile_.WriteString(u"Form"_s, u"Width"_s, u"9600"_s));
  EXPECT_TRUE(profile_.WriteString(u"Controller1"_s, u"ControllerName"_s, u"Cell"_s));
  EXPECT_EQ(Content(), "[Form]\r\nWindowState=2\r\nWidth=9600\r\n[Controller1]\r\nControllerName=Cell\r\n");
  EXPECT_TRUE(profile_.DeleteKey(u"Form"_s, u"Width"_s));
  EXPECT_TRUE(profile_.DeleteSection(u"Controller1"_s));
  EXPECT_EQ(Content(), "[Form]\r\nWindowState=2\r\n");
}

TEST_F(clsProfileTest, NullTextsAreWrittenAsEmptyOnes) {
  if (test::RunsUnderWine())
    GTEST_SKIP() << "Wine writes a section without a name elsewhere";
  EXPECT_TRUE(profile_.WriteString(u"s"_s, u"k"_s, {}));
  EXPECT_EQ(Content(), "[s]\r\nk=\r\n");
  EXPECT_TRUE(profile_.WriteString(u"s"_s, {}, u"v"_s));
  EXPECT_EQ(Content(), "[s]\r\nk=\r\n=v\r\n");
  EXPECT_TRUE(profile_.WriteString({}, u"k"_s, u"v"_s));
  EXPECT_EQ(Content(), "[s]\r\nk=\r\n=v\r\n[]\r\nk=v\r\n");
}

TEST_F(clsProfileTest, FlushAndReleaseMakeNoFile) {
  {
    clsProfile profile(profile_.FileName());
    profile.Flush();
  }
  EXPECT_FALSE(QFile::exists(profile_.FileName()));
}

TEST_F(clsProfileTest, WriteIntoAReadOnlyFileIsFalse) {
  Write("[s]\r\n");
  ASSERT_TRUE(QFile::setPermissions(profile_.FileName(), QFile::ReadOwner));
  EXPECT_FALSE(profile_.WriteString(u"s"_s, u"k"_s, u"v"_s));
  EXPECT_FALSE(profile_.DeleteKey(u"s"_s, u"k"_s));
  EXPECT_FALSE(profile_.DeleteSection(u"s"_s));
}

TEST_F(clsProfileTest, AHeldFileIsReadOnceAndWrittenOnce) {
  Write("[s]\r\nk=1\r\n; mine\r\n");
  EXPECT_EQ(profile_.Hold().state, ownfile::State::Read);
  Write("[other]\r\n");
  EXPECT_EQ(profile_.GetSectNames(), QStringList{u"s"_s});
  EXPECT_EQ(profile_.GetInt(u"S"_s, u"K"_s), 1);
  EXPECT_TRUE(profile_.WriteString(u"s"_s, u"k"_s, u"2"_s));
  EXPECT_TRUE(profile_.WriteString(u"s"_s, u"j"_s, u"3"_s));
  EXPECT_EQ(profile_.GetString(u"s"_s, u"k"_s), u"2"_s);
  EXPECT_TRUE(profile_.DeleteKey(u"s"_s, u"j"_s));
  EXPECT_EQ(Content(), "[other]\r\n");
  EXPECT_TRUE(profile_.PutInPlace({}));
  EXPECT_EQ(Content(), "[s]\r\nk=2\r\n; mine\r\n");
  profile_.HoldAnew();
  EXPECT_TRUE(profile_.PutInPlace({}));
  EXPECT_EQ(Content(), "");
}

TEST_F(clsProfileTest, HoldingTellsAMissingFileFromOneThatCannotBeRead) {
  EXPECT_EQ(profile_.Hold().state, ownfile::State::Missing);
  EXPECT_EQ(profile_.GetString(u"s"_s, u"k"_s, u"d"_s), u"d"_s);
  profile_.SetFileName(folder_.path());
  EXPECT_FALSE(profile_.PutInPlace({})) << "nothing is held of another file";
  EXPECT_EQ(profile_.Hold().state, ownfile::State::Unreadable);
  EXPECT_TRUE(profile_.GetSectNames().isEmpty());
}

TEST_F(clsProfileTest, AQuotedValueIsReadAsItWas) {
  for (const QString& value : {u"\"Path=x\""_s, u"'x'"_s, u"  m"_s, u"m "_s, u"\tm"_s, u"\"\""_s, u"\"'\""_s,
                               u" \"a\" "_s, u"\"a' "_s, u" "_s}) {
    EXPECT_EQ(clsProfile::Quoted(value), u'"' + value + u'"');
    EXPECT_TRUE(profile_.WriteString(u"s"_s, u"k"_s, clsProfile::Quoted(value)));
    EXPECT_EQ(profile_.GetString(u"s"_s, u"k"_s), value);
  }
  // Any other stays as it is.
  for (const QString& value : {u""_s, u"\""_s, u"'"_s, u"a\"b"_s, u"\"a"_s, u"a\""_s, u"\"a'"_s, u"a b"_s}) {
    EXPECT_EQ(clsProfile::Quoted(value), value);
    EXPECT_TRUE(profile_.WriteString(u"s"_s, u"k"_s, value));
    EXPECT_EQ(profile_.GetString(u"s"_s, u"k"_s), value);
  }
}

TEST(clsProfileCutText, ModeZeroCutsBeforeTheFirstNul) {
  EXPECT_EQ(clsProfile::CutText(u"ab\0cd\0"_s, 0), u"ab"_s);
  EXPECT_EQ(clsProfile::CutText(u"abcd"_s, 0), u"abcd"_s);
  EXPECT_EQ(clsProfile::CutText(u"\0ab"_s, 0), u""_s);
  EXPECT_EQ(clsProfile::CutText(u""_s, 0), u""_s);
}

TEST(clsProfileCutText, NegativeModeStripsTheNulsAtTheEnd) {
  EXPECT_EQ(clsProfile::CutText(u"ab\0cd\0\0"_s, -1), u"ab\0cd"_s);
  EXPECT_EQ(clsProfile::CutText(u"ab"_s, -5), u"ab"_s);
  EXPECT_EQ(clsProfile::CutText(u"\0\0"_s, -1), u""_s);
}

TEST(clsProfileCutText, PositiveModeKeepsOneCharacterLess) {
  EXPECT_EQ(clsProfile::CutText(u"abcd"_s, 3), u"ab"_s);
  EXPECT_EQ(clsProfile::CutText(u"abcd"_s, 1), u""_s);
  EXPECT_EQ(clsProfile::CutText(u"abcd"_s, 100), u"abcd"_s);
}

}  // namespace
}  // namespace trevane
