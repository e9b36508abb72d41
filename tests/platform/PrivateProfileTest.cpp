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

constexpr int kSize = 199999;

class PrivateProfileTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    path_ = folder_.filePath(QStringLiteral("settings.ini"));
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
    return privateprofile::GetString(section, key, QStringLiteral("default"), size, path_);
  }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(PrivateProfileTest, ValueIsCutToTheSizeLessOne) {
  Write("[s]\r\nk=val1\r\n");
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 5), QStringLiteral("val1"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 4), QStringLiteral("val"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 1), QStringLiteral(""));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 0), QStringLiteral(""));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), -1), QStringLiteral(""));
}

TEST_F(PrivateProfileTest, DefaultIsCutLikeAValue) {
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 4), QStringLiteral("def"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 0), QStringLiteral(""));
}

TEST_F(PrivateProfileTest, ListThatDoesNotFitIsCutToTheSizeLessTwo) {
  Write("[section1]\r\nname1=a\r\nname2=b\r\nname4=c\r\n[section2]\r\n");
  const auto list = [this](const QString& section, int size) {
    return privateprofile::GetString(section, {}, QStringLiteral("default"), size, path_)
        .replace(QChar(u'\0'), u'|');
  };
  EXPECT_EQ(list({}, 100), QStringLiteral("section1|section2|"));
  EXPECT_EQ(list({}, 20), QStringLiteral("section1|section2|"));
  EXPECT_EQ(list({}, 19), QStringLiteral("section1|section2"));
  EXPECT_EQ(list({}, 16), QStringLiteral("section1|secti"));
  EXPECT_EQ(list(QStringLiteral("section1"), 16), QStringLiteral("name1|name2|na"));
  EXPECT_EQ(list(QStringLiteral("section1"), 2), QStringLiteral(""));
  EXPECT_EQ(list(QStringLiteral("section1"), 1), QStringLiteral(""));
}

TEST_F(PrivateProfileTest, CutValueEndsBetweenCharacters) {
  if (test::RunsUnderWine()) {
    GTEST_SKIP() << "Wine loses bytes that are no text";
  }
  Write("[s]\r\nk=a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z\r\nbad=\xE2\x82\xE2\x82\xE2\x82\r\n");
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 3), QStringLiteral("a"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 4), QStringLiteral("aé"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 6), QStringLiteral("aé"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 7), QStringLiteral("aé€"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 10), QStringLiteral("aé€"));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k"), 11), QStringLiteral("aé€😀"));
  // Bytes that are no character are cut at the size.
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("bad"), 6).size(), 5);
}

TEST_F(PrivateProfileTest, EmptySectionIsNotNullSection) {
  if (test::RunsUnderWine()) {
    GTEST_SKIP() << "Wine finds no section without a name";
  }
  Write("[]\r\nk=1\r\n[s]\r\nj=2\r\n");
  EXPECT_EQ(Get(QStringLiteral(""), QStringLiteral("k")), QStringLiteral("1"));
  EXPECT_EQ(privateprofile::GetString({}, QStringLiteral("k"), {}, kSize, path_).count(QChar(u'\0')), 2);
  EXPECT_TRUE(
      privateprofile::WriteString(QStringLiteral(""), QStringLiteral("k"), QStringLiteral("3"), path_));
  EXPECT_FALSE(privateprofile::WriteString({}, QStringLiteral("k"), QStringLiteral("4"), path_));
  EXPECT_EQ(Content(), "[]\r\nk=3\r\n[s]\r\nj=2\r\n");
}

TEST_F(PrivateProfileTest, NothingIsRememberedBetweenCalls) {
  Write("[s]\r\nk=1\r\n");
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("1"));
  Write("[s]\r\nk=2\r\n");
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("2"));
  ASSERT_TRUE(QFile::remove(path_));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("default"));
}

TEST_F(PrivateProfileTest, EmptyFileNameIsNoFile) {
  EXPECT_EQ(
      privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d"), kSize, {}),
      QStringLiteral("d"));
  EXPECT_EQ(privateprofile::GetInt(QStringLiteral("s"), QStringLiteral("k"), 7, {}), 7U);
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v"), {}));
}

TEST_F(PrivateProfileTest, FileNameEndsNowhereBeforeItsEnd) {
  Write("[s]\r\nk=1\r\n");
  const QString longer = path_ + QChar(u'\0') + QStringLiteral(".old");
  EXPECT_EQ(
      privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d"), kSize, longer),
      QStringLiteral("d"));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2"), longer));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
}

TEST_F(PrivateProfileTest, FolderOfThatNameIsNoFile) {
  ASSERT_TRUE(QDir().mkdir(path_));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("default"));
  EXPECT_EQ(privateprofile::GetString({}, {}, {}, kSize, path_), QStringLiteral(""));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v"), path_));
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), {}, {}, path_));
  EXPECT_TRUE(QFileInfo(path_).isDir());
}

