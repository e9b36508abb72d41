#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "tests/engine/providers/ProviderBed.h"

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

/// A folder "work" with a file and a folder in it, and beside it a folder "outside" with the same names.
class ConformanceHeldFolder : public ConformanceTest {
 protected:
  void SetUp() override {
    ConformanceTest::SetUp();
    for (const QString& folder : {u"work"_s, u"outside"_s}) {
      Files().CreateFolder(At(folder));
      Files().CreateFolder(At(folder + u"\\sub"_s));
      Files().Write(At(folder + u"\\f"_s), "content");
    }
  }
  /// A link in the place of an item; false where there are no links.
  bool PutLink(const QString& item, const QString& target) {
    if (!Bed().MakeLink(At(u"probe"_s), At(u"outside\\f"_s))) {
      return false;
    }
    Files().Rename(At(item), At(u"away"_s), false);
    return Bed().MakeLink(At(item), At(target));
  }
};

TEST_P(ConformanceHeldFolder, WorksOnWhatIsInIt) {
  const auto held = Files().Hold(At(u"work"_s));
  EXPECT_EQ(held->Path(), At(u"work"_s));
  EXPECT_EQ(held->List().size(), 2U);
  EXPECT_EQ(held->Find(u"missing"_s), std::nullopt);
  const auto seen = held->Find(u"f"_s);
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->entry.size, 7);
  EXPECT_EQ(seen->identity, Files().Identity(At(u"work\\f"_s)));
  EXPECT_EQ(held->Read(u"f"_s), "content");
  held->Replace(u"f"_s, *seen, "other");
  EXPECT_EQ(Files().Read(At(u"work\\f"_s)), "other");
  const auto sub = held->Enter(u"sub"_s);
  EXPECT_EQ(sub->Path(), At(u"work\\sub"_s));
  sub->WriteNew(u"new"_s, "new", {});
  sub->CreateFolder(u"closed"_s, true);
  sub->CreateFolder(u"open"_s, false);
  sub->Flush(u"new"_s);
  EXPECT_EQ(TreeOf(At(u"work\\sub"_s)).size(), 3);
  EXPECT_EQ(ErrorOf([&] { sub->WriteNew(u"new"_s, "x", {}); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { sub->CreateFolder(u"open"_s, false); }), error::kExists);
  const qint32 refused = ErrorOf([&] { held->RemoveAlone(u"sub"_s, *held->Find(u"sub"_s)); });
  // Windows says of what is held before all else that it is in use.
  EXPECT_TRUE(refused == error::kDirectoryNotEmpty || refused == error::kWin32Error + 32) << refused;
  for (const QString& name : {u"new"_s, u"closed"_s, u"open"_s}) {
    sub->RemoveAlone(name, *sub->Find(name));
  }
  EXPECT_TRUE(sub->List().empty());
}

TEST_P(ConformanceHeldFolder, EntersNothingButAFolderOfItsOwn) {
  const auto held = Files().Hold(At(u"work"_s));
  EXPECT_EQ(ErrorOf([&] { (void)held->Enter(u"f"_s); }), providererror::kNotAFolder);
  EXPECT_EQ(ErrorOf([&] { (void)held->Enter(u"missing"_s); }), error::kNotFound);
  if (PutLink(u"work\\sub"_s, u"outside\\sub"_s)) {
    EXPECT_EQ(ErrorOf([&] { (void)held->Enter(u"sub"_s); }), providererror::kNotAFolder);
  }
}

TEST_P(ConformanceHeldFolder, ALinkToAFolderIsFollowedWhereHoldingBegins) {
  if (!PutLink(u"work"_s, u"outside"_s)) {
    GTEST_SKIP() << "no links";
  }
  Files().Hold(At(u"work"_s))->WriteNew(u"new"_s, "new", {});
  EXPECT_EQ(Files().Read(At(u"outside\\new"_s)), "new");
}

TEST_P(ConformanceHeldFolder, RemovesAndReplacesNothingButWhatWasSeen) {
  const auto held = Files().Hold(At(u"work"_s));
  const auto seen = held->Find(u"f"_s);
  Files().Rename(At(u"work\\f"_s), At(u"away"_s), false);
  Files().Write(At(u"work\\f"_s), "foreign");
  EXPECT_EQ(ErrorOf([&] { held->RemoveAlone(u"f"_s, *seen); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { held->Replace(u"f"_s, *seen, "mine"); }), providererror::kChanged);
  EXPECT_EQ(Files().Read(At(u"work\\f"_s)), "foreign");
  // The same file, but later or longer.
  const auto now = held->Find(u"f"_s);
  Files().Write(At(u"work\\f"_s), "foreign and more");
  EXPECT_EQ(ErrorOf([&] { held->RemoveAlone(u"f"_s, *now); }), providererror::kChanged);
  EXPECT_EQ(Files().Read(At(u"work\\f"_s)), "foreign and more");
}

TEST_P(ConformanceHeldFolder, WritesThroughNoLink) {
  const auto held = Files().Hold(At(u"work"_s));
  const auto seen = held->Find(u"f"_s);
  if (!PutLink(u"work\\f"_s, u"outside\\f"_s)) {
    GTEST_SKIP() << "no links";
  }
  EXPECT_NE(ErrorOf([&] { held->Replace(u"f"_s, *seen, "mine"); }), 0);
  EXPECT_NE(ErrorOf([&] { held->Replace(u"f"_s, *held->Find(u"f"_s), "mine"); }), 0);
  EXPECT_EQ(ErrorOf([&] { held->WriteNew(u"f"_s, "mine", {}); }), error::kExists);
  EXPECT_EQ(Files().Read(At(u"outside\\f"_s)), "content");
}

TEST_P(ConformanceHeldFolder, ChangesNothingWhereALinkHasItsPlace) {
  const auto held = Files().Hold(At(u"work"_s));
  const auto sub = held->Enter(u"sub"_s);
  Files().Write(At(u"work\\sub\\f"_s), "mine");
  Files().Write(At(u"outside\\sub\\f"_s), "kept");
  const auto seen = sub->Find(u"f"_s);
  bool linked = false;
  // A file system that keeps others from replacing it will do as well.
  const qint32 refused = ErrorOf([&] { linked = PutLink(u"work\\sub"_s, u"outside\\sub"_s); });
  if (!linked || refused != 0) {
    GTEST_SKIP() << "no links, or none in the place of what is held";
  }
  EXPECT_EQ(ErrorOf([&] { sub->WriteNew(u"new"_s, "x", {}); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { sub->Replace(u"f"_s, *seen, "x"); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { sub->CreateFolder(u"new"_s, false); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { sub->RemoveAlone(u"f"_s, *seen); }), providererror::kChanged);
  EXPECT_EQ(NamesIn(At(u"outside\\sub"_s)), QStringList{u"f"_s});
  EXPECT_EQ(Files().Read(At(u"outside\\sub\\f"_s)), "kept");
  EXPECT_EQ(Files().Read(At(u"away\\f"_s)), "mine");
}

INSTANTIATE_TEST_SUITE_P(All, ConformanceHeldFolder, ::testing::ValuesIn(AllProviders()), NameOfCase);

}  // namespace
}  // namespace trevane::test
