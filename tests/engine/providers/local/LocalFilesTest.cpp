#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/engine/providers/local/LocalWorld.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>

namespace trevane::test {
namespace {

/// Tests of the local files that apply to every system. Links are used where they can be created.
class LocalFilesTest : public ::testing::Test {
 protected:
  LocalFileSystem& Files() { return world_.Files(); }
  void Put(const char* below, const QByteArray& content) {
    QFile file(world_.Root() + QString::fromUtf8(below));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
  }
  [[nodiscard]] QStringList Names(const QString& folder) { return NamesIn(Files(), folder); }
  [[nodiscard]] bool IsThere(const QString& path) {
    return ErrorOf([&] { (void)Files().Stat(path); }) != error::kNotFound;
  }

  LocalWorld world_;
};

const QString kTop = QStringLiteral("C:");

TEST_F(LocalFilesTest, ADriveWhoseRootIsGoneIsNotReady) {
  world_.Drives().Set(
      {{kTop, world_.Root(), drivetype::kFixed},
       {QStringLiteral("D:"), world_.Root() + QStringLiteral("gone/"), drivetype::kRemovable}});
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(QStringLiteral("D:")); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorTextOf([&] { (void)Files().List(QStringLiteral("D:")); }),
            QStringLiteral("The device is not ready: D:"));
}

TEST_F(LocalFilesTest, TheRootOfAControllerMayBeTypedAsPeopleWritePaths) {
  Files().CreateFolder(QStringLiteral("C:\\d e"));
  for (const QString& typed : {QStringLiteral("\"C:\\d e\""), QStringLiteral("C:/x/../d e/"),
                               QStringLiteral("\\\\?\\C:\\d e"), QStringLiteral("file:///C:/d%20e")}) {
    EXPECT_TRUE(Files().Stat(Files().PathFromText(typed)).IsFolder()) << typed.toStdString();
  }
}

TEST_F(LocalFilesTest, UnreachableSharesFail) {
  Files().CreateFolder(QStringLiteral("C:\\server.invalid"));
  Files().CreateFolder(QStringLiteral("C:\\server.invalid\\share"));
  const QString share = QStringLiteral("\\\\server.invalid\\share");
  for (const QString& path : {share, share + QStringLiteral("\\f")}) {
    const qint32 number = ErrorOf([&] { (void)Files().Stat(path); });
    EXPECT_NE(number, 0);
    EXPECT_NE(number, error::kNotFound);
    EXPECT_TRUE(ErrorTextOf([&] { (void)Files().Stat(path); }).contains(share));
    EXPECT_NE(ErrorOf([&] { (void)Files().List(path); }), 0);
    EXPECT_NE(ErrorOf([&] { WriteFile(Files(), path, "x"); }), 0);
  }
  EXPECT_TRUE(Names(QStringLiteral("C:\\server.invalid\\share")).isEmpty());
}

TEST_F(LocalFilesTest, NothingIsFoundMissingOnADriveWhoseRootIsGone) {
  world_.Drives().Set(
      {{kTop, world_.Root(), drivetype::kFixed},
       {QStringLiteral("D:"), world_.Root() + QStringLiteral("gone/"), drivetype::kRemovable}});
  const QString f = QStringLiteral("D:\\d\\f");
  EXPECT_EQ(ErrorOf([&] { (void)Files().Stat(f); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(f); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), f, "x"); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorOf([&] { Files().Remove(QStringLiteral("D:\\f")); }), error::kDeviceNotReady);
}

TEST_F(LocalFilesTest, ANewFileIsNotWrittenOverWhatHasItsName) {
  Put("f", "theirs");
  Files().CreateFolder(QStringLiteral("d"));
  QStringList names{QStringLiteral("d"), QStringLiteral("f")};
  if (world_.MakeLink("l", "nowhere")) {
    names.append(QStringLiteral("l"));
  }
  for (const QString& name : std::as_const(names)) {
    EXPECT_EQ(ErrorOf([&] { WriteNewFile(Files(), name, "ours", {}); }), error::kExists);
  }
  WriteNewFile(Files(), QStringLiteral("new"), "ours", {});
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("f")), QByteArray("theirs"));
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("new")), QByteArray("ours"));
  names.append(QStringLiteral("new"));
  EXPECT_EQ(Names(kTop), names);
}

