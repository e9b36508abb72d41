#include "engine/substitute/FolderListing.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

Listing Entries(const QStringList& names) {
  Listing entries;
  for (const QString& name : names) {
    FileEntry entry;
    entry.name = name;
    entry.size = static_cast<qint64>(entries.size());
    entries.push_back(entry);
  }
  return entries;
}

TEST(FolderListingTest, KeepsTheOrderAndDropsANameThatComesTwice) {
  FolderListing listing(Entries({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b"),
                                 QStringLiteral("B"), QStringLiteral("c"), QStringLiteral("a")}));
  EXPECT_EQ(listing.Names(), (QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("B"),
                                          QStringLiteral("c")}));
  EXPECT_EQ(listing.Entries()[3].size, 4);
}

TEST(FolderListingTest, FindsNamesInOrderOutOfOrderAndNotAtAll) {
  QStringList names;
  for (int i = 0; i < 1000; ++i) {
    names.append(QStringLiteral("file%1").arg(i));
  }
  FolderListing listing(Entries(names));
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(listing.Find(names[i], Qt::CaseSensitive), static_cast<size_t>(i));
  }
  for (int i = 999; i >= 0; --i) {
    EXPECT_EQ(listing.Find(names[i], Qt::CaseSensitive), static_cast<size_t>(i));
  }
  EXPECT_EQ(listing.Find(QStringLiteral("file1000"), Qt::CaseSensitive), std::nullopt);
  EXPECT_EQ(listing.Find(QStringLiteral(""), Qt::CaseSensitive), std::nullopt);
}

TEST(FolderListingTest, PrefersTheExactNameWhereCaseDoesNotMatter) {
  FolderListing listing(Entries({QStringLiteral("README"), QStringLiteral("readme"), QStringLiteral("ÄÖ")}));
  EXPECT_EQ(listing.Find(QStringLiteral("readme"), Qt::CaseInsensitive), 1U);
  EXPECT_EQ(listing.Find(QStringLiteral("Readme"), Qt::CaseInsensitive), 0U);
  EXPECT_EQ(listing.Find(QStringLiteral("äö"), Qt::CaseInsensitive), 2U);
  EXPECT_EQ(listing.Find(QStringLiteral("äö"), Qt::CaseSensitive), std::nullopt);
}

TEST(FolderListingTest, FindsBothFilesThatOnlyFoldingMakesEqual) {
  FolderListing listing(
      Entries({QStringLiteral("\u017Fet"), QStringLiteral("set"), QStringLiteral("\u00B5m")}));
  EXPECT_EQ(listing.Find(QStringLiteral("SET"), Qt::CaseInsensitive), 1U);
  EXPECT_EQ(listing.Find(QStringLiteral("\u017FET"), Qt::CaseInsensitive), 0U);
  EXPECT_EQ(listing.Find(QStringLiteral("\u03BCm"), Qt::CaseInsensitive), std::nullopt);
}

TEST(FolderListingTest, HoldsNamesThatAreNotValidText) {
  const QString lone = QStringLiteral("a") + QChar(0xDC80) + QStringLiteral("b");
  FolderListing listing(Entries({lone, QStringLiteral("a") + QChar(0xDC81) + QStringLiteral("b")}));
  EXPECT_EQ(listing.Entries().size(), 2U);
  EXPECT_EQ(listing.Find(lone, Qt::CaseSensitive), 0U);
}

TEST(FolderListingTest, OfAnEmptyFolderHasNothing) {
  FolderListing listing({});
  EXPECT_TRUE(listing.Names().isEmpty());
  EXPECT_EQ(listing.Find(QStringLiteral("a"), Qt::CaseSensitive), std::nullopt);
}

}  // namespace
}  // namespace trevane
