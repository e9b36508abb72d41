#include "platform/AppInfo.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

// There is no application object in this program.
TEST(AppInfo, FolderAndNameAreThoseOfTheRunningProgram) {
#ifndef Q_OS_WIN
  const QFileInfo program(u"/proc/self/exe"_s);
  EXPECT_EQ(appinfo::ProgramFolder(), QFileInfo(program.symLinkTarget()).path());
#endif
  EXPECT_TRUE(QFileInfo(appinfo::ProgramFolder()).isDir());
  EXPECT_EQ(appinfo::ExecutableName(), u"platform_services_test"_s);
}

TEST(AppInfo, FolderHasNoSeparatorAtItsEnd) {
  EXPECT_TRUE(QFileInfo(appinfo::ProgramFolder()).isAbsolute());
  EXPECT_FALSE(appinfo::ProgramFolder().endsWith(appinfo::PathSeparator()));
}

TEST(AppInfo, VersionHasThreeNumbers) {
  EXPECT_TRUE(QRegularExpression(u"^\\d+\\.\\d+\\.\\d+$"_s).match(appinfo::Version()).hasMatch());
}

#ifdef Q_OS_WIN
TEST(AppInfo, TheUsersOwnFolderIsThatOfLocalApplicationData) {
  EXPECT_TRUE(appinfo::UserSettingsFolder().endsWith(u"\\Trevane"_s));
  EXPECT_TRUE(QFileInfo(appinfo::UserSettingsFolder()).isAbsolute());
  EXPECT_EQ(appinfo::UserStateFolder(), appinfo::UserSettingsFolder());
}
#else
TEST(AppInfo, TheUsersOwnFoldersAreThoseOfTheBaseDirectories) {
  ASSERT_TRUE(qputenv("HOME", "/home/me"));
  ASSERT_TRUE(qputenv("XDG_CONFIG_HOME", "/c"));
  ASSERT_TRUE(qputenv("XDG_STATE_HOME", "/s"));
  EXPECT_EQ(appinfo::UserSettingsFolder(), u"/c/trevane"_s);
  EXPECT_EQ(appinfo::UserStateFolder(), u"/s/trevane"_s);
  // A relative or an empty one counts as not set.
  for (const char* none : {"", "relative"}) {
    ASSERT_TRUE(qputenv("XDG_CONFIG_HOME", none));
    ASSERT_TRUE(qputenv("XDG_STATE_HOME", none));
    EXPECT_EQ(appinfo::UserSettingsFolder(), u"/home/me/.config/trevane"_s);
    EXPECT_EQ(appinfo::UserStateFolder(), u"/home/me/.local/state/trevane"_s);
  }
  qunsetenv("HOME");
  EXPECT_TRUE(appinfo::UserSettingsFolder().startsWith(u'/'));
  EXPECT_TRUE(appinfo::UserSettingsFolder().endsWith(u"/.config/trevane"_s));
}
#endif

}  // namespace
}  // namespace trevane
