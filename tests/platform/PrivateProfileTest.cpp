#include "platform/PrivateProfile.h"
#include "tests/support/TestFiles.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

constexpr int kSize = 199999;

class PrivateProfileTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    path_ = folder_.filePath(u"settings.ini"_s);
  }

  void Write(const QByteArray& content) { test::WriteFile(path_, content); }
  QByteArray Content() const { return test::ContentOf(path_); }
  // The lines that begin with a semicolon.
  static QByteArrayList Comments(QByteArray content) {
    QByteArrayList comments;
    for (const QByteArray& line : content.replace('\r', '\n').split('\n')) {
      if (line.trimmed().startsWith(';')) {
        comments += line;
      }
    }
    return comments;
  }
  QString Get(const QString& section, const QString& key, int size = kSize) const {
    return privateprofile::GetString(section, key, u"default"_s, size, path_);
  }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(PrivateProfileTest, ValueIsCutToTheSizeLessOne) {
  Write("[s]\r\nk=val1\r\n");
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 5), u"val1"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 4), u"val"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 1), u""_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 0), u""_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, -1), u""_s);
}

TEST_F(PrivateProfileTest, DefaultIsCutLikeAValue) {
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 4), u"def"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 0), u""_s);
}

TEST_F(PrivateProfileTest, ListThatDoesNotFitIsCutToTheSizeLessTwo) {
  Write("[section1]\r\nname1=a\r\nname2=b\r\nname4=c\r\n[section2]\r\n");
  const auto list = [this](const QString& section, int size) {
    return privateprofile::GetString(section, {}, u"default"_s, size, path_).replace(QChar(u'\0'), u'|');
  };
  EXPECT_EQ(list({}, 100), u"section1|section2|"_s);
  EXPECT_EQ(list({}, 20), u"section1|section2|"_s);
  EXPECT_EQ(list({}, 19), u"section1|section2"_s);
  EXPECT_EQ(list({}, 16), u"section1|secti"_s);
  EXPECT_EQ(list(u"section1"_s, 16), u"name1|name2|na"_s);
  EXPECT_EQ(list(u"section1"_s, 2), u""_s);
  EXPECT_EQ(list(u"section1"_s, 1), u""_s);
}

TEST_F(PrivateProfileTest, CutValueEndsBetweenCharacters) {
  if (test::RunsUnderWine())
    GTEST_SKIP() << "Wine loses bytes that are no text";
  Write("[s]\r\nk=a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z\r\nbad=\xE2\x82\xE2\x82\xE2\x82\r\n");
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 3), u"a"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 4), u"aé"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 6), u"aé"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 7), u"aé€"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 10), u"aé€"_s);
  EXPECT_EQ(Get(u"s"_s, u"k"_s, 11), u"aé€😀"_s);
  // Bytes that are no character are cut where the size says.
  EXPECT_EQ(Get(u"s"_s, u"bad"_s, 6).size(), 5);
}

TEST_F(PrivateProfileTest, EmptySectionIsNotNullSection) {
  if (test::RunsUnderWine())
    GTEST_SKIP() << "Wine finds no section without a name";
  Write("[]\r\nk=1\r\n[s]\r\nj=2\r\n");
  EXPECT_EQ(Get(u""_s, u"k"_s), u"1"_s);
  EXPECT_EQ(privateprofile::GetString({}, u"k"_s, {}, kSize, path_).count(QChar(u'\0')), 2);
  EXPECT_TRUE(privateprofile::WriteString(u""_s, u"k"_s, u"3"_s, path_));
  EXPECT_FALSE(privateprofile::WriteString({}, u"k"_s, u"4"_s, path_));
  EXPECT_EQ(Content(), "[]\r\nk=3\r\n[s]\r\nj=2\r\n");
}

TEST_F(PrivateProfileTest, NothingIsRememberedBetweenCalls) {
  Write("[s]\r\nk=1\r\n");
  EXPECT_EQ(Get(u"s"_s, u"k"_s), u"1"_s);
  Write("[s]\r\nk=2\r\n");
  EXPECT_EQ(Get(u"s"_s, u"k"_s), u"2"_s);
  ASSERT_TRUE(QFile::remove(path_));
  EXPECT_EQ(Get(u"s"_s, u"k"_s), u"default"_s);
}

