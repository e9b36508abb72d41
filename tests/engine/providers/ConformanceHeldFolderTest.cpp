#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ProviderBed.h"

#include <vector>

namespace trevane::test {
namespace {

/// A folder "work" with a file and a folder in it, and beside it a folder "outside" with the same names.
class ConformanceHeldFolder : public ConformanceTest {
 protected:
  void SetUp() override {
    ConformanceTest::SetUp();
    if (IsSkipped()) {
      return;
    }
    for (const QString& folder : {QStringLiteral("work"), QStringLiteral("outside")}) {
      Files().CreateFolder(At(folder));
      Files().CreateFolder(At(folder + QStringLiteral("\\sub")));
      WriteFile(Files(), At(folder + QStringLiteral("\\f")), "content");
    }
  }
  /// Replaces an item by a link; false where there are no links.
  bool PutLink(const QString& item, const QString& target) {
    if (!Bed().MakeLink(At(QStringLiteral("probe")), At(QStringLiteral("outside\\f")))) {
      return false;
    }
    Files().Rename(At(item), At(QStringLiteral("away")), false);
    return Bed().MakeLink(At(item), At(target));
  }
};

TEST_P(ConformanceHeldFolder, ReadsAndChangesItsItems) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  EXPECT_EQ(held->Path(), At(QStringLiteral("work")));
  EXPECT_EQ(held->List().size(), 2U);
  EXPECT_EQ(held->Find(QStringLiteral("missing")), std::nullopt);
  const auto seen = held->Find(QStringLiteral("f"));
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->entry.size, 7);
  EXPECT_EQ(seen->identity, Files().Identity(At(QStringLiteral("work\\f"))));
  EXPECT_EQ(ReadFile(*held, QStringLiteral("f")), "content");
  ReplaceFile(*held, QStringLiteral("f"), *seen, "other");
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("work\\f"))), "other");
  const auto sub = held->Enter(QStringLiteral("sub"));
  EXPECT_EQ(sub->Path(), At(QStringLiteral("work\\sub")));
  WriteNewFile(*sub, QStringLiteral("new"), "new", {});
  sub->CreateFolder(QStringLiteral("closed"), true);
  sub->CreateFolder(QStringLiteral("open"), false);
  sub->Flush(QStringLiteral("new"));
  EXPECT_EQ(TreeOf(At(QStringLiteral("work\\sub"))).size(), 3);
  EXPECT_EQ(ErrorOf([&] { WriteNewFile(*sub, QStringLiteral("new"), "x", {}); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { sub->CreateFolder(QStringLiteral("open"), false); }), error::kExists);
  const qint32 refused =
      ErrorOf([&] { held->RemoveAlone(QStringLiteral("sub"), *held->Find(QStringLiteral("sub"))); });
  // Windows first reports that a held folder is in use.
  EXPECT_TRUE(refused == error::kDirectoryNotEmpty || refused == error::kWin32Error + 32) << refused;
  for (const QString& name : {QStringLiteral("new"), QStringLiteral("closed"), QStringLiteral("open")}) {
    sub->RemoveAlone(name, *sub->Find(name));
  }
  EXPECT_TRUE(sub->List().empty());
}

TEST_P(ConformanceHeldFolder, EntersNothingButAFolderOfItsOwn) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  EXPECT_EQ(ErrorOf([&] { (void)held->Enter(QStringLiteral("f")); }), providererror::kNotAFolder);
  EXPECT_EQ(ErrorOf([&] { (void)held->Enter(QStringLiteral("missing")); }), error::kNotFound);
  if (PutLink(QStringLiteral("work\\sub"), QStringLiteral("outside\\sub"))) {
    EXPECT_EQ(ErrorOf([&] { (void)held->Enter(QStringLiteral("sub")); }), providererror::kNotAFolder);
  }
}

TEST_P(ConformanceHeldFolder, ALinkToAFolderIsFollowedWhereHoldingBegins) {
  if (!PutLink(QStringLiteral("work"), QStringLiteral("outside"))) {
    GTEST_SKIP() << "no links";
  }
  WriteNewFile(*Files().Hold(At(QStringLiteral("work"))), QStringLiteral("new"), "new");
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("outside\\new"))), "new");
}

