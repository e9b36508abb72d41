#include "platform/AppInfo.h"
#include "platform/TypedPath.h"

#include <QDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;
using typedpath::Understand;

bool OnSlashSystem() {
  return appinfo::PathSeparator() == u"/";
}

TEST(TypedPathTest, WhatIsNoSpecialFormStaysAsItIs) {
  for (const QString& path :
       {u""_s, appinfo::PathSeparator(), u"\\"_s, u"C:"_s, u"C:\\a b\\c"_s, u"\\home\\x"_s, u"home\\x"_s,
        u"Workspace\\My Computer\\C:\\x"_s, u"100%\\50% of it"_s, u"C:\\x "_s}) {
    EXPECT_EQ(Understand(path), path) << path.toStdString();
  }
}

TEST(TypedPathTest, QuotesAndBlanksAroundAreNoPartOfThePath) {
  EXPECT_EQ(Understand(u"  \"C:\\Program Files\\x\" "_s), u"C:\\Program Files\\x"_s);
  EXPECT_EQ(Understand(u"'C:\\x'"_s), u"C:\\x"_s);
  EXPECT_EQ(Understand(u"\u201CC:\\x\u201D"_s), u"C:\\x"_s);
  EXPECT_EQ(Understand(u"C:\\x\""_s), u"C:\\x\""_s);
}

TEST(TypedPathTest, DotsLeadUpButNotOutOfTheDrive) {
  EXPECT_EQ(Understand(u"C:\\a\\..\\b\\.\\c"_s), u"C:\\b\\c"_s);
  EXPECT_EQ(Understand(u"C:\\..\\..\\b"_s), u"C:\\b"_s);
  EXPECT_EQ(Understand(u"\\\\server\\share\\..\\.."_s), u"\\\\server\\share"_s);
  EXPECT_EQ(Understand(u"Workspace\\My Computer\\C:\\a\\.."_s), u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(Understand(u"\\a\\..\\..\\b"_s), u"\\b"_s);
  EXPECT_EQ(Understand(u"C:/a//b/"_s), u"C:\\a\\b"_s);
}

TEST(TypedPathTest, TheLiteralPrefixIsDropped) {
  EXPECT_EQ(Understand(u"\\\\?\\C:\\x"_s), u"C:\\x"_s);
  EXPECT_EQ(Understand(u"//?/C:/x"_s), u"C:\\x"_s);
  EXPECT_EQ(Understand(u"\\\\?\\unc\\server\\share\\x"_s), u"\\\\server\\share\\x"_s);
  EXPECT_EQ(Understand(u"\\\\?\\Volume{1}\\x"_s), u"\\\\?\\Volume{1}\\x"_s);
}

TEST(TypedPathTest, LinksToFilesAreUnderstood) {
  EXPECT_EQ(Understand(u"file:///C:/a%20b/%C3%BC"_s), u"C:\\a b\\\u00FC"_s);
  EXPECT_EQ(Understand(u"file://server/share/x"_s), u"\\\\server\\share\\x"_s);
  EXPECT_EQ(Understand(u"FILE://localhost/C:/x"_s), u"C:\\x"_s);
  const QString absolute = OnSlashSystem() ? u"/home/x"_s : u"\\home\\x"_s;
  EXPECT_EQ(Understand(u"file:///home/x"_s), absolute);
  EXPECT_EQ(Understand(u"file:/home/x/"_s), absolute);
  EXPECT_EQ(Understand(u"file:///C:/a#b?c"_s), u"C:\\a#b?c"_s);
  EXPECT_EQ(Understand(u"\"file:///C:/end%20\""_s), u"C:\\end "_s);
  EXPECT_EQ(Understand(u"file://"_s), QString());
}

TEST(TypedPathTest, ALinkWithBytesThatAreNoTextKeepsThem) {
  EXPECT_EQ(Understand(u"file:///C:/%FCx"_s), u"C:\\"_s + QChar(0xDCFC) + u'x');
}

TEST(TypedPathTest, ATildeIsTheUsersOwnFolder) {
  const auto inHome = [](const QString& below) {
    return QDir::toNativeSeparators(QDir::cleanPath(QDir::homePath() + below));
  };
  EXPECT_EQ(Understand(u"~"_s), inHome({}));
  EXPECT_EQ(Understand(u"~/x"_s), inHome(u"/x"_s));
  EXPECT_EQ(Understand(u"~\\x\\y"_s), inHome(u"/x/y"_s));
  EXPECT_EQ(Understand(u"~x"_s), u"~x"_s) << "another one's is not known";
}

TEST(TypedPathTest, PathsFromTheRootAreCleaned) {
  for (const QString& text : {u"/srv/data"_s, u" /srv/data/"_s, u"\"/srv/data\""_s, u"/srv/./x/../data"_s}) {
    EXPECT_EQ(Understand(text), OnSlashSystem() ? u"/srv/data"_s : u"\\srv\\data"_s) << text.toStdString();
  }
}

TEST(TypedPathTest, TwoSeparatorsInFrontMeanAShare) {
  EXPECT_TRUE(typedpath::IsShare(Understand(u"\\\\server\\share"_s)));
  EXPECT_FALSE(typedpath::IsShare(Understand(u"\\server\\share"_s)));
  // There "//" is the root as well as "/".
  EXPECT_EQ(typedpath::IsShare(Understand(u"//server/share"_s)), !OnSlashSystem());
  EXPECT_EQ(Understand(u"//server/share"_s), OnSlashSystem() ? u"/server/share"_s : u"\\\\server\\share"_s);
}

TEST(TypedPathTest, ABackslashIsPartOfANameWhereSlashesSeparate) {
  EXPECT_EQ(Understand(u"/a/b\\..\\c"_s), OnSlashSystem() ? u"/a/b\\..\\c"_s : u"\\a\\c"_s);
}

TEST(TypedPathTest, VariablesAreReplacedWhereTheSystemHasThem) {
  qputenv("TREVANE_TYPED", "C:\\own folder");
  const QString text = u"%TREVANE_TYPED%\\a\\%TREVANE_NOT_SET%\\b"_s;
  EXPECT_EQ(Understand(text), OnSlashSystem() ? text : u"C:\\own folder\\a\\%TREVANE_NOT_SET%\\b"_s);
  EXPECT_EQ(Understand(u"C:\\%%\\100%"_s), u"C:\\%%\\100%"_s);
  qunsetenv("TREVANE_TYPED");
}

}  // namespace
}  // namespace trevane::test
