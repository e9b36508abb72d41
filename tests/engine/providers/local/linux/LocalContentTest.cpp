#include "engine/files/HeldFolder.h"
#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/engine/providers/local/LocalWorld.h"
#include "tests/engine/providers/local/linux/InterruptedCalls.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/SmallDisk.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace trevane::test {
namespace {

const QString kTop = QStringLiteral("C:");

// The content and the permissions of a file between system calls.
class LocalContentTest : public ::testing::Test {
 protected:
  LocalFileSystem& Files() { return world_.Files(); }
  [[nodiscard]] QByteArray Native(const char* below) const { return world_.Native(below); }
  void Put(const char* below, const QByteArray& content, mode_t mode = 0644) {
    QFile file(QFile::decodeName(Native(below)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
    file.close();
    ASSERT_EQ(::chmod(Native(below).constData(), mode), 0);
  }
  [[nodiscard]] mode_t ModeOf(const char* below) const {
    struct stat status {};
    EXPECT_EQ(::lstat(Native(below).constData(), &status), 0) << below;
    return status.st_mode & 07777;
  }
  [[nodiscard]] QStringList Names() { return NamesIn(Files(), kTop); }

  LocalWorld world_;
  CallsReset reset_;
};

TEST_F(LocalContentTest, AFileThatShrinksWhileItIsCopiedIsAFailure) {
  struct Part {
    qint64 at;
    qint64 size;
  };
  struct Row {
    const char* label;
    qint64 size;
    std::vector<Part> data;
    qint64 cutTo;
  };
  constexpr qint64 kMega = 1024 * 1024;
  const Row rows[] = {
      {"small", 1000, {{0, 1000}}, 10},
      {"large", 3 * kMega, {{0, 3 * kMega}}, kMega},
      {"within the data of a sparse one", 9 * kMega, {{0, kMega}, {8 * kMega, kMega}}, kMega / 2},
      {"in the last hole", 8 * kMega, {{0, kMega}}, kMega},
      {"behind a hole", 8 * kMega, {{7 * kMega, 10}}, 100}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.label);
    const QByteArray path = Native("f");
    const auto make = [&] {
      const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
      ASSERT_GE(fd, 0);
      for (const Part& part : row.data) {
        const QByteArray content(part.size, 'x');
        ASSERT_EQ(::pwrite(fd, content.constData(), static_cast<size_t>(part.size), part.at), part.size);
      }
      ASSERT_EQ(::ftruncate(fd, row.size), 0);
      ::close(fd);
    };
    make();
    int cuts = 0;
    Calls().beforeReading = [&] {
      ++cuts;
      EXPECT_EQ(::truncate(path.constData(), row.cutTo), 0);
    };
    EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("f"), QStringLiteral("copy"), false); }),
              providererror::kChanged);
    EXPECT_GE(cuts, 1);
    Calls().beforeReading = {};
    EXPECT_EQ(Names(), QStringList{QStringLiteral("f")});
    // An existing item is kept as well.
    Put("old", "old");
    make();
    Calls().beforeReading = [&] { EXPECT_EQ(::truncate(path.constData(), row.cutTo), 0); };
    EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("f"), QStringLiteral("old"), true); }),
              providererror::kChanged);
    Calls().beforeReading = {};
    EXPECT_EQ(ReadFile(Files(), QStringLiteral("old")), QByteArray("old"));
    Files().Remove(QStringLiteral("old"));
  }
}

TEST_F(LocalContentTest, TheErrorForAShrinkingFileNamesTheBytesRead) {
  Put("f", QByteArray(1000, 'x'));
  Calls().beforeReading = [&] { EXPECT_EQ(::truncate(Native("f").constData(), 10), 0); };
  EXPECT_EQ(ErrorTextOf([&] { Files().Copy(QStringLiteral("f"), QStringLiteral("g"), false); }),
            QStringLiteral("Only 10 of 1000 bytes could be read: C:\\f"));
}

