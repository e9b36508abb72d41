#include "platform/ShellIcons.h"
#include "views/ImageList.h"
#include "views/list/FileTypes.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <map>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

ShellIcon PixelIcon(qint32 index, char level = 50) {
  ShellIcon icon;
  icon.index = index;
  icon.width = 16;
  icon.height = 16;
  icon.pixels = QByteArray(16 * 16 * 4, level);
  return icon;
}

class FakeShellIcons final : public ShellIcons {
 public:
  std::optional<ShellFileInfo> ForExtension(const QString& probe) override {
    probes.append(probe);
    const auto found = types.find(probe);
    return found != types.end() ? found->second : std::nullopt;
  }
  std::optional<ShellFileInfo> ForFolder(bool open) override {
    ++folderCalls;
    return open ? openFolder : closedFolder;
  }

  std::map<QString, std::optional<ShellFileInfo>> types;
  std::optional<ShellFileInfo> closedFolder;
  std::optional<ShellFileInfo> openFolder;
  QStringList probes;
  int folderCalls = 0;
};

class FileTypesTest : public testing::Test {
 protected:
  FakeShellIcons shell_;
  ImageList images_{u":/none/"_s};
  FileTypes types_{shell_, images_};
};

TEST_F(FileTypesTest, TheSystemsIconAndTypeNameAreTaken) {
  shell_.types[u".TXT"_s] = ShellFileInfo{PixelIcon(12), u"Text Document"_s};
  const FileTypeRecord& record = types_.GetFileType(u"a.txt"_s);
  EXPECT_EQ(record.imageKey, u"iIcon:12"_s);
  EXPECT_EQ(record.typeName, u"Text Document"_s);
  EXPECT_TRUE(images_.Contains(u"iIcon:12"_s));
}

TEST_F(FileTypesTest, AnExtensionIsAskedForOnceInUpperCase) {
  shell_.types[u".TXT"_s] = ShellFileInfo{PixelIcon(12), u"Text Document"_s};
  const FileTypeRecord& first = types_.GetFileType(u"a.txt"_s);
  const FileTypeRecord& other = types_.GetFileType(u"b.bin"_s);
  const FileTypeRecord& again = types_.GetFileType(u"c.TxT"_s);
  EXPECT_EQ(&first, &again);
  EXPECT_NE(&first, &other);
  EXPECT_EQ(shell_.probes, (QStringList{u".TXT"_s, u".BIN"_s}));
  EXPECT_EQ(&types_.Record(first.id), &first);
}

TEST_F(FileTypesTest, TypesThatShareAnIconShareTheImage) {
  shell_.types[u".A"_s] = ShellFileInfo{PixelIcon(3), u"A"_s};
  shell_.types[u".B"_s] = ShellFileInfo{PixelIcon(3), u"B"_s};
  EXPECT_EQ(types_.GetFileType(u"x.a"_s).imageKey, u"iIcon:3"_s);
  EXPECT_EQ(types_.GetFileType(u"x.b"_s).imageKey, u"iIcon:3"_s);
}

TEST_F(FileTypesTest, WhatTheSystemDoesNotSupplyIsTheDefaultRecord) {
  const FileTypeRecord& record = types_.GetFileType(u"a.xyz"_s);
  EXPECT_EQ(record.imageKey, u"RCFile"_s);
  EXPECT_EQ(record.typeName, u"File"_s);
  EXPECT_EQ(record.id, 0);
}

TEST_F(FileTypesTest, AnEmptyTypeNameBecomesTheExtensionAndTheWordFile) {
  shell_.types[u".XYZ"_s] = ShellFileInfo{PixelIcon(1), QString()};
  EXPECT_EQ(types_.GetFileType(u"a.xyz"_s).typeName, u".XYZ file"_s);
}

TEST_F(FileTypesTest, ATypeNameEndsAtItsFirstNul) {
  shell_.types[u".XYZ"_s] = ShellFileInfo{PixelIcon(1), u"Type"_s + QChar(u'\0') + u"rest"_s};
  shell_.types[u".NUL"_s] = ShellFileInfo{PixelIcon(1), QString(QChar(u'\0'))};
  EXPECT_EQ(types_.GetFileType(u"a.xyz"_s).typeName, u"Type"_s);
  EXPECT_EQ(types_.GetFileType(u"a.nul"_s).typeName, u".NUL file"_s);
}

