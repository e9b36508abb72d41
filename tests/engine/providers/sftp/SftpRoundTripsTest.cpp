#include "engine/files/FileSystem.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/model/ContentSteps.h"
#include "tests/engine/providers/sftp/RoundTripChannel.h"
#include "tests/engine/providers/sftp/SftpWorld.h"
#include "tests/support/TestFiles.h"

#include <QFile>

namespace trevane::test {
namespace {

/// At 40 ms a round trip: waits are what an operation costs there, whatever the computer.
class SftpRoundTrips : public SftpTest {
 protected:
  [[nodiscard]] std::shared_ptr<FileSystem> OpenCounted() {
    return world_.Open([this](std::unique_ptr<SftpChannel> pipe) {
      return std::make_unique<RoundTripChannel>(std::move(pipe), count_);
    });
  }
  /// Waits within `work`.
  template <class Work>
  [[nodiscard]] int Waits(const Work& work) {
    const int before = count_.waits;
    work();
    RecordProperty("waits", count_.waits - before);
    return count_.waits - before;
  }

  RoundTrips count_;
};

std::vector<NewContent> Batch(const QString& folder, int first, int count) {
  std::vector<NewContent> files;
  for (int i = first; i < first + count; ++i) {
    SinkRequest request;
    request.traits = {.permissions = 0644U, .modified = {1000000000000}};
    files.push_back(
        {folder + u'\\' + QString::number(i), QByteArray(4096, static_cast<char>('a' + i % 26)), request});
  }
  return files;
}

TEST_F(SftpRoundTrips, AServerIsKnownAfterTwo) {
  EXPECT_EQ(Waits([this] { static_cast<void>(OpenCounted()); }), 2);
}

TEST_F(SftpRoundTrips, HundredFilesAreWrittenInTwoBatchesOfFew) {
  const auto files = OpenCounted();
  const auto held = files->Hold(world_.At({}));
  for (const auto& [first, count] : {std::pair(0, 64), std::pair(64, 36)}) {
    std::vector<WriteResult> written;
    EXPECT_LE(Waits([&, first = first, count = count] {
                written = files->WriteMany(Batch(world_.At({}), first, count));
              }),
              4);
    for (const WriteResult& result : written) {
      ASSERT_TRUE(result.item);
      EXPECT_EQ(result.item->entry.size, 4096);
      EXPECT_EQ(result.item->entry.modified, Date{1000000000000});
    }
  }
  EXPECT_EQ(world_.Tree().size(), 100);
}

TEST_F(SftpRoundTrips, HundredFilesAreReadInTwoBatchesOfFew) {
  QStringList paths;
  for (int i = 0; i < 100; ++i) {
    world_.Write(QString::number(i), QByteArray(4096, static_cast<char>('a' + i % 26)));
    paths += world_.At(QString::number(i));
  }
  const auto files = OpenCounted();
  for (const auto& [first, count] : {std::pair(0, 64), std::pair(64, 36)}) {
    std::vector<ReadResult> read;
    EXPECT_LE(Waits([&, first = first, count = count] { read = files->ReadMany(paths.mid(first, count)); }),
              3);
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(read[static_cast<size_t>(i)].content,
                QByteArray(4096, static_cast<char>('a' + (first + i) % 26)));
    }
  }
}

TEST_F(SftpRoundTrips, ManyEntriesAreListedWithAnswersAhead) {
  constexpr int kEntries = 10000;
  for (int i = 0; i < kEntries; ++i) {
    world_.Write(QString::number(i), {});
  }
  const auto files = OpenCounted();
  Listing listing;
  EXPECT_LE(Waits([&] { listing = files->List(world_.At({})); }), 12);
  EXPECT_EQ(listing.size(), static_cast<size_t>(kEntries));
}

TEST_F(SftpRoundTrips, LinksAreFollowedTogether) {
  world_.MakeFolder(QStringLiteral("d"));
  for (int i = 0; i < 500; ++i) {
    ASSERT_TRUE(QFile::link(QStringLiteral("d"), world_.OnDisk(QString::number(i))));
  }
  const auto files = OpenCounted();
  Listing listing;
  EXPECT_LE(Waits([&] { listing = files->List(world_.At({})); }), 5);
  ASSERT_EQ(listing.size(), 501U);
  for (const FileEntry& entry : listing) {
    EXPECT_TRUE(entry.IsFolder());
  }
}

TEST_F(SftpRoundTrips, ALargeFileHasManyBlocksUnderWay) {
  constexpr qsizetype kSize = 16 * 1024 * 1024;
  world_.Write(QStringLiteral("f"), QByteArray(kSize, 'x'));
  const auto files = OpenCounted();
  QByteArray content;
  EXPECT_LE(Waits([&] { content = ReadAll(*files->OpenSource(world_.At(QStringLiteral("f")))); }), 12);
  EXPECT_EQ(content.size(), kSize);
  EXPECT_LE(Waits([&] { WriteNewFile(*files, world_.At(QStringLiteral("g")), content); }), 20);
}

TEST_F(SftpRoundTrips, AFolderOfManyFilesIsRemovedWithRemovalsUnderWay) {
  world_.MakeFolder(QStringLiteral("d/sub"));
  for (int i = 0; i < 200; ++i) {
    world_.Write(QStringLiteral("d/sub/%1").arg(i), "x");
  }
  const auto files = OpenCounted();
  EXPECT_LE(Waits([&] { files->Remove(world_.At(QStringLiteral("d"))); }), 12);
  EXPECT_EQ(world_.Tree(), QStringList());
}

TEST_F(SftpRoundTrips, WhatWasSeenIsRemovedTogether) {
  for (int i = 0; i < 100; ++i) {
    world_.Write(QString::number(i), "x");
  }
  const auto files = OpenCounted();
  const auto held = files->Hold(world_.At({}));
  std::vector<SeenItem> items;
  for (const FileEntry& entry : held->List()) {
    items.push_back({entry, files->Identity(world_.At(entry.name))});
  }
  EXPECT_LE(Waits([&] { held->RemoveMany(items); }), 6);
  EXPECT_EQ(world_.Tree(), QStringList());
}

TEST_F(SftpRoundTrips, AFolderIsMadeAndSeenInOneFlight) {
  const auto files = OpenCounted();
  world_.MakeFolder(QStringLiteral("d"));
  const auto held = files->Hold(world_.At({}))->Enter(QStringLiteral("d"));
  std::optional<SeenItem> made;
  // Before it, the folder itself is looked at.
  EXPECT_LE(Waits([&] { made = held->MakeFolder(QStringLiteral("new"), true); }), 2);
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->entry.IsFolder());
  EXPECT_EQ(made->identity, held->Find(QStringLiteral("new"))->identity);
  EXPECT_THROW(static_cast<void>(held->MakeFolder(QStringLiteral("new"), true)), RunTimeError);
}