TEST_P(ConformanceHeldFolder, RemovesAndReplacesOnlyWhatWasSeen) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  const auto seen = held->Find(QStringLiteral("f"));
  if (Bed().Renames()) {
    Files().Rename(At(QStringLiteral("work\\f")), At(QStringLiteral("away")), false);
  } else {
    Files().Remove(At(QStringLiteral("work\\f")));
  }
  WriteFile(Files(), At(QStringLiteral("work\\f")), "foreign");
  if (!TellsItemsApart() && Files().Capabilities().dateStep > 0) {
    // Only its date tells it from the other file of the same size.
    Bed().SetModified(At(QStringLiteral("work\\f")),
                      {seen->entry.modified.msecs + 60000 + 2 * Files().Capabilities().dateStep});
  }
  EXPECT_EQ(ErrorOf([&] { held->RemoveAlone(QStringLiteral("f"), *seen); }), providererror::kChanged);
  // Only identities tell another file from a changed content, which may be replaced.
  if (TellsItemsApart()) {
    EXPECT_EQ(ErrorOf([&] { ReplaceFile(*held, QStringLiteral("f"), *seen, "mine"); }),
              providererror::kChanged);
  }
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("work\\f"))), "foreign");
  // The same file, but later or longer.
  const auto now = held->Find(QStringLiteral("f"));
  WriteFile(Files(), At(QStringLiteral("work\\f")), "foreign and more");
  EXPECT_EQ(ErrorOf([&] { held->RemoveAlone(QStringLiteral("f"), *now); }), providererror::kChanged);
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("work\\f"))), "foreign and more");
}

TEST_P(ConformanceHeldFolder, WritesThroughNoLink) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  const auto seen = held->Find(QStringLiteral("f"));
  if (!PutLink(QStringLiteral("work\\f"), QStringLiteral("outside\\f"))) {
    GTEST_SKIP() << "no links";
  }
  EXPECT_NE(ErrorOf([&] { ReplaceFile(*held, QStringLiteral("f"), *seen, "mine"); }), 0);
  EXPECT_NE(
      ErrorOf([&] { ReplaceFile(*held, QStringLiteral("f"), *held->Find(QStringLiteral("f")), "mine"); }), 0);
  EXPECT_EQ(ErrorOf([&] { WriteNewFile(*held, QStringLiteral("f"), "mine", {}); }), error::kExists);
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("outside\\f"))), "content");
}

TEST_P(ConformanceHeldFolder, ChangesNothingWhenALinkReplacesIt) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  const auto sub = held->Enter(QStringLiteral("sub"));
  WriteFile(Files(), At(QStringLiteral("work\\sub\\f")), "mine");
  WriteFile(Files(), At(QStringLiteral("outside\\sub\\f")), "kept");
  const auto seen = sub->Find(QStringLiteral("f"));
  bool linked = false;
  // A file system may also prevent its replacement.
  const qint32 refused =
      ErrorOf([&] { linked = PutLink(QStringLiteral("work\\sub"), QStringLiteral("outside\\sub")); });
  if (!linked || refused != 0) {
    GTEST_SKIP() << "no links, or none in the place of what is held";
  }
  EXPECT_EQ(ErrorOf([&] { WriteNewFile(*sub, QStringLiteral("new"), "x", {}); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { ReplaceFile(*sub, QStringLiteral("f"), *seen, "x"); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { sub->CreateFolder(QStringLiteral("new"), false); }), providererror::kChanged);
  EXPECT_EQ(ErrorOf([&] { sub->RemoveAlone(QStringLiteral("f"), *seen); }), providererror::kChanged);
  EXPECT_EQ(NamesIn(At(QStringLiteral("outside\\sub"))), QStringList{QStringLiteral("f")});
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("outside\\sub\\f"))), "kept");
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("away\\f"))), "mine");
}

std::vector<NewContent> ThreeFiles() {
  return {
      {QStringLiteral("1"), "one", {}}, {QStringLiteral("2"), {}, {}}, {QStringLiteral("3"), "three", {}}};
}

TEST_P(ConformanceHeldFolder, ABatchIsWrittenAndRead) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  const auto sub = held->Enter(QStringLiteral("sub"));
  for (HeldFolder* folder : {held.get(), sub.get()}) {
    const std::vector<NewContent> files = ThreeFiles();
    const std::vector<WriteResult> written = folder->WriteMany(files);
    const std::vector<ReadResult> read =
        folder->ReadMany({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    ASSERT_EQ(written.size(), 3U);
    ASSERT_EQ(read.size(), 3U);
    for (size_t i = 0; i < 3; ++i) {
      ASSERT_TRUE(written[i].item);
      const auto there = folder->Find(files[i].name);
      ASSERT_TRUE(there);
      EXPECT_EQ(written[i].item->entry.name, there->entry.name);
      EXPECT_EQ(written[i].item->entry.size, there->entry.size);
      EXPECT_EQ(read[i].content, files[i].content);
    }
  }
  EXPECT_EQ(NamesIn(At(QStringLiteral("work\\sub"))),
            (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
}

TEST_P(ConformanceHeldFolder, ABatchReplacesNothingAndEndsThere) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  WriteFile(Files(), At(QStringLiteral("work\\2")), "theirs");
  const std::vector<WriteResult> written = held->WriteMany(ThreeFiles());
  ASSERT_EQ(written.size(), 3U);
  EXPECT_TRUE(written[0].item);
  ASSERT_TRUE(written[1].failure);
  EXPECT_EQ(written[1].failure->Number(), error::kExists);
  EXPECT_FALSE(written[2].item || written[2].failure);
  EXPECT_EQ(NamesIn(At(QStringLiteral("work"))), (QStringList{QStringLiteral("1"), QStringLiteral("2"),
                                                              QStringLiteral("f"), QStringLiteral("sub")}));
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("work\\2"))), "theirs");
}

