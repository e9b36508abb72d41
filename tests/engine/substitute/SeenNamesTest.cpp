#include "engine/substitute/SeenNames.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace trevane {
namespace {

Listing Entries(const QStringList& names) {
  Listing entries;
  for (const QString& name : names) {
    entries.emplace_back();
    entries.back().name = name;
  }
  return entries;
}

QStringList Kept(SeenNames& seen, const QStringList& names) {
  Listing entries = Entries(names);
  seen.DropRepeated(entries);
  QStringList kept;
  for (const FileEntry& entry : entries) {
    kept.append(entry.name);
  }
  return kept;
}

TEST(SeenNamesTest, ANameOfAnEarlierBatchIsLeftOut) {
  SeenNames seen;
  EXPECT_EQ(Kept(seen, {QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")}),
            (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
  EXPECT_EQ(Kept(seen, {}), QStringList());
  EXPECT_EQ(Kept(seen, {QStringLiteral("A"), QStringLiteral("a"), QStringLiteral("c")}),
            (QStringList{QStringLiteral("A"), QStringLiteral("c")}));
}

TEST(SeenNamesTest, ManySmallBatchesAreKnownApart) {
  SeenNames seen;
  for (int round = 0; round < 2; ++round) {
    qsizetype kept = 0;
    for (int i = 0; i < 20000; i += 3) {
      kept += Kept(seen, {QStringLiteral("n%1").arg(i), QStringLiteral("n%1").arg(i + 1),
                          QStringLiteral("n%1").arg(i + 2)})
                  .size();
    }
    EXPECT_EQ(kept, round == 0 ? 20001 : 0);
  }
}

}  // namespace
}  // namespace trevane
