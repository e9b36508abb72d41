#include "fileops/SetProgress.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

// Without sizes there is no speed, which depends on the time.
const std::vector<std::optional<qint64>> kThree(3);

TEST(SetProgressTest, CountsTheEntriesOfTheSet) {
  SetProgress progress(4, kThree);
  EXPECT_FALSE(progress.Covers(3));
  EXPECT_TRUE(progress.Covers(4));
  EXPECT_TRUE(progress.Covers(6));
  EXPECT_FALSE(progress.Covers(7));
  EXPECT_EQ(progress.Label(QStringLiteral("a"), 4), QStringLiteral("a: 0 of 3 files"));
  EXPECT_EQ(progress.Label(QStringLiteral("a"), 5), QStringLiteral("a: 1 of 3 files"));
  EXPECT_EQ(progress.Label(QStringLiteral("c"), 7), QStringLiteral("c: 3 of 3 files"));
}

TEST(SetProgressTest, WithinABatchTheCountMovesAndIsNotTakenBack) {
  SetProgress progress(1, kThree);
  FileSetCopy::Progress batch;
  batch.name = QStringLiteral("b");
  batch.filesRead = 3;
  batch.filesWritten = 2;
  EXPECT_EQ(progress.DuringBatch(batch, 1), QStringLiteral("b: 2 of 3 files"));
  EXPECT_EQ(progress.Label(QStringLiteral("a"), 2), QStringLiteral("a: 2 of 3 files"));
  EXPECT_EQ(progress.Label(QStringLiteral("c"), 4), QStringLiteral("c: 3 of 3 files"));
}

}  // namespace
}  // namespace trevane
