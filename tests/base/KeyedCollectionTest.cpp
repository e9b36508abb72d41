#include "base/KeyedCollection.h"

#include <QList>

#include <gtest/gtest.h>

namespace trevane {
namespace {

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
  collection.Add(QStringLiteral("@a"), 10);
  collection.Add(QStringLiteral("@b"), 20);
  EXPECT_EQ(collection.Count(), 2);
  EXPECT_EQ(collection.Item(qint32(1)), 10);
  EXPECT_EQ(collection.Item(qint32(2)), 20);
  EXPECT_EQ(collection.Item(QStringLiteral("@B")), 20);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(collection.Item(qint32(0))); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(collection.Item(qint32(3))); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(collection.Item(QStringLiteral("@c"))); }), error::kNoSuchKey);
}

TEST(KeyedCollectionTest, AFailedAddLeavesItAsItWas) {
  KeyedCollection<int> collection;
  collection.Add(QStringLiteral("@a"), 10);
  EXPECT_EQ(ErrorOf([&] { collection.Add(QStringLiteral("@A"), 11); }), error::kKeyAlreadyThere);
  EXPECT_EQ(ErrorOf([&] { collection.AddBefore(QStringLiteral("@b"), 11, 2); }), error::kOutOfRange);
  EXPECT_EQ(Items(collection), QList<int>{10});
}

TEST(KeyedCollectionTest, AddsInFrontOfAPosition) {
  KeyedCollection<int> collection;
  collection.Add(QStringLiteral("@a"), 10);
  collection.AddBefore(QStringLiteral("@b"), 20, 1);
  collection.AddBefore(QStringLiteral("@c"), 30, 2);
  EXPECT_EQ(Items(collection), (QList<int>{20, 30, 10}));
}

TEST(KeyedCollectionTest, RemovesByKeyAndByPosition) {
  KeyedCollection<int> collection;
  for (int i = 0; i < 4; ++i) {
    collection.Add(QStringLiteral("@%1").arg(i), i);
  }
  collection.Remove(qint32(1));
  collection.Remove(QStringLiteral("@2"));
  EXPECT_EQ(ErrorOf([&] { collection.Remove(QStringLiteral("@2")); }), error::kNoSuchKey);
  EXPECT_EQ(ErrorOf([&] { collection.Remove(qint32(3)); }), error::kOutOfRange);
  EXPECT_EQ(Items(collection), (QList<int>{1, 3}));
  collection.Clear();
  EXPECT_EQ(collection.Count(), 0);
}

}  // namespace
}  // namespace trevane
