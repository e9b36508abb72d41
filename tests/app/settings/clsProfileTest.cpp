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

class clsProfileTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    profile_.SetFileName(folder_.filePath(QStringLiteral("settings.ini")));
  }

  void Write(const QByteArray& content) { test::WriteFile(profile_.FileName(), content); }
  QByteArray Content() const { return test::ContentOf(profile_.FileName()); }

  QTemporaryDir folder_;
  clsProfile profile_{QStringLiteral("")};
};

TEST_F(clsProfileTest, DefaultFileIsBesideTheExecutable) {
  const clsProfile profile;
  EXPECT_EQ(profile.FileName(),
            appinfo::ProgramFolder() + appinfo::PathSeparator() + QStringLiteral("profile_test.ini"));
}

TEST_F(clsProfileTest, MissingFileHasNoSectionsAndGivesDefaults) {
  EXPECT_TRUE(profile_.GetSectNames().isEmpty());
  EXPECT_EQ(profile_.GetString(QStringLiteral("Form"), QStringLiteral("Width"), QStringLiteral("d")),
            QStringLiteral("d"));
  EXPECT_EQ(profile_.GetInt(QStringLiteral("Form"), QStringLiteral("Width"), -15), -15);
  EXPECT_FALSE(QFile::exists(profile_.FileName()));
}

TEST_F(clsProfileTest, PresentButEmptyKeyIsEmptyEvenWithADefault) {
  Write("[s]\r\nk=\r\n");
  EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d")),
            QStringLiteral(""));
}

TEST_F(clsProfileTest, ControllerSectionWithoutRootGivesSlash) {
  Write("[Controller1]\r\nControllerName=Cell\r\n");
  EXPECT_EQ(profile_.GetString(QStringLiteral("Controller1"), QStringLiteral("Root"), QStringLiteral("/")),
            QStringLiteral("/"));
}

TEST_F(clsProfileTest, SectionsAreFoundInAnyCaseAndListedAsWritten) {
  Write("[FORM]\r\nWidth=15\r\n[CONTROLLER9]\r\n[controllerX]\r\n");
  EXPECT_EQ(profile_.GetSectNames(), (QStringList{QStringLiteral("FORM"), QStringLiteral("CONTROLLER9"),
                                                  QStringLiteral("controllerX")}));
  EXPECT_EQ(profile_.GetInt(QStringLiteral("Form"), QStringLiteral("width")), 15);
}

TEST_F(clsProfileTest, ValueLongerThanTheBufferIsCut) {
  Write("[s]\r\nfits=" + QByteArray(199998, 'f') + "\r\nlong=" + QByteArray(250000, 'l') + "\r\n");
  EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("fits")).size(), 199998);
  EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("long")), QString(199998, u'l'));
}

TEST_F(clsProfileTest, ValueIsCutBeforeItsFirstNul) {
  Write(QByteArray("[s]\r\nk=a\0b\r\n", 13));
  EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("a"));
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
  EXPECT_EQ(names.last(), QStringLiteral("section"));
}

TEST_F(clsProfileTest, AnEmptySectionNameIsListedAndEndsTheNames) {
  if (test::RunsUnderWine()) {
    GTEST_SKIP() << "Wine finds no section without a name";
  }
  Write("[a]\r\n[]\r\n[b]\r\n[]\r\n");
  const QStringList names = profile_.GetSectNames();
  EXPECT_EQ(names, (QStringList{QStringLiteral("a"), QStringLiteral(""), QStringLiteral("b")}));
  EXPECT_EQ(clsProfile::NamesInUse(names), QStringList{QStringLiteral("a")});
  EXPECT_TRUE(clsProfile::NamesInUse({}).isEmpty());
  EXPECT_EQ(clsProfile::NamesInUse({QStringLiteral("a"), QStringLiteral("b")}).size(), 2);
}

TEST_F(clsProfileTest, WritesAndDeletes) {
  EXPECT_TRUE(
      profile_.WriteString(QStringLiteral("Form"), QStringLiteral("WindowState"), QStringLiteral("2")));
  EXPECT_TRUE(profile_.WriteString(QStringLiteral("Form"), QStringLiteral("Width"), QStringLiteral("9600")));
  EXPECT_TRUE(profile_.WriteString(QStringLiteral("Controller1"), QStringLiteral("ControllerName"),
                                   QStringLiteral("Cell")));
  EXPECT_EQ(Content(), "[Form]\r\nWindowState=2\r\nWidth=9600\r\n[Controller1]\r\nControllerName=Cell\r\n");
  EXPECT_TRUE(profile_.DeleteKey(QStringLiteral("Form"), QStringLiteral("Width")));
  EXPECT_TRUE(profile_.DeleteSection(QStringLiteral("Controller1")));
  EXPECT_EQ(Content(), "[Form]\r\nWindowState=2\r\n");
}

