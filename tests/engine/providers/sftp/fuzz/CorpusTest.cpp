// What fuzzing began with and what it found, through the same functions.
#include "tests/engine/providers/sftp/ParseAnything.h"
#include "tests/engine/providers/sftp/fuzz/ListenToAnything.h"
#include "tests/support/TestFiles.h"

#include <QDir>

#include <gtest/gtest.h>

namespace trevane::sftp::test {
namespace {

QList<QByteArray> Corpus(const QString& name) {
  const QDir folder(QStringLiteral(TREVANE_SFTP_CORPUS "/") + name);
  QList<QByteArray> contents;
  for (const QString& file : folder.entryList(QDir::Files, QDir::Name)) {
    contents.append(trevane::test::ContentOf(folder.filePath(file)));
  }
  return contents;
}

TEST(SftpCorpus, NoPacketIsReadBeyondItsEnd) {
  const QList<QByteArray> corpus = Corpus(QStringLiteral("packets"));
  EXPECT_GE(corpus.size(), 10);
  qsizetype mostRead = 0;
  for (const QByteArray& bytes : corpus) {
    const qsizetype read = ParseAnything(bytes);
    EXPECT_LE(read, bytes.size());
    mostRead = std::max(mostRead, read);
  }
  // Some of them are sound.
  EXPECT_GT(mostRead, 0);
}

TEST(SftpCorpus, NoAnswerOfAServerIsTooOddForTheFileSystem) {
  const QList<QByteArray> corpus = Corpus(QStringLiteral("answers"));
  EXPECT_GE(corpus.size(), 5);
  for (const QByteArray& bytes : corpus) {
    EXPECT_NO_THROW(ListenToAnything(bytes)) << bytes.toHex().toStdString();
  }
}

}  // namespace
}  // namespace trevane::sftp::test
