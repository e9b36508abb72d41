// What fuzzing began with and what it found, through the same function.
#include "engine/providers/ftp/ListParser.h"
#include "tests/engine/providers/ftp/ParseAnything.h"
#include "tests/support/TestFiles.h"

#include <QDir>

#include <gtest/gtest.h>

namespace trevane::ftp::test {
namespace {

TEST(FtpCorpus, NoListingIsTooOddForTheParser) {
  const QDir folder(QStringLiteral(TREVANE_FTP_CORPUS));
  const QStringList files = folder.entryList(QDir::Files, QDir::Name);
  EXPECT_GE(files.size(), 40);
  size_t items = 0;
  for (const QString& file : files) {
    const QByteArray bytes = trevane::test::ContentOf(folder.filePath(file));
    EXPECT_EQ(ParseAnything(bytes).toStdString(), "") << file.toStdString();
    items += ParseList(bytes, {}).items.size() + ParseFacts(bytes).items.size();
  }
  // Some of them are sound.
  EXPECT_GT(items, 20U);
}

}  // namespace
}  // namespace trevane::ftp::test