TEST_F(PrivateProfileTest, FolderThatIsMissingIsNotMade) {
  const QString path = folder_.filePath(QStringLiteral("none/settings.ini"));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v"), path));
  EXPECT_FALSE(QFileInfo::exists(folder_.filePath(QStringLiteral("none"))));
}

TEST_F(PrivateProfileTest, ReadOnlyFileIsNotWritten) {
  Write("[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(path_, QFile::ReadOwner | QFile::ReadGroup));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("1"));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2"), path_));
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), {}, path_));
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), {}, {}, path_));
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("absent"), {}, {}, path_));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
}

#ifndef Q_OS_WIN  // permissions as only these systems have them
TEST_F(PrivateProfileTest, FileInAReadOnlyFolderIsNotWritten) {
  Write("[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), QFile::ReadOwner | QFile::ExeOwner));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2"), path_));
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2"),
                                           folder_.filePath(QStringLiteral("new.ini"))));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  EXPECT_FALSE(QFileInfo::exists(folder_.filePath(QStringLiteral("new.ini"))));
}

TEST_F(PrivateProfileTest, FileThatMustNotBeReadGivesTheDefault) {
  Write("[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(path_, QFile::Permissions()));
  QFile probe(path_);
  if (probe.open(QIODevice::ReadOnly)) {
    GTEST_SKIP() << "this user reads files whatever their permissions";
  }
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("default"));
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2"), path_));
}
#endif

TEST_F(PrivateProfileTest, FileOfGarbageIsReadAndWritten) {
  if (test::RunsUnderWine()) {
    GTEST_SKIP() << "Wine keeps only what it understands";
  }
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
    EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("Größe")), QStringLiteral("default"));
    EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("plain")), QStringLiteral("default"));
    EXPECT_EQ(privateprofile::GetInt(QStringLiteral("s"), QStringLiteral("plain"), 5, path_), 5U);
    EXPECT_LT(privateprofile::GetString({}, {}, {}, kSize, path_).size(), kSize);
    EXPECT_TRUE(privateprofile::WriteString(QStringLiteral("settings"), QStringLiteral("key"),
                                            QStringLiteral("value"), path_));
    EXPECT_EQ(Get(QStringLiteral("settings"), QStringLiteral("key")), QStringLiteral("value"));
    EXPECT_TRUE(Content().startsWith(row.content));
  }
}

TEST_F(PrivateProfileTest, AWrittenValueIsReadBackAndOtherLinesStay) {
  if (test::RunsUnderWine()) {
    GTEST_SKIP() << "Wine writes all lines anew";
  }
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
    const QString before = privateprofile::GetString(QStringLiteral("t"), QStringLiteral("k"),
                                                     QStringLiteral("none"), kSize, path_);
    ASSERT_TRUE(
        privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("new"), path_));
    ASSERT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("new"));
    ASSERT_EQ(privateprofile::GetString(QStringLiteral("t"), QStringLiteral("k"), QStringLiteral("none"),
                                        kSize, path_),
              before);

    // One stretch of the file has changed, and the text around it is unchanged.
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

    ASSERT_TRUE(privateprofile::WriteString(QStringLiteral("s"), {}, {}, path_));
    ASSERT_EQ(privateprofile::GetString(QStringLiteral("t"), QStringLiteral("k"), QStringLiteral("none"),
                                        kSize, path_),
              before);
    ASSERT_EQ(Comments(Content()), Comments(content));
  }
}

#ifdef Q_OS_WIN
TEST_F(PrivateProfileTest, ValueThatWouldNotBeReadBackIsRefused) {
  Write("[s]\r\nk=1\r\n");
  EXPECT_FALSE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QString(1 << 20, u'x'), path_));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
  const QString large(32000, u'x');
  EXPECT_TRUE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), large, path_));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")).size(), large.size());
}

TEST_F(PrivateProfileTest, TextThatWouldLoseACharacterIsRefused) {
  Write("[s]\r\nk=1\r\n");
  const QString broken = QStringLiteral("a") + QChar(0xD800);
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), broken, path_));
  EXPECT_FALSE(privateprofile::WriteString(QStringLiteral("s"), broken, QStringLiteral("v"), path_));
  EXPECT_FALSE(privateprofile::WriteString(broken, QStringLiteral("k"), QStringLiteral("v"), path_));
  EXPECT_EQ(Content(), "[s]\r\nk=1\r\n");
  const QString whole = QStringLiteral("Größe € \u4E2D \U0001F600");
  EXPECT_TRUE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), whole, path_));
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")), whole);
}
#else
TEST_F(PrivateProfileTest, LargeValueIsWrittenWholeAndReadUpToTheSize) {
  const QString large(1 << 20, u'x');
  EXPECT_TRUE(privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), large, path_));
  EXPECT_EQ(Content().size(), (1 << 20) + 9);
  EXPECT_EQ(Get(QStringLiteral("s"), QStringLiteral("k")).size(), kSize - 1);
}
#endif

}  // namespace
}  // namespace trevane