TEST_F(LocalFilesTest, NewFilesAreRecognizedByTheirStamp) {
  const auto stamp = WriteNewFile(Files(), QStringLiteral("f"), "content", {});
  const FileEntry entry = Files().Stat(QStringLiteral("f"));
  EXPECT_EQ(stamp.entry.size, 7);
  EXPECT_EQ(stamp.entry.modified, entry.modified);
  EXPECT_EQ(stamp.identity, Files().Identity(QStringLiteral("f")));
  // A file of another program in its place has another stamp.
  Put("theirs", "CONTENT");
  Files().Rename(QStringLiteral("theirs"), QStringLiteral("f"), true);
  EXPECT_NE(stamp.identity, Files().Identity(QStringLiteral("f")));
}

TEST_F(LocalFilesTest, ANewFileHasTheTraitsOfItsSource) {
  WriteFile(Files(), QStringLiteral("f"), "content");
  const FileTraits traits = Files().Traits(QStringLiteral("f"));
  EXPECT_TRUE(traits.permissions || traits.marks);
  WriteNewFile(Files(), QStringLiteral("g"), "content", traits);
  const FileTraits copied = Files().Traits(QStringLiteral("g"));
  EXPECT_EQ(copied.permissions, traits.permissions);
  EXPECT_EQ(copied.marks, traits.marks);
  // Wine stores no creation times.
  if (!RunsUnderWine()) {
    EXPECT_EQ(copied.created, traits.created);
  }
  EXPECT_EQ(ErrorOf([&] { (void)Files().Traits(QStringLiteral("missing")); }), error::kNotFound);
}

TEST_F(LocalFilesTest, ExecutingAFileOpensItByItsNativePath) {
  QString opened;
  LocalFileSystem files(world_.Drives(), [&opened](const QString& path) { opened = path; });
  Put("a b", "x");
  EXPECT_TRUE(files.Capabilities().execute);
  (void)files.Execute(QStringLiteral("C:\\a b"), {}, Missing());
  EXPECT_EQ(opened, QDir::toNativeSeparators(world_.Root() + QStringLiteral("a b")));
  EXPECT_EQ(ErrorOf([&] { (void)files.Execute(QStringLiteral("a b"), QStringLiteral("print"), Missing()); }),
            error::kNotSupported);
  EXPECT_EQ(ErrorOf([&] { (void)files.Execute(QStringLiteral("missing"), {}, Missing()); }),
            error::kNotFound);
}

TEST_F(LocalFilesTest, FilesMayAppearAndVanishDuringAListing) {
  for (int i = 0; i < 200; ++i) {
    Put(("stays " + QByteArray::number(i)).constData(), {});
  }
  std::atomic<bool> done{false};
  const QString flicker = world_.Root() + QStringLiteral("flicker");
  std::thread other([&] {
    while (!done) {
      QFile file(flicker);
      file.open(QIODevice::WriteOnly);
      file.close();
      file.remove();
    }
  });
  for (int i = 0; i < 100; ++i) {
    EXPECT_GE(Files().List(kTop).size(), 200U);
  }
  done = true;
  other.join();
}

TEST_F(LocalFilesTest, TreesMoveAcrossVolumesAsAWhole) {
  if (!world_.AddOtherVolume()) {
    GTEST_SKIP() << "no other volume here";
  }
  world_.MakeTree(QStringLiteral("C:\\d"));
  const bool hasLink = world_.MakeLink("d/link", "d/a");
  MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\e"), false);
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("D:\\e")));
  if (hasLink) {
    EXPECT_TRUE(Files().Stat(QStringLiteral("D:\\e\\link")).IsLink());
  }
  EXPECT_TRUE(Files().List(kTop).empty());
  WriteFile(Files(), QStringLiteral("C:\\f"), "new");
  WriteFile(Files(), QStringLiteral("D:\\f"), "old");
  EXPECT_EQ(ErrorOf([&] { MoveItem(Files(), QStringLiteral("C:\\f"), QStringLiteral("D:\\f"), false); }),
            error::kExists);
  MoveItem(Files(), QStringLiteral("C:\\f"), QStringLiteral("D:\\f"), true);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("D:\\f")), QByteArray("new"));
  EXPECT_TRUE(Files().List(kTop).empty());
}

