#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace trevane::test {

void WriteFile(const QString& path, const QByteArray& content) {
  ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
  ASSERT_EQ(file.write(content), content.size());
}

QByteArray ContentOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
}

QStringList EntriesOf(const QString& folder) {
  return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

}  // namespace trevane::test