TEST_F(PrivateProfileTest, EmptyFileNameIsNoFile) {
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"k"_s, u"d"_s, kSize, {}), u"d"_s);
  EXPECT_EQ(privateprofile::GetInt(u"s"_s, u"k"_s, 7, {}), 7U);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"v"_s, {}));
}

TEST_F(PrivateProfileTest, FileNameEndsNowhereBeforeItsEnd) {
  Write("[s]\r\nk=1\r\n");
  const QString longer = path_ + QChar(u'\0') + u".old"_s;
  EXPECT_EQ(privateprofile::GetString(u"s"_s, u"k"_s, u"d"_s, kSize, longer), u"d"_s);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"2"_s, longer));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
}

TEST_F(PrivateProfileTest, FolderOfThatNameIsNoFile) {
  ASSERT_TRUE(QDir().mkdir(path_));
  EXPECT_EQ(Get(u"s"_s, u"k"_s), u"default"_s);
  EXPECT_EQ(privateprofile::GetString({}, {}, {}, kSize, path_), u""_s);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"v"_s, path_));
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, {}, {}, path_));
  EXPECT_TRUE(QFileInfo(path_).isDir());
}

TEST_F(PrivateProfileTest, FolderThatIsMissingIsNotMade) {
  const QString path = folder_.filePath(u"none/settings.ini"_s);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"v"_s, path));
  EXPECT_FALSE(QFileInfo::exists(folder_.filePath(u"none"_s)));
}

TEST_F(PrivateProfileTest, ReadOnlyFileIsNotWritten) {
  Write("[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(path_, QFile::ReadOwner | QFile::ReadGroup));
  EXPECT_EQ(Get(u"s"_s, u"k"_s), u"1"_s);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"2"_s, path_));
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, {}, path_));
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, {}, {}, path_));
  EXPECT_FALSE(privateprofile::WriteString(u"absent"_s, {}, {}, path_));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
}

#ifndef Q_OS_WIN  // permissions as only these systems have them
TEST_F(PrivateProfileTest, FileInAReadOnlyFolderIsNotWritten) {
  Write("[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), QFile::ReadOwner | QFile::ExeOwner));
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"2"_s, path_));
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"2"_s, folder_.filePath(u"new.ini"_s)));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  EXPECT_FALSE(QFileInfo::exists(folder_.filePath(u"new.ini"_s)));
}

TEST_F(PrivateProfileTest, FileThatMustNotBeReadGivesTheDefault) {
  Write("[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(path_, QFile::Permissions()));
  QFile probe(path_);
  if (probe.open(QIODevice::ReadOnly)) {
    GTEST_SKIP() << "this user reads files whatever their permissions";
  }
  EXPECT_EQ(Get(u"s"_s, u"k"_s), u"default"_s);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, u"2"_s, path_));
}
#endif

TEST_F(PrivateProfileTest, FileOfGarbageIsReadAndWritten) {
  if (test::RunsUnderWine())
    GTEST_SKIP() << "Wine keeps only what it understands";
  // With half a million lines anything but linear time ends in the time-out of the test.
  constexpr qsizetype kGarbage = 1024 * 1024;
  std::mt19937 random(3);  // a fixed seed: the same garbage in every run
  QByteArray noise(kGarbage, Qt::Uninitialized);
  for (char& byte : noise) {
    byte = static_cast<char>(random());
  }
  const struct {
    const char* name;
    QByteArray content;
  } rows[] = {{"noise", noise},
              {"no line end", QByteArray(kGarbage, 'x')},
              {"line ends alone", QByteArray(kGarbage, '\n')},
              {"carriage returns alone", QByteArray(kGarbage, '\r')},
              {"brackets", QByteArray(kGarbage, '[')},
              {"headers", QByteArray("[\n").repeated(kGarbage / 2)},
              {"keys", "[s]\n" + QByteArray("=\n").repeated(kGarbage / 2)},
              {"keys that are no text", "[s]\n" + QByteArray("\xFF\xFE=\n").repeated(kGarbage / 4)},
              {"blanks", QByteArray(kGarbage, ' ')},
              {"NULs", QByteArray(kGarbage, '\0')}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Write(row.content);
    EXPECT_EQ(Get(u"s"_s, u"Größe"_s), u"default"_s);
    EXPECT_EQ(Get(u"s"_s, u"plain"_s), u"default"_s);
    EXPECT_EQ(privateprofile::GetInt(u"s"_s, u"plain"_s, 5, path_), 5U);
    EXPECT_LT(privateprofile::GetString({}, {}, {}, kSize, path_).size(), kSize);
    EXPECT_TRUE(privateprofile::WriteString(u"settings"_s, u"key"_s, u"value"_s, path_));
    EXPECT_EQ(Get(u"settings"_s, u"key"_s), u"value"_s);
    EXPECT_TRUE(Content().startsWith(row.content));
  }
}