TEST_F(LocalFilesTest, AMoveAcrossVolumesNeverMergesFolders) {
  if (!world_.AddOtherVolume()) {
    GTEST_SKIP() << "no other volume here";
  }
  world_.MakeTree(QStringLiteral("C:\\d"));
  Files().CreateFolder(QStringLiteral("D:\\full"));
  WriteFile(Files(), QStringLiteral("D:\\full\\f"), "x");
  Files().CreateFolder(QStringLiteral("D:\\empty"));
  EXPECT_EQ(ErrorOf([&] { MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\full"), true); }),
            error::kDirectoryNotEmpty);
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("C:\\d")));
  MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\empty"), true);
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("D:\\empty")));
  EXPECT_FALSE(IsThere(QStringLiteral("C:\\d")));
}

TEST_F(LocalFilesTest, FoldersWithHardLinksMoveAcrossVolumes) {
  if (!world_.AddOtherVolume()) {
    GTEST_SKIP() << "no other volume here";
  }
  world_.MakeTree(QStringLiteral("C:\\d"));
  ASSERT_TRUE(world_.MakeHardLink("d/again", "d/a"));
  ASSERT_TRUE(world_.MakeHardLink("d/sub/third", "d/a"));
  MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\d"), false);
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("D:\\d")));
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("D:\\d\\sub\\third")), QByteArray("content of a"));
  EXPECT_TRUE(Files().List(kTop).empty());
}

TEST_F(LocalFilesTest, AMergeSkipsAnotherNameOfTheSameFile) {
  world_.MakeTree(QStringLiteral("C:\\d"));
  Files().CreateFolder(QStringLiteral("C:\\e"));
  ASSERT_TRUE(world_.MakeHardLink("e/a", "d/a"));
  Files().CreateFolder(QStringLiteral("C:\\e\\sub"));
  WriteFile(Files(), QStringLiteral("C:\\e\\sub\\b"), "old");
  Files().Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), true);
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("C:\\e")));
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("C:\\d")));
}

TEST_F(LocalFilesTest, TwoHardLinksAreOneItem) {
  WriteFile(Files(), QStringLiteral("f"), "x");
  QStringList names{QStringLiteral("g")};
  if (Files().Capabilities().caseSensitive) {
    names.append(QStringLiteral("F"));
  }
  for (const QString& name : std::as_const(names)) {
    ASSERT_TRUE(world_.MakeHardLink(name.toUtf8().constData(), "f"));
    EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("f"), name, true); }), error::kInvalidParameter);
    EXPECT_EQ(ErrorOf([&] { Files().Rename(QStringLiteral("f"), name, true); }), error::kInvalidParameter);
  }
  EXPECT_EQ(Files().List(kTop).size(), static_cast<std::size_t>(names.size()) + 1);
  WriteFile(Files(), QStringLiteral("f"), "new");
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("g")), QByteArray("x"));
  Files().Remove(QStringLiteral("g"));
  for (const QString& name : names.mid(1)) {
    EXPECT_EQ(ReadFile(Files(), name), QByteArray("x"));
  }
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("f")), QByteArray("new"));
}

TEST_F(LocalFilesTest, CopyNeverFollowsALinkToAFolder) {
  world_.MakeTree(QStringLiteral("C:\\keep"));
  Files().CreateFolder(QStringLiteral("C:\\d"));
  if (!world_.MakeLink("d/l", "keep")) {
    GTEST_SKIP() << "no links here";
  }
  Files().CreateFolder(QStringLiteral("C:\\e"));
  Files().CreateFolder(QStringLiteral("C:\\e\\l"));
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d"), QStringLiteral("e"), true); }), error::kExists);
  EXPECT_TRUE(Files().List(QStringLiteral("e\\l")).empty());
  // The reverse: a folder is not merged into the target of a link with its name.
  Files().CreateFolder(QStringLiteral("C:\\from"));
  Files().CreateFolder(QStringLiteral("C:\\from\\l"));
  WriteFile(Files(), QStringLiteral("C:\\from\\l\\f"), "x");
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("from"), QStringLiteral("d"), true); }),
            error::kExists);
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("C:\\keep")));
  EXPECT_EQ(Files().List(QStringLiteral("keep")).size(), 2U);
}

