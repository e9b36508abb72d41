#include "platform/AppInfo.h"
#include "platform/TypedPath.h"

#include <QDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using typedpath::Understand;

bool OnSlashSystem() {
  return appinfo::PathSeparator() == u"/";
}

TEST(TypedPathTest, WhatIsNoSpecialFormStaysAsItIs) {
  for (const QString& path : {QStringLiteral(""), appinfo::PathSeparator(), QStringLiteral("\\"),
                              QStringLiteral("C:"), QStringLiteral("C:\\a b\\c"), QStringLiteral("\\home\\x"),
                              QStringLiteral("home\\x"), QStringLiteral("Workspace\\My Computer\\C:\\x"),
                              QStringLiteral("100%\\50% of it"), QStringLiteral("C:\\x ")}) {
    EXPECT_EQ(Understand(path), path) << path.toStdString();
  }
}

TEST(TypedPathTest, QuotesAndBlanksAroundAreNoPartOfThePath) {
  EXPECT_EQ(Understand(QStringLiteral("  \"C:\\Program Files\\x\" ")),
            QStringLiteral("C:\\Program Files\\x"));
  EXPECT_EQ(Understand(QStringLiteral("'C:\\x'")), QStringLiteral("C:\\x"));
  EXPECT_EQ(Understand(QStringLiteral("\u201CC:\\x\u201D")), QStringLiteral("C:\\x"));
  EXPECT_EQ(Understand(QStringLiteral("C:\\x\"")), QStringLiteral("C:\\x\""));
}

TEST(TypedPathTest, DotsLeadUpButNotOutOfTheDrive) {
  EXPECT_EQ(Understand(QStringLiteral("C:\\a\\..\\b\\.\\c")), QStringLiteral("C:\\b\\c"));
  EXPECT_EQ(Understand(QStringLiteral("C:\\..\\..\\b")), QStringLiteral("C:\\b"));
  EXPECT_EQ(Understand(QStringLiteral("\\\\server\\share\\..\\..")), QStringLiteral("\\\\server\\share"));
  EXPECT_EQ(Understand(QStringLiteral("Workspace\\My Computer\\C:\\a\\..")),
            QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(Understand(QStringLiteral("\\a\\..\\..\\b")), QStringLiteral("\\b"));
  EXPECT_EQ(Understand(QStringLiteral("C:/a//b/")), QStringLiteral("C:\\a\\b"));
}

TEST(TypedPathTest, TheLiteralPrefixIsDropped) {
  EXPECT_EQ(Understand(QStringLiteral("\\\\?\\C:\\x")), QStringLiteral("C:\\x"));
  EXPECT_EQ(Understand(QStringLiteral("//?/C:/x")), QStringLiteral("C:\\x"));
  EXPECT_EQ(Understand(QStringLiteral("\\\\?\\unc\\server\\share\\x")),
            QStringLiteral("\\\\server\\share\\x"));
  EXPECT_EQ(Understand(QStringLiteral("\\\\?\\Volume{1}\\x")), QStringLiteral("\\\\?\\Volume{1}\\x"));
}

TEST(TypedPathTest, LinksToFilesAreUnderstood) {
  EXPECT_EQ(Understand(QStringLiteral("file:///C:/a%20b/%C3%BC")), QStringLiteral("C:\\a b\\\u00FC"));
  EXPECT_EQ(Understand(QStringLiteral("file://server/share/x")), QStringLiteral("\\\\server\\share\\x"));
  EXPECT_EQ(Understand(QStringLiteral("FILE://localhost/C:/x")), QStringLiteral("C:\\x"));
  const QString absolute = OnSlashSystem() ? QStringLiteral("/home/x") : QStringLiteral("\\home\\x");
  EXPECT_EQ(Understand(QStringLiteral("file:///home/x")), absolute);
  EXPECT_EQ(Understand(QStringLiteral("file:/home/x/")), absolute);
  EXPECT_EQ(Understand(QStringLiteral("file:///C:/a#b?c")), QStringLiteral("C:\\a#b?c"));
  EXPECT_EQ(Understand(QStringLiteral("\"file:///C:/end%20\"")), QStringLiteral("C:\\end "));
  EXPECT_EQ(Understand(QStringLiteral("file://")), QString());
}

TEST(TypedPathTest, ALinkWithBytesThatAreNoTextKeepsThem) {
  EXPECT_EQ(Understand(QStringLiteral("file:///C:/%FCx")), QStringLiteral("C:\\") + QChar(0xDCFC) + u'x');
}

TEST(TypedPathTest, ATildeIsTheUsersOwnFolder) {
  const auto inHome = [](const QString& below) {
    return QDir::toNativeSeparators(QDir::cleanPath(QDir::homePath() + below));
  };
  EXPECT_EQ(Understand(QStringLiteral("~")), inHome({}));
  EXPECT_EQ(Understand(QStringLiteral("~/x")), inHome(QStringLiteral("/x")));
  EXPECT_EQ(Understand(QStringLiteral("~\\x\\y")), inHome(QStringLiteral("/x/y")));
  EXPECT_EQ(Understand(QStringLiteral("~x")), QStringLiteral("~x")) << "another one's is not known";
}

TEST(TypedPathTest, PathsFromTheRootAreCleaned) {
  for (const QString& text : {QStringLiteral("/srv/data"), QStringLiteral(" /srv/data/"),
                              QStringLiteral("\"/srv/data\""), QStringLiteral("/srv/./x/../data")}) {
    EXPECT_EQ(Understand(text), OnSlashSystem() ? QStringLiteral("/srv/data") : QStringLiteral("\\srv\\data"))
        << text.toStdString();
  }
}

TEST(TypedPathTest, TwoSeparatorsInFrontMeanAShare) {
  EXPECT_TRUE(typedpath::IsShare(Understand(QStringLiteral("\\\\server\\share"))));
  EXPECT_FALSE(typedpath::IsShare(Understand(QStringLiteral("\\server\\share"))));
  // There "//" is the root as well as "/".
  EXPECT_EQ(typedpath::IsShare(Understand(QStringLiteral("//server/share"))), !OnSlashSystem());
  EXPECT_EQ(Understand(QStringLiteral("//server/share")),
            OnSlashSystem() ? QStringLiteral("/server/share") : QStringLiteral("\\\\server\\share"));
}

TEST(TypedPathTest, ABackslashIsPartOfANameWhereSlashesSeparate) {
  EXPECT_EQ(Understand(QStringLiteral("/a/b\\..\\c")),
            OnSlashSystem() ? QStringLiteral("/a/b\\..\\c") : QStringLiteral("\\a\\c"));
}

TEST(TypedPathTest, VariablesAreReplacedWhereTheSystemHasThem) {
  qputenv("TREVANE_TYPED", "C:\\own folder");
  const QString text = QStringLiteral("%TREVANE_TYPED%\\a\\%TREVANE_NOT_SET%\\b");
  EXPECT_EQ(Understand(text),
            OnSlashSystem() ? text : QStringLiteral("C:\\own folder\\a\\%TREVANE_NOT_SET%\\b"));
  EXPECT_EQ(Understand(QStringLiteral("C:\\%%\\100%")), QStringLiteral("C:\\%%\\100%"));
  qunsetenv("TREVANE_TYPED");
}

}  // namespace
}  // namespace trevane::test