TEST_F(PrivateProfileTest, WhateverTheFileHoldsAWrittenValueIsReadAndOtherLinesStay) {
  if (test::RunsUnderWine())
    GTEST_SKIP() << "Wine writes all lines anew";
  const QByteArray pieces[] = {"[s]",         "[S", "[t]",   "[]", "]",    "k=1",  " K = 2 ",
                               "k",           "=",  "; k=3", ";",  "\r\n", "\n",   "\r",
                               "\r\n",        "\n", " ",     "\t", "\"",   "\xFF", QByteArray(1, '\0'),
                               "\xEF\xBB\xBF"};
  std::mt19937 random(11);  // a fixed seed: the same files in every run
  for (int round = 0; round < 500; ++round) {
    QByteArray content;
    for (unsigned i = random() % 30; i > 0; --i) {
      content += pieces[random() % std::size(pieces)];
    }
    SCOPED_TRACE(content.toHex().toStdString());
    Write(content);
    const QString before = privateprofile::GetString(u"t"_s, u"k"_s, u"none"_s, kSize, path_);
    ASSERT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, u"new"_s, path_));
    ASSERT_EQ(Get(u"s"_s, u"k"_s), u"new"_s);
    ASSERT_EQ(privateprofile::GetString(u"t"_s, u"k"_s, u"none"_s, kSize, path_), before);

    // One stretch of the file has changed, and what stood round it is as it was.
    const QByteArray written = Content();
    qsizetype front = 0;
    while (front < content.size() && front < written.size() && content[front] == written[front]) {
      ++front;
    }
    qsizetype back = 0;
    while (back < content.size() - front && back < written.size() - front &&
           content[content.size() - 1 - back] == written[written.size() - 1 - back]) {
      ++back;
    }
    const QByteArray removed = content.mid(front, content.size() - front - back);
    ASSERT_FALSE(removed.contains('\n') || removed.contains('\r'));
    ASSERT_LE(written.size() - front - back, qsizetype(sizeof "\r\n[s]\r\nk=new\r\n"));

    ASSERT_TRUE(privateprofile::WriteString(u"s"_s, {}, {}, path_));
    ASSERT_EQ(privateprofile::GetString(u"t"_s, u"k"_s, u"none"_s, kSize, path_), before);
    ASSERT_EQ(Comments(Content()), Comments(content));
  }
}

#ifdef Q_OS_WIN
TEST_F(PrivateProfileTest, ValueThatWouldNotBeReadBackIsRefused) {
  Write("[s]\r\nk=1\r\n");
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, QString(1 << 20, u'x'), path_));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
  const QString large(32000, u'x');
  EXPECT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, large, path_));
  EXPECT_EQ(Get(u"s"_s, u"k"_s).size(), large.size());
}

TEST_F(PrivateProfileTest, TextThatWouldLoseACharacterIsRefused) {
  Write("[s]\r\nk=1\r\n");
  const QString broken = u"a"_s + QChar(0xD800);
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, u"k"_s, broken, path_));
  EXPECT_FALSE(privateprofile::WriteString(u"s"_s, broken, u"v"_s, path_));
  EXPECT_FALSE(privateprofile::WriteString(broken, u"k"_s, u"v"_s, path_));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
  const QString whole = u"Größe € \u4E2D \U0001F600"_s;
  EXPECT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, whole, path_));
  EXPECT_EQ(Get(u"s"_s, u"k"_s), whole);
}
#else
TEST_F(PrivateProfileTest, LargeValueIsWrittenWholeAndReadUpToTheSize) {
  const QString large(1 << 20, u'x');
  EXPECT_TRUE(privateprofile::WriteString(u"s"_s, u"k"_s, large, path_));
  EXPECT_EQ(Content().size(), (1 << 20) + 9);
  EXPECT_EQ(Get(u"s"_s, u"k"_s).size(), kSize - 1);
}
#endif

}  // namespace
}  // namespace trevane