TEST_P(ConformanceHeldFolder, ABatchOfAMissingFileIsReadUpToIt) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  const std::vector<ReadResult> read =
      held->ReadMany({QStringLiteral("f"), QStringLiteral("missing"), QStringLiteral("f")});
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0].content, QByteArray("content"));
  ASSERT_TRUE(read[1].failure);
  EXPECT_EQ(read[1].failure->Number(), error::kNotFound);
  EXPECT_FALSE(read[2].content || read[2].failure);
}

TEST_P(ConformanceHeldFolder, ABatchIsNotWrittenWhereALinkHasReplacedTheFolder) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  const auto sub = held->Enter(QStringLiteral("sub"));
  bool linked = false;
  const qint32 refused =
      ErrorOf([&] { linked = PutLink(QStringLiteral("work\\sub"), QStringLiteral("outside\\sub")); });
  if (!linked || refused != 0) {
    GTEST_SKIP() << "no links, or none in the place of what is held";
  }
  // Either the batch fails as a whole, or its first file does.
  const qint32 failed = ErrorOf([&] {
    const std::vector<WriteResult> written = sub->WriteMany(ThreeFiles());
    EXPECT_FALSE(written[0].item || written[1].item || written[2].item);
    if (written[0].failure) {
      throw *written[0].failure;
    }
  });
  EXPECT_EQ(failed, providererror::kChanged);
  EXPECT_EQ(NamesIn(At(QStringLiteral("outside\\sub"))), QStringList());
  EXPECT_EQ(NamesIn(At(QStringLiteral("away"))), QStringList());
}

TEST_P(ConformanceHeldFolder, ABatchReplacesFilesAndMakesThoseThatAreMissing) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  for (const int old : {1, 2}) {
    WriteFile(Files(), At(QStringLiteral("work\\%1").arg(old)), "an old content");
  }
  std::vector<NewContent> files = ThreeFiles();
  for (NewContent& file : files) {
    file.request.mode = SinkRequest::Mode::Replace;
  }
  const std::vector<WriteResult> written = held->WriteMany(files);
  ASSERT_EQ(written.size(), 3U);
  for (size_t i = 0; i < 3; ++i) {
    ASSERT_TRUE(written[i].item) << i;
    EXPECT_EQ(written[i].item->entry.size, files[i].content.size());
    EXPECT_EQ(ReadFile(*held, files[i].name), files[i].content);
  }
  EXPECT_EQ(NamesIn(At(QStringLiteral("work"))).size(), 5);
}

TEST_P(ConformanceHeldFolder, ABatchNeitherReplacesAFolderNorWritesThroughALink) {
  const auto held = Files().Hold(At(QStringLiteral("work")));
  // A few are looked at one by one, many by one listing.
  for (const int others : {0, 6}) {
    SCOPED_TRACE(others);
    QStringList refused{QStringLiteral("sub")};
    const QString link = QStringLiteral("link%1").arg(others);
    if (Bed().MakeLink(At(QStringLiteral("work\\") + link), At(QStringLiteral("outside\\f")))) {
      refused += link;
    }
    for (const QString& name : refused) {
      std::vector<NewContent> files;
      files.reserve(static_cast<std::size_t>(others) + 1);
      for (int i = 0; i < others; ++i) {
        files.push_back({QString::number(i), "new", {.mode = SinkRequest::Mode::Replace}});
      }
      files.push_back({name, "through", {.mode = SinkRequest::Mode::Replace}});
      const std::vector<WriteResult> written = held->WriteMany(files);
      ASSERT_EQ(written.size(), files.size());
      ASSERT_TRUE(written.back().failure) << name.toStdString();
      EXPECT_EQ(written.back().failure->Number(), error::kExists) << name.toStdString();
    }
  }
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("outside\\f"))), "content");
}

INSTANTIATE_TEST_SUITE_P(All, ConformanceHeldFolder, ::testing::ValuesIn(AllProviders()), NameOfCase);

}  // namespace
}  // namespace trevane::test