TEST_F(FileTypesTest, AnIconWithoutPictureLeavesNameAndDefaultPicture) {
  ShellIcon themed;
  themed.index = 5;
  themed.themeNames = {u"no-such-icon-anywhere"_s};
  shell_.types[u".TXT"_s] = ShellFileInfo{themed, u"text document"_s};
  ShellIcon broken = PixelIcon(6);
  broken.pixels.chop(1);
  shell_.types[u".BAD"_s] = ShellFileInfo{broken, u"bad"_s};
  EXPECT_EQ(types_.GetFileType(u"a.txt"_s).imageKey, u"RCFile"_s);
  EXPECT_EQ(types_.GetFileType(u"a.txt"_s).typeName, u"text document"_s);
  EXPECT_EQ(types_.GetFileType(u"a.bad"_s).imageKey, u"RCFile"_s);
  EXPECT_EQ(types_.GetFileType(u"a.bad"_s).typeName, u"File"_s);
}

TEST_F(FileTypesTest, ManyExtensionsDoNotRunOutOfRecords) {
  for (int i = 0; i < 70000; ++i) {
    const QString extension = QString::number(i);
    shell_.types[u'.' + extension] = ShellFileInfo{PixelIcon(1), u"Type "_s + extension};
    ASSERT_EQ(types_.GetFileType(u"part."_s + extension).typeName, u"Type "_s + extension);
  }
  EXPECT_GT(types_.Count(), 70000U);
}

TEST_F(FileTypesTest, TheExtensionIsWhatFollowsTheLastDot) {
  (void)types_.GetFileType(u"a.tar.gz"_s);
  (void)types_.GetFileType(u".bashrc"_s);
  (void)types_.GetFileType(u"README"_s);
  (void)types_.GetFileType(u"ends."_s);
  EXPECT_EQ(shell_.probes, (QStringList{u".GZ"_s, u".BASHRC"_s, u"."_s}));
}

TEST_F(FileTypesTest, FoldersHaveAPairOfImagesThatIsAskedForOnce) {
  shell_.closedFolder = ShellFileInfo{PixelIcon(1), u"File Folder"_s};
  shell_.openFolder = ShellFileInfo{PixelIcon(2), u"Open"_s};
  const FileTypeRecord& record = types_.GetFolderImages();
  EXPECT_EQ(record.imageKey, u"iIcon:1"_s);
  EXPECT_EQ(record.openImageKey, u"iIcon:2"_s);
  EXPECT_EQ(record.typeName, u"File Folder"_s);
  EXPECT_EQ(&types_.GetFolderImages(), &record);
  EXPECT_EQ(shell_.folderCalls, 2);
}

TEST_F(FileTypesTest, AMissingFolderIconGivesTheDefaultFolderRecord) {
  shell_.closedFolder = ShellFileInfo{PixelIcon(1), u"File Folder"_s};
  const FileTypeRecord& record = types_.GetFolderImages();
  EXPECT_EQ(record.imageKey, u"F-CLOSE"_s);
  EXPECT_EQ(record.openImageKey, u"F-OPEN"_s);
  EXPECT_EQ(record.typeName, u"Folder File"_s);
}

TEST_F(FileTypesTest, AFolderIconWithoutAPictureKeepsTheSystemsName) {
  ShellIcon themed;
  themed.index = 5;
  themed.themeNames = {u"no-such-icon-anywhere"_s};
  shell_.closedFolder = ShellFileInfo{themed, u"Folder"_s};
  shell_.openFolder = ShellFileInfo{themed, u"Folder"_s};
  const FileTypeRecord& record = types_.GetFolderImages();
  EXPECT_EQ(record.imageKey, u"F-CLOSE"_s);
  EXPECT_EQ(record.openImageKey, u"F-OPEN"_s);
  EXPECT_EQ(record.typeName, u"Folder"_s);
}

}  // namespace
}  // namespace trevane
