#include "platform/ShellIcons.h"
#include "views/ImageList.h"
#include "views/list/FileTypes.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <map>

namespace trevane {
namespace {

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
  ImageList images_{QStringLiteral(":/none/")};
  FileTypes types_{shell_, images_};
};

TEST_F(FileTypesTest, TheSystemsIconAndTypeNameAreTaken) {
  shell_.types[QStringLiteral(".TXT")] = ShellFileInfo{PixelIcon(12), QStringLiteral("Text Document")};
  const FileTypeRecord& record = types_.GetFileType(QStringLiteral("a.txt"));
  EXPECT_EQ(record.imageKey, QStringLiteral("iIcon:12"));
  EXPECT_EQ(record.typeName, QStringLiteral("Text Document"));
  EXPECT_TRUE(images_.Contains(QStringLiteral("iIcon:12")));
}

TEST_F(FileTypesTest, AnExtensionIsAskedForOnceInUpperCase) {
  shell_.types[QStringLiteral(".TXT")] = ShellFileInfo{PixelIcon(12), QStringLiteral("Text Document")};
  const FileTypeRecord& first = types_.GetFileType(QStringLiteral("a.txt"));
  const FileTypeRecord& other = types_.GetFileType(QStringLiteral("b.bin"));
  const FileTypeRecord& again = types_.GetFileType(QStringLiteral("c.TxT"));
  EXPECT_EQ(&first, &again);
  EXPECT_NE(&first, &other);
  EXPECT_EQ(shell_.probes, (QStringList{QStringLiteral(".TXT"), QStringLiteral(".BIN")}));
  EXPECT_EQ(&types_.Record(first.id), &first);
}

TEST_F(FileTypesTest, TypesThatShareAnIconShareTheImage) {
  shell_.types[QStringLiteral(".A")] = ShellFileInfo{PixelIcon(3), QStringLiteral("A")};
  shell_.types[QStringLiteral(".B")] = ShellFileInfo{PixelIcon(3), QStringLiteral("B")};
  EXPECT_EQ(types_.GetFileType(QStringLiteral("x.a")).imageKey, QStringLiteral("iIcon:3"));
  EXPECT_EQ(types_.GetFileType(QStringLiteral("x.b")).imageKey, QStringLiteral("iIcon:3"));
}

TEST_F(FileTypesTest, WhatTheSystemDoesNotSupplyIsTheDefaultRecord) {
  const FileTypeRecord& record = types_.GetFileType(QStringLiteral("a.xyz"));
  EXPECT_EQ(record.imageKey, QStringLiteral("RCFile"));
  EXPECT_EQ(record.typeName, QStringLiteral("File"));
  EXPECT_EQ(record.id, 0);
}

TEST_F(FileTypesTest, AnEmptyTypeNameBecomesTheExtensionAndTheWordFile) {
  shell_.types[QStringLiteral(".XYZ")] = ShellFileInfo{PixelIcon(1), QString()};
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.xyz")).typeName, QStringLiteral(".XYZ file"));
}

TEST_F(FileTypesTest, ATypeNameEndsAtItsFirstNul) {
  shell_.types[QStringLiteral(".XYZ")] =
      ShellFileInfo{PixelIcon(1), QStringLiteral("Type") + QChar(u'\0') + QStringLiteral("rest")};
  shell_.types[QStringLiteral(".NUL")] = ShellFileInfo{PixelIcon(1), QString(QChar(u'\0'))};
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.xyz")).typeName, QStringLiteral("Type"));
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.nul")).typeName, QStringLiteral(".NUL file"));
}

TEST_F(FileTypesTest, AnIconWithoutPictureLeavesNameAndDefaultPicture) {
  ShellIcon themed;
  themed.index = 5;
  themed.themeNames = {QStringLiteral("no-such-icon-anywhere")};
  shell_.types[QStringLiteral(".TXT")] = ShellFileInfo{themed, QStringLiteral("text document")};
  ShellIcon broken = PixelIcon(6);
  broken.pixels.chop(1);
  shell_.types[QStringLiteral(".BAD")] = ShellFileInfo{broken, QStringLiteral("bad")};
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.txt")).imageKey, QStringLiteral("RCFile"));
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.txt")).typeName, QStringLiteral("text document"));
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.bad")).imageKey, QStringLiteral("RCFile"));
  EXPECT_EQ(types_.GetFileType(QStringLiteral("a.bad")).typeName, QStringLiteral("File"));
}

TEST_F(FileTypesTest, ManyExtensionsDoNotRunOutOfRecords) {
  for (int i = 0; i < 70000; ++i) {
    const QString extension = QString::number(i);
    shell_.types[u'.' + extension] = ShellFileInfo{PixelIcon(1), QStringLiteral("Type ") + extension};
    ASSERT_EQ(types_.GetFileType(QStringLiteral("part.") + extension).typeName,
              QStringLiteral("Type ") + extension);
  }
  EXPECT_GT(types_.Count(), 70000U);
}

TEST_F(FileTypesTest, TheExtensionIsWhatFollowsTheLastDot) {
  (void)types_.GetFileType(QStringLiteral("a.tar.gz"));
  (void)types_.GetFileType(QStringLiteral(".bashrc"));
  (void)types_.GetFileType(QStringLiteral("README"));
  (void)types_.GetFileType(QStringLiteral("ends."));
  EXPECT_EQ(shell_.probes,
            (QStringList{QStringLiteral(".GZ"), QStringLiteral(".BASHRC"), QStringLiteral(".")}));
}

TEST_F(FileTypesTest, FoldersHaveAPairOfImagesThatIsAskedForOnce) {
  shell_.closedFolder = ShellFileInfo{PixelIcon(1), QStringLiteral("File Folder")};
  shell_.openFolder = ShellFileInfo{PixelIcon(2), QStringLiteral("Open")};
  const FileTypeRecord& record = types_.GetFolderImages();
  EXPECT_EQ(record.imageKey, QStringLiteral("iIcon:1"));
  EXPECT_EQ(record.openImageKey, QStringLiteral("iIcon:2"));
  EXPECT_EQ(record.typeName, QStringLiteral("File Folder"));
  EXPECT_EQ(&types_.GetFolderImages(), &record);
  EXPECT_EQ(shell_.folderCalls, 2);
}

TEST_F(FileTypesTest, AMissingFolderIconGivesTheDefaultFolderRecord) {
  shell_.closedFolder = ShellFileInfo{PixelIcon(1), QStringLiteral("File Folder")};
  const FileTypeRecord& record = types_.GetFolderImages();
  EXPECT_EQ(record.imageKey, QStringLiteral("F-CLOSE"));
  EXPECT_EQ(record.openImageKey, QStringLiteral("F-OPEN"));
  EXPECT_EQ(record.typeName, QStringLiteral("Folder File"));
}

TEST_F(FileTypesTest, AFolderIconWithoutAPictureKeepsTheSystemsName) {
  ShellIcon themed;
  themed.index = 5;
  themed.themeNames = {QStringLiteral("no-such-icon-anywhere")};
  shell_.closedFolder = ShellFileInfo{themed, QStringLiteral("Folder")};
  shell_.openFolder = ShellFileInfo{themed, QStringLiteral("Folder")};
  const FileTypeRecord& record = types_.GetFolderImages();
  EXPECT_EQ(record.imageKey, QStringLiteral("F-CLOSE"));
  EXPECT_EQ(record.openImageKey, QStringLiteral("F-OPEN"));
  EXPECT_EQ(record.typeName, QStringLiteral("Folder"));
}

}  // namespace
}  // namespace trevane
