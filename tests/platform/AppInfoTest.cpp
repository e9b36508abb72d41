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

}  // namespace
}  // namespace trevane
