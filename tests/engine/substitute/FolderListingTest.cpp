#include "engine/substitute/FolderListing.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

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
  FolderListing listing(Entries({u"b"_s, u"a"_s, u"b"_s, u"B"_s, u"c"_s, u"a"_s}));
  EXPECT_EQ(listing.Names(), (QStringList{u"b"_s, u"a"_s, u"B"_s, u"c"_s}));
  EXPECT_EQ(listing.Entries()[3].size, 4);
}

TEST(FolderListingTest, FindsNamesInOrderOutOfOrderAndNotAtAll) {
  QStringList names;
  for (int i = 0; i < 1000; ++i) {
    names.append(u"file%1"_s.arg(i));
  }
  FolderListing listing(Entries(names));
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(listing.Find(names[i], Qt::CaseSensitive), static_cast<size_t>(i));
  }
  for (int i = 999; i >= 0; --i) {
    EXPECT_EQ(listing.Find(names[i], Qt::CaseSensitive), static_cast<size_t>(i));
  }
  EXPECT_EQ(listing.Find(u"file1000"_s, Qt::CaseSensitive), std::nullopt);
  EXPECT_EQ(listing.Find(u""_s, Qt::CaseSensitive), std::nullopt);
}

TEST(FolderListingTest, PrefersTheExactNameWhereCaseTellsNothingApart) {
  FolderListing listing(Entries({u"README"_s, u"readme"_s, u"ÄÖ"_s}));
  EXPECT_EQ(listing.Find(u"readme"_s, Qt::CaseInsensitive), 1U);
  EXPECT_EQ(listing.Find(u"Readme"_s, Qt::CaseInsensitive), 0U);
  EXPECT_EQ(listing.Find(u"äö"_s, Qt::CaseInsensitive), 2U);
  EXPECT_EQ(listing.Find(u"äö"_s, Qt::CaseSensitive), std::nullopt);
}

TEST(FolderListingTest, HoldsNamesThatAreNoValidText) {
  const QString lone = u"a"_s + QChar(0xDC80) + u"b"_s;
  FolderListing listing(Entries({lone, u"a"_s + QChar(0xDC81) + u"b"_s}));
  EXPECT_EQ(listing.Entries().size(), 2U);
  EXPECT_EQ(listing.Find(lone, Qt::CaseSensitive), 0U);
}

TEST(FolderListingTest, OfAnEmptyFolderHasNothing) {
  FolderListing listing({});
  EXPECT_TRUE(listing.Names().isEmpty());
  EXPECT_EQ(listing.Find(u"a"_s, Qt::CaseSensitive), std::nullopt);
}

}  // namespace
}  // namespace trevane