TEST_F(SftpRoundTrips, TraitsAreSetAfterOneLook) {
  const auto files = OpenCounted();
  world_.MakeFolder(QStringLiteral("d/new"));
  const auto held = files->Hold(world_.At({}))->Enter(QStringLiteral("d"));
  const std::optional<SeenItem> seen = held->Find(QStringLiteral("new"));
  ASSERT_TRUE(seen);
  EXPECT_LE(Waits([&] { held->SetTraitsOf(*seen, {.permissions = 0700U}); }), 2);
  EXPECT_EQ(held->Traits(QStringLiteral("new")).permissions, 0700U);
}

TEST_F(SftpRoundTrips, TraitsAreNotSetBehindALink) {
  const auto files = OpenCounted();
  world_.MakeFolder(QStringLiteral("d/new"));
  world_.MakeFolder(QStringLiteral("other/new"));
  const auto above = files->Hold(world_.At({}));
  const auto held = above->Enter(QStringLiteral("d"));
  const std::optional<SeenItem> seen = held->Find(QStringLiteral("new"));
  const std::optional<SeenItem> folder = above->Find(QStringLiteral("d"));
  ASSERT_TRUE(seen && folder);
  const FileTraits before = held->Traits(QStringLiteral("new"));
  ASSERT_TRUE(QFile::rename(world_.OnDisk(QStringLiteral("d")), world_.OnDisk(QStringLiteral("moved"))));
  ASSERT_TRUE(QFile::link(QStringLiteral("other"), world_.OnDisk(QStringLiteral("d"))));
  const FileTraits closed{.permissions = 0700U};
  EXPECT_THROW(held->SetTraitsOf(*seen, closed), RunTimeError);
  EXPECT_THROW(above->SetTraitsOf(*folder, closed), RunTimeError);
  EXPECT_THROW(static_cast<void>(held->MakeFolder(QStringLiteral("more"), true)), RunTimeError);
  EXPECT_EQ(files->Traits(world_.At(QStringLiteral("other\\new"))).permissions, before.permissions);
  EXPECT_FALSE(QFile::exists(world_.OnDisk(QStringLiteral("other/more"))));
}

TEST_F(SftpRoundTrips, AnItemAndItsIdentityAreFoundInOne) {
  world_.MakeFolder(QStringLiteral("d"));
  const auto files = OpenCounted();
  const QString path = world_.At(QStringLiteral("d"));
  EXPECT_EQ(Waits([&] {
              EXPECT_TRUE(files->Find(path));
              EXPECT_TRUE(files->Identity(path));
              EXPECT_FALSE(files->FolderIdentities(path).empty());
            }),
            1);
}

TEST_F(SftpRoundTrips, AFolderIsCopiedWithinTheServerInBatches) {
  world_.MakeFolder(QStringLiteral("d/sub"));
  for (int i = 0; i < 100; ++i) {
    world_.Write(QStringLiteral("d/sub/%1").arg(i), QByteArray(4096, static_cast<char>('a' + i % 26)));
  }
  const auto files = OpenCounted();
  QStringList told;
  EXPECT_LE(Waits([&] {
              files->Copy(world_.At(QStringLiteral("d")), world_.At(QStringLiteral("e")), false,
                          [&](const ItemProgress& item) {
                            told += item.name;
                            return true;
                          });
            }),
            40);
  EXPECT_EQ(told.size(), 101);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(ContentOf(world_.OnDisk(QStringLiteral("e/sub/%1").arg(i))),
              QByteArray(4096, static_cast<char>('a' + i % 26)));
  }
}

TEST_F(SftpRoundTrips, ACopyWithinTheServerThatIsCancelledLeavesNothing) {
  world_.MakeFolder(QStringLiteral("d"));
  for (int i = 0; i < 100; ++i) {
    world_.Write(QStringLiteral("d/%1").arg(i), "x");
  }
  const QStringList before = world_.Tree();
  const auto files = OpenCounted();
  int told = 0;
  EXPECT_THROW(files->Copy(world_.At(QStringLiteral("d")), world_.At(QStringLiteral("e")), false,
                           [&](const ItemProgress&) { return ++told < 90; }),
               RunTimeError);
  EXPECT_EQ(world_.Tree(), before);
}

}  // namespace
}  // namespace trevane::test
