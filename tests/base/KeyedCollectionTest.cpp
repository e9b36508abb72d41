#include "base/KeyedCollection.h"

#include <QList>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

template <class Work>
qint32 ErrorOf(const Work& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

QList<int> Items(const KeyedCollection<int>& collection) {
  QList<int> items;
  for (const int item : collection) {
    items.append(item);
  }
  return items;
}

TEST(KeyedCollectionTest, KeepsTheOrderAndCountsPositionsFromOne) {
  KeyedCollection<int> collection;
  collection.Add(u"@a"_s, 10);
  collection.Add(u"@b"_s, 20);
  EXPECT_EQ(collection.Count(), 2);
  EXPECT_EQ(collection.Item(qint32(1)), 10);
  EXPECT_EQ(collection.Item(qint32(2)), 20);
  EXPECT_EQ(collection.Item(u"@B"_s), 20);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(collection.Item(qint32(0))); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(collection.Item(qint32(3))); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(collection.Item(u"@c"_s)); }), error::kNoSuchKey);
}

TEST(KeyedCollectionTest, AFailedAddLeavesItAsItWas) {
  KeyedCollection<int> collection;
  collection.Add(u"@a"_s, 10);
  EXPECT_EQ(ErrorOf([&] { collection.Add(u"@A"_s, 11); }), error::kKeyAlreadyThere);
  EXPECT_EQ(ErrorOf([&] { collection.AddBefore(u"@b"_s, 11, 2); }), error::kOutOfRange);
  EXPECT_EQ(Items(collection), QList<int>{10});
}

TEST(KeyedCollectionTest, AddsInFrontOfAPosition) {
  KeyedCollection<int> collection;
  collection.Add(u"@a"_s, 10);
  collection.AddBefore(u"@b"_s, 20, 1);
  collection.AddBefore(u"@c"_s, 30, 2);
  EXPECT_EQ(Items(collection), (QList<int>{20, 30, 10}));
}

TEST(KeyedCollectionTest, RemovesByKeyAndByPosition) {
  KeyedCollection<int> collection;
  for (int i = 0; i < 4; ++i) {
    collection.Add(u"@%1"_s.arg(i), i);
  }
  collection.Remove(qint32(1));
  collection.Remove(u"@2"_s);
  EXPECT_EQ(ErrorOf([&] { collection.Remove(u"@2"_s); }), error::kNoSuchKey);
  EXPECT_EQ(ErrorOf([&] { collection.Remove(qint32(3)); }), error::kOutOfRange);
  EXPECT_EQ(Items(collection), (QList<int>{1, 3}));
  collection.Clear();
  EXPECT_EQ(collection.Count(), 0);
}

}  // namespace
}  // namespace trevane
