// Built without the program's manifest: here the ANSI calls take the system's own code page, as they do for
// the program on a system that does not honour it.

#include "platform/PrivateProfile.h"
#include "platform/windows/WindowsText.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <windows.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;
using test::ContentOf;

constexpr int kSize = 1000;

class CodePage : public testing::Test {
 protected:
  void SetUp() override {
    if (GetACP() != 1252)
      GTEST_SKIP() << "the characters below are chosen for code page 1252; this is " << GetACP();
    ASSERT_TRUE(folder_.isValid());
    path_ = folder_.filePath(u"settings.ini"_s);
  }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(CodePage, TextWithACharacterItLacksIsRefusedAndNotWritten) {
  ASSERT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, u"1"_s, path_));
  const QByteArray before = ContentOf(path_);
  // No character at all, one for which the system has a likeness ("A"), and one beyond 16 bits.
  for (const QString& lost : {u"\u4E2D"_s, u"\u0100"_s, u"\U0001F600"_s}) {
    EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"a"_s + lost, path_));
    EXPECT_FALSE(privateprofile::WriteString(u"s"_s, lost, u"2"_s, path_));
    EXPECT_FALSE(privateprofile::WriteString(lost, u"k"_s, u"2"_s, path_));
    // Deleting by a likeness would take another key away.
    EXPECT_FALSE(privateprofile::WriteString(u"s"_s, lost, {}, path_));
    EXPECT_FALSE(privateprofile::WriteString(lost, {}, {}, path_));
    EXPECT_EQ(ContentOf(path_), before);
  }
}

TEST_F(CodePage, TextThatItHasIsWrittenInItAndReadBack) {
  const QString text = u"Größe €"_s;
  ASSERT_TRUE(privateprofile::WriteString(u"Prüfung"_s, u"Maß"_s, text, path_));
  EXPECT_EQ(ContentOf(path_),
            "[Pr\xFC"
            "fung]\r\nMa\xDF=Gr\xF6\xDF"
            "e \x80\r\n");
  EXPECT_EQ(privateprofile::GetString(u"Prüfung"_s, u"Maß"_s, {}, kSize, path_), text);
  EXPECT_EQ(privateprofile::GetString(u"Prüfung"_s, u"Maß"_s, {}, 4, path_), u"Grö"_s);
}

TEST_F(CodePage, NamesThatItLacksAreNotFound) {
  ASSERT_TRUE(privateprofile::WriteString(u"A"_s, u"A"_s, u"1"_s, path_));
  EXPECT_EQ(privateprofile::GetString(u"\u0100"_s, u"A"_s, u"d"_s, kSize, path_), u"d"_s);
  EXPECT_EQ(privateprofile::GetString(u"A"_s, u"\u0100"_s, u"d"_s, kSize, path_), u"d"_s);
  EXPECT_EQ(privateprofile::GetInt(u"A"_s, u"\u0100"_s, 7, path_), 7U);
}

TEST_F(CodePage, DefaultThatItLacksIsAnsweredWhole) {
  ASSERT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, u"1"_s, path_));
  ASSERT_TRUE(privateprofile::WriteString(u"s"_s, u"empty"_s, u""_s, path_));
  const QString fallback = u"\u4E2D\u6587"_s;
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"none"_s, fallback + u"  "_s, kSize, path_), fallback);
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"none"_s, fallback, 4, path_), u"\u4E2D"_s);
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"k"_s, fallback, kSize, path_), u"1"_s);
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"empty"_s, fallback, kSize, path_), u""_s);
}

TEST_F(CodePage, FolderWhoseNameItLacksIsReached) {
  const QString inside = folder_.filePath(u"\u4E2D\u6587"_s);
  ASSERT_TRUE(QDir().mkdir(inside));
  const QString fresh = inside + u"/settings.ini"_s;
  ASSERT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, u"1"_s, fresh));
  EXPECT_EQ(ContentOf(fresh), "[s]\r\nk=1\r\n");
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"k"_s, u"d"_s, kSize, fresh), u"1"_s);
}

TEST_F(CodePage, FileWhoseNameItLacksIsReachedWhenItIsThere) {
  const QString path = folder_.filePath(u"\u4E2D\u6587.ini"_s);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"1"_s, path));
  EXPECT_TRUE(QDir(folder_.path()).isEmpty());
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  EXPECT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, u"1"_s, path));
  EXPECT_EQ(ContentOf(path), "[s]\r\nk=1\r\n");
}

}  // namespace
}  // namespace trevane