TEST_F(LocalFilesTest, ALargeFileIsCopiedWhole) {
  QByteArray content(8 * 1024 * 1024 + 13, Qt::Uninitialized);
  for (qsizetype i = 0; i < content.size(); ++i) {
    content[i] = static_cast<char>(i * 31 >> 3);
  }
  WriteFile(Files(), QStringLiteral("f"), content);
  Files().Copy(QStringLiteral("f"), QStringLiteral("g"), false);
  EXPECT_TRUE(ReadFile(Files(), QStringLiteral("g")) == content);
  if (world_.AddOtherVolume()) {
    Files().Copy(QStringLiteral("C:\\f"), QStringLiteral("D:\\f"), false);
    EXPECT_TRUE(ReadFile(Files(), QStringLiteral("D:\\f")) == content);
  }
}

TEST_F(LocalFilesTest, ALargeFileIsReportedWhileItIsCopied) {
  constexpr qint64 kMostUnreported = 16 * 1024 * 1024;
  const qint64 size = 3 * kMostUnreported + 5;
  Put("f", QByteArray(size, 'x'));
  qint64 last = 0;
  int told = 0;
  const ItemObserver observer = [&](const ItemProgress& item) {
    ++told;
    EXPECT_EQ(item.name, QStringLiteral("f"));
    EXPECT_EQ(item.size, size);
    EXPECT_GT(item.bytes, last);
    EXPECT_LE(item.bytes - last, kMostUnreported);
    last = item.bytes;
    return true;
  };
  Files().Copy(QStringLiteral("f"), QStringLiteral("g"), false, observer);
  EXPECT_EQ(Files().Stat(QStringLiteral("g")).size, size);
  if (told == 0) {
    GTEST_SKIP() << "the file system clones, or the system tells nothing";
  }
  EXPECT_LE(size - last, kMostUnreported);
}

TEST_F(LocalFilesTest, CancelInsideAFileLeavesNothingOfIt) {
  Put("f", QByteArray(40 * 1024 * 1024, 'x'));
  Put("old", "old");
  for (const bool replace : {false, true}) {
    int told = 0;
    const ItemObserver observer = [&told](const ItemProgress& item) {
      ++told;
      return item.bytes < 20 * 1024 * 1024;
    };
    const qint32 result = ErrorOf([&] {
      Files().Copy(QStringLiteral("f"), replace ? QStringLiteral("old") : QStringLiteral("g"), replace,
                   observer);
    });
    if (told == 0) {
      GTEST_SKIP() << "the file system clones, or the system tells nothing";
    }
    EXPECT_EQ(result, error::kCancelled);
  }
  EXPECT_EQ(NamesIn(Files(), QStringLiteral("C:")),
            (QStringList{QStringLiteral("f"), QStringLiteral("old")}));
  EXPECT_EQ(Files().Stat(QStringLiteral("old")).size, 3);
}

TEST_F(LocalFilesTest, ASourceEndsWhereAShrunkFileEnds) {
  Put("f", QByteArray(100000, 'x'));
  const auto source = Files().OpenSource(QStringLiteral("C:\\f"));
  EXPECT_EQ(source->Read(10000).size(), 10000);
  ASSERT_TRUE(QFile::resize(world_.Root() + QStringLiteral("f"), 15000));
  EXPECT_EQ(source->Read(10000).size(), 5000);
  EXPECT_EQ(source->Read(10000), QByteArray());
}

TEST_F(LocalFilesTest, ASourceReadsWhatAFileGrowsBy) {
  Put("f", "short");
  const auto source = Files().OpenSource(QStringLiteral("C:\\f"));
  EXPECT_EQ(source->Read(10000), "short");
  Put("f", "short and more");
  EXPECT_EQ(source->Read(10000), " and more");
  EXPECT_EQ(source->Read(10000), QByteArray());
}

TEST_F(LocalFilesTest, AnObserverCanCancelACopy) {
  Files().CreateFolder(QStringLiteral("d"));
  for (int i = 0; i < 5; ++i) {
    Put(("d/" + QByteArray::number(i)).constData(), "x");
  }
  int told = 0;
  const ItemObserver observer = [&told](const ItemProgress&) { return ++told < 3; };
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d"), QStringLiteral("e"), false, observer); }),
            error::kCancelled);
  EXPECT_EQ(told, 3);
  EXPECT_EQ(Names(kTop), QStringList{QStringLiteral("d")});
}

}  // namespace
}  // namespace trevane::test
