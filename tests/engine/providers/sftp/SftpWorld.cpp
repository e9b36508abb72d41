#include "tests/engine/providers/sftp/SftpWorld.h"

#include "engine/providers/sftp/SftpFileSystem.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <utility>

namespace trevane::test {

std::shared_ptr<FileSystem> SftpWorld::Open(const PipeConnector::Wrap& wrap,
                                            const std::shared_ptr<CallControl>& control) {
  return OpenSftpFileSystem(std::make_unique<PipeConnector>(wrap, control),
                            {.host = QStringLiteral("pipe"), .user = QStringLiteral("test")}, control);
}

QString SftpWorld::At(const QString& name) const {
  QString path = folder_.path().sliced(1);
  if (!name.isEmpty()) {
    path += u'/' + name;
  }
  return path.replace(u'/', u'\\');
}

void SftpWorld::Write(const QString& name, const QByteArray& content) {
  QFile file(OnDisk(name));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(file.write(content), content.size());
}

void SftpWorld::MakeFolder(const QString& name) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(name));
}

QStringList SftpWorld::Tree() const {
  QStringList lines;
  const QDir top(folder_.path());
  QDirIterator items(folder_.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
  while (items.hasNext()) {
    items.next();
    const QString name = top.relativeFilePath(items.filePath());
    const QFileInfo info = items.fileInfo();
    if (info.isSymLink()) {
      lines += name + QStringLiteral("@");
    } else if (info.isDir()) {
      lines += name + u'/';
    } else {
      QFile file(items.filePath());
      lines += name + u'=' +
               (file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QStringLiteral("?"));
    }
  }
  lines.sort();
  return lines;
}

void SftpWorld::Clear() {
  const QFileInfoList items =
      QDir(folder_.path())
          .entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  for (const QFileInfo& item : items) {
    if (item.isDir() && !item.isSymLink()) {
      EXPECT_TRUE(QDir(item.filePath()).removeRecursively());
    } else {
      EXPECT_TRUE(QFile::remove(item.filePath()));
    }
  }
}

void SftpTest::SetUp() {
  if (SftpServerProgram().isEmpty()) {
    GTEST_SKIP() << NoSftpServerText().toStdString();
  }
}

}  // namespace trevane::test
