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

using test::ContentOf;

constexpr int kSize = 1000;

class CodePage : public testing::Test {
 protected:
  void SetUp() override {
    if (GetACP() != 1252) {
      GTEST_SKIP() << "the characters below are chosen for code page 1252; this is " << GetACP();
    }
    ASSERT_TRUE(folder_.isValid());
    path_ = folder_.filePath(QStringLiteral("settings.ini"));
  }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(CodePage, TextWithACharacterItLacksIsRefusedAndNotWritten) {
  ASSERT_TRUE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("1"), path_));
  const QByteArray before = ContentOf(path_);
  // No character at all, one for which the system has a likeness ("A"), and one beyond 16 bits.
  for (const QString& lost :
       {QStringLiteral("\u4E2D"), QStringLiteral("\u0100"), QStringLiteral("\U0001F600")}) {
    EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"),
                                             QStringLiteral("a") + lost, path_));
    EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), lost, QStringLiteral("2"), path_));
    EXPECT_FALSE(privateprofile::WriteString(lost, QStringLiteral("k"), QStringLiteral("2"), path_));
    // Deleting by a likeness would take another key away.
    EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), lost, {}, path_));
    EXPECT_FALSE(privateprofile::WriteString(lost, {}, {}, path_));
    EXPECT_EQ(ContentOf(path_), before);
  }
}

TEST_F(CodePage, TextThatItHasIsWrittenInItAndReadBack) {
  const QString text = QStringLiteral("Größe €");
  ASSERT_TRUE(privateprofile::WriteString(QStringLiteral("Prüfung"), QStringLiteral("Maß"), text, path_));
  EXPECT_EQ(ContentOf(path_),
            "[Pr\xFC"
            "fung]\r\nMa\xDF=Gr\xF6\xDF"
            "e \x80\r\n");
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("Prüfung"), QStringLiteral("Maß"), {}, kSize, path_),
            text);
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("Prüfung"), QStringLiteral("Maß"), {}, 4, path_),
            QStringLiteral("Grö"));
}

TEST_F(CodePage, NamesThatItLacksAreNotFound) {
  ASSERT_TRUE(
      privateprofile::WriteString(QStringLiteral("A"), QStringLiteral("A"), QStringLiteral("1"), path_));
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("\u0100"), QStringLiteral("A"), QStringLiteral("d"),
                                      kSize, path_),
            QStringLiteral("d"));
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("A"), QStringLiteral("\u0100"), QStringLiteral("d"),
                                      kSize, path_),
            QStringLiteral("d"));
  EXPECT_EQ(privateprofile::GetInt(QStringLiteral("A"), QStringLiteral("\u0100"), 7, path_), 7U);
}

TEST_F(CodePage, DefaultThatItLacksIsAnsweredWhole) {
  ASSERT_TRUE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("1"), path_));
  ASSERT_TRUE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("empty"), QStringLiteral(""), path_));
  const QString fallback = QStringLiteral("\u4E2D\u6587");
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("s"), QStringLiteral("none"),
                                      fallback + QStringLiteral("  "), kSize, path_),
            fallback);
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("s"), QStringLiteral("none"), fallback, 4, path_),
            QStringLiteral("\u4E2D"));
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), fallback, kSize, path_),
            QStringLiteral("1"));
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("s"), QStringLiteral("empty"), fallback, kSize, path_),
            QStringLiteral(""));
}

TEST_F(CodePage, FolderWhoseNameItLacksIsReached) {
  const QString inside = folder_.filePath(QStringLiteral("\u4E2D\u6587"));
  ASSERT_TRUE(QDir().mkdir(inside));
  const QString fresh = inside + QStringLiteral("/settings.ini");
  ASSERT_TRUE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("1"), fresh));
  EXPECT_EQ(ContentOf(fresh), "[s]\r\nk=1\r\n");
  EXPECT_EQ(
      privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d"), kSize, fresh),
      QStringLiteral("1"));
}

TEST_F(CodePage, FileWhoseNameItLacksIsReachedWhenItIsThere) {
  const QString path = folder_.filePath(QStringLiteral("\u4E2D\u6587.ini"));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("1"), path));
  EXPECT_TRUE(QDir(folder_.path()).isEmpty());
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  EXPECT_TRUE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("1"), path));
  EXPECT_EQ(ContentOf(path), "[s]\r\nk=1\r\n");
}

}  // namespace
}  // namespace trevane