TEST_F(clsProfileTest, NullTextsAreWrittenAsEmptyOnes) {
  if (test::RunsUnderWine()) {
    GTEST_SKIP() << "Wine writes a section without a name elsewhere";
  }
  EXPECT_TRUE(profile_.WriteString(QStringLiteral("s"), QStringLiteral("k"), {}));
  EXPECT_EQ(Content(), "[s]\r\nk=\r\n");
  EXPECT_TRUE(profile_.WriteString(QStringLiteral("s"), {}, QStringLiteral("v")));
  EXPECT_EQ(Content(), "[s]\r\nk=\r\n=v\r\n");
  EXPECT_TRUE(profile_.WriteString({}, QStringLiteral("k"), QStringLiteral("v")));
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
  EXPECT_FALSE(profile_.WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v")));
  EXPECT_FALSE(profile_.DeleteKey(QStringLiteral("s"), QStringLiteral("k")));
  EXPECT_FALSE(profile_.DeleteSection(QStringLiteral("s")));
}

TEST_F(clsProfileTest, AHeldFileIsReadOnceAndWrittenOnce) {
  Write("[s]\r\nk=1\r\n; mine\r\n");
  EXPECT_EQ(profile_.Hold().state, ownfile::State::Read);
  Write("[other]\r\n");
  EXPECT_EQ(profile_.GetSectNames(), QStringList{QStringLiteral("s")});
  EXPECT_EQ(profile_.GetInt(QStringLiteral("S"), QStringLiteral("K")), 1);
  EXPECT_TRUE(profile_.WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2")));
  EXPECT_TRUE(profile_.WriteString(QStringLiteral("s"), QStringLiteral("j"), QStringLiteral("3")));
  EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("2"));
  EXPECT_TRUE(profile_.DeleteKey(QStringLiteral("s"), QStringLiteral("j")));
  EXPECT_EQ(Content(), "[other]\r\n");
  EXPECT_TRUE(profile_.PutInPlace({}));
  EXPECT_EQ(Content(), "[s]\r\nk=2\r\n; mine\r\n");
  profile_.HoldAnew();
  EXPECT_TRUE(profile_.PutInPlace({}));
  EXPECT_EQ(Content(), "");
}

TEST_F(clsProfileTest, HoldingReportsMissingAndUnreadableFiles) {
  EXPECT_EQ(profile_.Hold().state, ownfile::State::Missing);
  EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d")),
            QStringLiteral("d"));
  profile_.SetFileName(folder_.path());
  EXPECT_FALSE(profile_.PutInPlace({})) << "nothing is held of another file";
  EXPECT_EQ(profile_.Hold().state, ownfile::State::Unreadable);
  EXPECT_TRUE(profile_.GetSectNames().isEmpty());
}

TEST_F(clsProfileTest, AQuotedValueIsReadAsItWas) {
  for (const QString& value :
       {QStringLiteral("\"Path=x\""), QStringLiteral("'x'"), QStringLiteral("  m"), QStringLiteral("m "),
        QStringLiteral("\tm"), QStringLiteral("\"\""), QStringLiteral("\"'\""), QStringLiteral(" \"a\" "),
        QStringLiteral("\"a' "), QStringLiteral(" ")}) {
    EXPECT_EQ(clsProfile::Quoted(value), u'"' + value + u'"');
    EXPECT_TRUE(profile_.WriteString(QStringLiteral("s"), QStringLiteral("k"), clsProfile::Quoted(value)));
    EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("k")), value);
  }
  // Any other stays as it is.
  for (const QString& value :
       {QStringLiteral(""), QStringLiteral("\""), QStringLiteral("'"), QStringLiteral("a\"b"),
        QStringLiteral("\"a"), QStringLiteral("a\""), QStringLiteral("\"a'"), QStringLiteral("a b")}) {
    EXPECT_EQ(clsProfile::Quoted(value), value);
    EXPECT_TRUE(profile_.WriteString(QStringLiteral("s"), QStringLiteral("k"), value));
    EXPECT_EQ(profile_.GetString(QStringLiteral("s"), QStringLiteral("k")), value);
  }
}

TEST(clsProfileCutText, ModeZeroCutsBeforeTheFirstNul) {
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("ab\0cd\0"), 0), QStringLiteral("ab"));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("abcd"), 0), QStringLiteral("abcd"));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("\0ab"), 0), QStringLiteral(""));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral(""), 0), QStringLiteral(""));
}

TEST(clsProfileCutText, NegativeModeStripsTheNulsAtTheEnd) {
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("ab\0cd\0\0"), -1), QStringLiteral("ab\0cd"));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("ab"), -5), QStringLiteral("ab"));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("\0\0"), -1), QStringLiteral(""));
}

TEST(clsProfileCutText, PositiveModeKeepsOneCharacterLess) {
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("abcd"), 3), QStringLiteral("ab"));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("abcd"), 1), QStringLiteral(""));
  EXPECT_EQ(clsProfile::CutText(QStringLiteral("abcd"), 100), QStringLiteral("abcd"));
}

}  // namespace
}  // namespace trevane