TEST_F(LocalContentTest, ADiskThatFillsWithinASinkKeepsTheOldFile) {
  const SmallDisk disk;
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "a disk of its own can be had by the superuser alone, and only where mounting is allowed";
  }
  world_.Drives().Set({{kTop, disk.Path() + u'/', drivetype::kFixed}});
  const QString path = QStringLiteral("C:\\f");
  WriteFile(Files(), path, "old");
  for (const SinkRequest::Mode mode : {SinkRequest::Mode::Replace, SinkRequest::Mode::New}) {
    const QString to = mode == SinkRequest::Mode::New ? QStringLiteral("C:\\new") : path;
    int pieces = 0;
    const auto fill = [&] {
      const auto sink = Files().OpenSink(to, {.mode = mode});
      for (; pieces < 100; ++pieces) {
        sink->Write(QByteArray(4096, 'n'));
      }
      static_cast<void>(sink->Commit());
    };
    EXPECT_EQ(ErrorOf(fill), error::kDiskFull);
    EXPECT_GT(pieces, 0);
    EXPECT_EQ(Names(), QStringList{QStringLiteral("f")});
    EXPECT_EQ(ReadFile(Files(), path), "old");
  }
}

TEST_F(LocalContentTest, OnADiskOfThisComputerItIsSeenWhatArrives) {
  const auto held = Files().Hold(kTop);
  if (!held->SeesArrivals()) {
    GTEST_SKIP() << "the temporary folder is on no such disk";
  }
  Files().CreateFolder(QStringLiteral("C:\\d"));
  const auto below = held->Enter(QStringLiteral("d"));
  EXPECT_TRUE(below->SeesArrivals());
  for (HeldFolder* folder : {held.get(), below.get()}) {
    const std::vector<WriteResult> written =
        folder->WriteMany({{QStringLiteral("f"), "abc", {}}, {QStringLiteral("g"), {}, {}}});
    for (const WriteResult& result : written) {
      ASSERT_TRUE(result.item);
      const auto there = folder->Find(result.item->entry.name);
      ASSERT_TRUE(there);
      EXPECT_EQ(result.item->entry, there->entry);
      EXPECT_EQ(result.item->identity, there->identity);
    }
  }
}

TEST_F(LocalContentTest, OfOtherKindsOfFileSystemsNothingIsPromised) {
  FakeVolumes volumes{{{kTop, QStringLiteral("/proc/"), drivetype::kFixed}}};
  LocalFileSystem files(volumes);
  EXPECT_FALSE(files.Hold(kTop)->SeesArrivals());
}

TEST_F(LocalContentTest, ABatchIsClosedUntilItIsCompleteAndHasItsTraits) {
  const auto held = Files().Hold(kTop);
  SinkRequest request;
  request.traits.permissions = 0640;
  request.traits.modified = Date{1'500'000'000'000};
  const std::vector<WriteResult> written = held->WriteMany({{QStringLiteral("f"), "abc", request}});
  ASSERT_TRUE(written[0].item);
  EXPECT_EQ(ModeOf("f"), 0640U);
  EXPECT_EQ(written[0].item->entry.modified, request.traits.modified);
  EXPECT_EQ(Names(), QStringList{QStringLiteral("f")});
}

