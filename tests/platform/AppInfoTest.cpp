#include "platform/AppInfo.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace trevane {
namespace {

// There is no application object in this program.
TEST(AppInfo, FolderAndNameAreThoseOfTheRunningProgram) {
#ifndef Q_OS_WIN
  const QFileInfo program(QStringLiteral("/proc/self/exe"));
  EXPECT_EQ(appinfo::ProgramFolder(), QFileInfo(program.symLinkTarget()).path());
#endif
  EXPECT_TRUE(QFileInfo(appinfo::ProgramFolder()).isDir());
  EXPECT_EQ(appinfo::ExecutableName(), QStringLiteral("platform_services_test"));
}

TEST(AppInfo, FolderHasNoSeparatorAtItsEnd) {
  EXPECT_TRUE(QFileInfo(appinfo::ProgramFolder()).isAbsolute());
  EXPECT_FALSE(appinfo::ProgramFolder().endsWith(appinfo::PathSeparator()));
}

TEST(AppInfo, VersionHasThreeNumbers) {
  EXPECT_TRUE(
      QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d+$")).match(appinfo::Version()).hasMatch());
}

#ifdef Q_OS_WIN
TEST(AppInfo, TheUsersOwnFolderIsThatOfLocalApplicationData) {
  EXPECT_TRUE(appinfo::UserSettingsFolder().endsWith(QStringLiteral("\\Trevane")));
  EXPECT_TRUE(QFileInfo(appinfo::UserSettingsFolder()).isAbsolute());
  EXPECT_EQ(appinfo::UserStateFolder(), appinfo::UserSettingsFolder());
}
#else
TEST(AppInfo, TheUsersOwnFoldersAreThoseOfTheBaseDirectories) {
  ASSERT_TRUE(qputenv("HOME", "/home/me"));
  ASSERT_TRUE(qputenv("XDG_CONFIG_HOME", "/c"));
  ASSERT_TRUE(qputenv("XDG_STATE_HOME", "/s"));
  EXPECT_EQ(appinfo::UserSettingsFolder(), QStringLiteral("/c/trevane"));
  EXPECT_EQ(appinfo::UserStateFolder(), QStringLiteral("/s/trevane"));
  // A relative or an empty one counts as not set.
  for (const char* none : {"", "relative"}) {
    ASSERT_TRUE(qputenv("XDG_CONFIG_HOME", none));
    ASSERT_TRUE(qputenv("XDG_STATE_HOME", none));
    EXPECT_EQ(appinfo::UserSettingsFolder(), QStringLiteral("/home/me/.config/trevane"));
    EXPECT_EQ(appinfo::UserStateFolder(), QStringLiteral("/home/me/.local/state/trevane"));
  }
  qunsetenv("HOME");
  EXPECT_TRUE(appinfo::UserSettingsFolder().startsWith(u'/'));
  EXPECT_TRUE(appinfo::UserSettingsFolder().endsWith(QStringLiteral("/.config/trevane")));
}
#endif

}  // namespace
}  // namespace trevane
