#include "base/KeyIndex.h"
#include "base/LowerCase.h"
#include "base/RowMerge.h"
#include "base/TextOrder.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace trevane {
namespace {

std::vector<int> Merge(const std::vector<int>& rows, const std::vector<int>& added) {
  const auto runs =
      MergeRuns(rows.size(), added.size(), [&](size_t a, size_t r) { return added[a] < rows[r]; });
  return MergedRows(rows, added, runs);
}

TEST(RowMerge, PutsNewEntriesBehindTheirEquals) {
  const std::vector<int> rows = {10, 20, 20, 30};
  const std::vector<int> added = {5, 20, 35};
  const auto runs =
      MergeRuns(rows.size(), added.size(), [&](size_t a, size_t r) { return added[a] < rows[r]; });
  ASSERT_EQ(runs.size(), 3U);
  EXPECT_EQ(runs[1].row, 3U);
  EXPECT_EQ(Merge(rows, added), (std::vector<int>{5, 10, 20, 20, 20, 30, 35}));
}

TEST(RowMerge, NeighboursMakeOneRun) {
  const std::vector<int> rows = {1, 100};
  const std::vector<int> added = {2, 3, 4};
  EXPECT_EQ(
      MergeRuns(rows.size(), added.size(), [&](size_t a, size_t r) { return added[a] < rows[r]; }).size(),
      1U);
}

TEST(RowMerge, GivesWhatASortWouldGive) {
  std::mt19937 random(4711);
  for (int round = 0; round < 300; ++round) {
    std::vector<int> rows(random() % 50);
    std::vector<int> added(random() % 50);
    for (int& value : rows) {
      value = static_cast<int>(random() % 40);
    }
    for (int& value : added) {
      value = static_cast<int>(random() % 40);
    }
    std::sort(rows.begin(), rows.end());
    std::sort(added.begin(), added.end());
    std::vector<int> wanted = rows;
    wanted.insert(wanted.end(), added.begin(), added.end());
    std::sort(wanted.begin(), wanted.end());
    ASSERT_EQ(Merge(rows, added), wanted);
  }
}

TEST(KeyIndex, FindsWhatIsThereAndNothingElse) {
  std::mt19937 random(1);
  KeyIndex index;
  std::vector<bool> there(2000, false);
  // Few distinct hashes, so that entries push each other on.
  const auto hash = [](quint32 number) { return static_cast<size_t>(number % 97); };
  for (int round = 0; round < 20000; ++round) {
    const auto number = static_cast<quint32>(random() % there.size());
    if (there[number]) {
      index.Remove(hash(number), number);
    } else {
      index.Insert(hash(number), number);
    }
    there[number] = !there[number];
    const auto asked = static_cast<quint32>(random() % there.size());
    const quint32 found = index.Find(hash(asked), [&](quint32 n) { return n == asked; });
    ASSERT_EQ(found, there[asked] ? asked : KeyIndex::kNone);
  }
  EXPECT_EQ(index.Count(), static_cast<size_t>(std::count(there.begin(), there.end(), true)));
}

TEST(TextOrder, SortsAsComparisonsWould) {
  std::mt19937 random(99);
  const QString alphabet = QStringLiteral("abAB.1é\u0416") + QChar(0xDC80);
  for (const int size : {0, 1, 2, 500}) {
    for (const bool withPrefix : {false, true}) {
      for (const qsizetype letters : {6, 9}) {
        QStringList texts;
        for (int i = 0; i < size; ++i) {
          QString text = withPrefix ? QStringLiteral("Common-") : QString();
          for (auto left = random() % 14; left > 0; --left) {
            text += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(letters))];
          }
          texts.append(text);
        }
        for (const bool descending : {false, true}) {
          TextOrder order;
          for (const QString& text : texts) {
            order.Add(text);
          }
          std::vector<quint32> wanted(static_cast<size_t>(size));
          for (quint32 i = 0; i < wanted.size(); ++i) {
            wanted[i] = i;
          }
          std::stable_sort(wanted.begin(), wanted.end(), [&](quint32 a, quint32 b) {
            const int difference = CompareIgnoringCase(texts[a], texts[b]);
            return descending ? difference > 0 : difference < 0;
          });
          ASSERT_EQ(order.Sorted(descending), wanted);
        }
      }
    }
  }
}

}  // namespace
}  // namespace trevane