TEST_F(LocalContentTest, InterruptedCallsAreRepeated) {
  world_.MakeTree(QStringLiteral("tree"));
  WriteFile(Files(), QStringLiteral("f"), "old");
  const bool hasOther = world_.AddOtherVolume();
  Calls().interrupt = true;
  EXPECT_EQ(ErrorOf([&] {
              WriteFile(Files(), QStringLiteral("f"), "new");
              WriteNewFile(Files(), QStringLiteral("g"), "content", {});
              Files().CreateFile(QStringLiteral("empty"));
              Files().Flush(QStringLiteral("f"));
              Files().Flush(QStringLiteral("tree"));
              Files().Copy(QStringLiteral("tree"), QStringLiteral("copy"), false);
              Files().Copy(QStringLiteral("f"), QStringLiteral("g"), true);
              EXPECT_EQ(ReadFile(Files(), QStringLiteral("g")), QByteArray("new"));
              EXPECT_EQ(Files().List(kTop).size(), 5U);
              if (hasOther) {
                MoveItem(Files(), QStringLiteral("tree"), QStringLiteral("D:\\tree"), false);
              }
            }),
            0);
  EXPECT_GT(Calls().interruptions, 50);
  Calls().interrupt = false;
  EXPECT_TRUE(world_.IsWholeTree(QStringLiteral("copy")));
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("f")), QByteArray("new"));
}

TEST_F(LocalContentTest, WriteClearsTheSetIdBits) {
  for (const mode_t mode : {04755, 02755, 06755, 01644}) {
    Put("f", "old", mode);
    ASSERT_EQ(ModeOf("f"), mode);
    WriteFile(Files(), QStringLiteral("f"), "new");
    EXPECT_EQ(ModeOf("f"), mode & 01777);
  }
}

TEST_F(LocalContentTest, WriteClearsTheCapabilities) {
  Put("f", "old", 0755);
  // vfs_cap_data, version 2: the right to bind low ports, effective.
  const std::array<quint32, 5> capabilities{0x02000001, 0x400, 0, 0, 0};
  const QByteArray path = Native("f");
  if (::setxattr(path.constData(), "security.capability", capabilities.data(), sizeof capabilities, 0) != 0) {
    GTEST_SKIP() << "no capabilities can be given here";
  }
  WriteFile(Files(), QStringLiteral("f"), "new");
  char value[64];
  EXPECT_LT(::getxattr(path.constData(), "security.capability", value, sizeof value), 0);
  EXPECT_EQ(ModeOf("f"), 0755U);
}

TEST_F(LocalContentTest, WriteKeepsAllExtendedAttributes) {
  // A disk stores few attributes for a file, a memory file system any number.
  const QString memory = QStringLiteral("/dev/shm");
  LocalWorld world(QDir(memory).exists() ? memory : QString());
  const QString file = QStringLiteral("C:\\f");
  WriteFile(world.Files(), file, "old");
  const QByteArray path = world.Native("f");
  // All names together exceed 4,096 bytes.
  constexpr int kCount = 30;
  const auto nameOf = [](int i) { return "user." + QByteArray(200, 'n') + QByteArray::number(i); };
  for (int i = 0; i < kCount; ++i) {
    if (::setxattr(path.constData(), nameOf(i).constData(), "v", 1, 0) != 0) {
      GTEST_SKIP() << "that many attributes cannot be given here";
    }
  }
  WriteFile(world.Files(), file, "new");
  EXPECT_EQ(ReadFile(world.Files(), file), QByteArray("new"));
  for (int i = 0; i < kCount; ++i) {
    char value = 0;
    EXPECT_EQ(::getxattr(path.constData(), nameOf(i).constData(), &value, 1), 1) << i;
    EXPECT_EQ(value, 'v');
  }
}

TEST_F(LocalContentTest, ANewFileHasThePermissionsItIsGiven) {
  const mode_t mask = ::umask(0077);
  int count = 0;
  for (const quint32 permissions : {0600U, 0644U, 0755U, 0400U, 0777U}) {
    const QString name = QStringLiteral("f%1").arg(++count);
    WriteNewFile(Files(), name, "x", {.permissions = permissions});
    EXPECT_EQ(ModeOf(name.toLatin1().constData()), permissions);
    EXPECT_EQ(Files().Traits(name).permissions, permissions);
  }
  WriteNewFile(Files(), QStringLiteral("never"), "x", {.permissions = 07755U});
  EXPECT_EQ(ModeOf("never"), 0755U);
  WriteNewFile(Files(), QStringLiteral("unknown"), "x", {});
  EXPECT_EQ(ModeOf("unknown"), 0600U);
  ::umask(mask);
}

TEST_F(LocalContentTest, AVolumeWithoutPermissionsIsNoReasonToFail) {
  FileTraits traits;
  traits.permissions = 0640;
  for (const int code : {EPERM, EOPNOTSUPP, ENOSYS}) {
    SCOPED_TRACE(code);
    Calls().modeRefusal = code;
    const QString name = QStringLiteral("new%1").arg(code);
    EXPECT_NO_THROW(WriteNewFile(Files(), name, "content", traits));
    EXPECT_NO_THROW(WriteFile(Files(), name, "other"));
    EXPECT_NO_THROW(Files().SetTraits(name, traits));
    EXPECT_EQ(ReadFile(Files(), name), QByteArray("other"));
  }
  Calls().modeRefusal = EIO;
  EXPECT_THROW(WriteNewFile(Files(), QStringLiteral("lost"), "content", traits), RunTimeError);
  Calls().modeRefusal = 0;
  EXPECT_FALSE(Files().Find(QStringLiteral("lost")));
}

TEST_F(LocalContentTest, ANewFileIsClosedUntilItIsComplete) {
  const mode_t mask = ::umask(0);
  std::vector<mode_t> modes;
  Calls().beforeWriting = [&modes](int fd) {
    struct stat status {};
    if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode)) {
      modes.push_back(status.st_mode & 07777);
    }
  };
  WriteNewFile(Files(), QStringLiteral("f"), "x", {.permissions = 0755});
  Calls().beforeWriting = {};
  ::umask(mask);
  EXPECT_EQ(modes, std::vector<mode_t>{0600});
  EXPECT_EQ(ModeOf("f"), 0755U);
}

TEST_F(LocalContentTest, TraitsNeverAllowMoreThanAnAccessList) {
  Put("f", "x", 0600);
  const QByteArray path = Native("f");
  // acl(5) as the kernel stores it: the owner reads and writes, user 1234 reads, the group nothing, the mask
  // reads, others nothing. The mode then shows 0640.
  struct Entry {
    quint16 tag;
    quint16 permissions;
    quint32 id;
  };
  struct {
    quint32 version = 2;
    Entry entries[5] = {{0x01, 6, ~0U}, {0x02, 4, 1234}, {0x04, 0, ~0U}, {0x10, 4, ~0U}, {0x20, 0, ~0U}};
  } list;
  if (::setxattr(path.constData(), "system.posix_acl_access", &list, sizeof list, 0) != 0) {
    GTEST_SKIP() << "no access lists here";
  }
  ASSERT_EQ(ModeOf("f"), 0640U);
  EXPECT_EQ(Files().Traits(QStringLiteral("f")).permissions, 0600U);
}

TEST_F(LocalContentTest, TraitsOfALinkAreThoseOfItsTarget) {
  Put("f", "x", 0750);
  ASSERT_TRUE(world_.MakeLink("l", "f"));
  EXPECT_EQ(Files().Traits(QStringLiteral("l")).permissions, 0750U);
  EXPECT_EQ(ErrorOf([&] { Files().SetTraits(QStringLiteral("l"), {.permissions = 0600}); }),
            error::kAccessDenied);
  EXPECT_EQ(ModeOf("f"), 0750U);
}

TEST_F(LocalContentTest, TraitsKeepTheGroupBitOfAFolder) {
  Files().CreateFolder(QStringLiteral("d"));
  ASSERT_EQ(::chmod(Native("d").constData(), 03755), 0);
  Files().SetTraits(QStringLiteral("d"), {.permissions = 0700});
  EXPECT_EQ(ModeOf("d"), 03700U);
  EXPECT_EQ(Files().Traits(QStringLiteral("d")).permissions, 0700U);
}

}  // namespace
}  // namespace trevane::test
