#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/NativeName.h"
#include "platform/linux/FileDescriptor.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/engine/providers/local/linux/NativeHelpers.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <vector>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace trevane::test {
namespace {

using local::CanWrite;
using local::Credentials;
using local::FromNativeName;
using local::ToNativeName;

class LocalFileSystemTest : public ::testing::Test {
 protected:
  LocalFileSystem& Files() { return world_.Files(); }
  [[nodiscard]] QByteArray Native(const char* below) const { return world_.Native(below); }
  void Put(const char* below, const QByteArray& content) {
    QFile file(QFile::decodeName(Native(below)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
  }
  [[nodiscard]] struct stat StatusOf(const char* below) const {
    struct stat status {};
    EXPECT_EQ(::lstat(Native(below).constData(), &status), 0) << below;
    return status;
  }
  [[nodiscard]] QStringList Names(const QString& folder) { return NamesIn(Files(), folder); }

  LocalWorld world_;
};

const QString kTop = QStringLiteral("C:");

TEST(CanWriteTest, OnlyTheUsersOwnPermissionClassCounts) {
  const Credentials owner{1000, {1000}};
  const Credentials member{2000, {100, 1000}};
  const Credentials other{3000, {3000}};
  struct Row {
    const char* label;
    mode_t mode;
    bool owner;
    bool member;
    bool other;
  };
  const Row rows[] = {{"all", 0666, true, true, true},
                      {"owner alone", 0644, true, false, false},
                      {"nobody", 0444, false, false, false},
                      {"group alone", 0464, false, true, false},
                      {"others alone", 0446, false, false, true}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.label);
    EXPECT_EQ(CanWrite(row.mode, 1000, 1000, owner), row.owner);
    EXPECT_EQ(CanWrite(row.mode, 1000, 1000, member), row.member);
    EXPECT_EQ(CanWrite(row.mode, 1000, 1000, other), row.other);
  }
}

TEST(CanWriteTest, TheSuperUserCanWriteEverything) {
  EXPECT_TRUE(CanWrite(0000, 1000, 1000, Credentials{0, {0}}));
}

TEST(NativeNameTest, EveryPairOfBytesComesBack) {
  for (int first = 1; first < 256; ++first) {
    for (int second = 1; second < 256; ++second) {
      if (first == '/' || second == '/') {
        continue;
      }
      const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
      const QByteArray name(bytes, 2);
      const QString text = FromNativeName(name);
      ASSERT_EQ(ToNativeName(text, text), name) << first << ' ' << second;
      ASSERT_FALSE(text.contains(u'\\'));
    }
  }
}

TEST(NativeNameTest, TheBackslashCarrierIsEncodedByItsBytes) {
  const QByteArray carrier("\xEF\x81\x9C");
  EXPECT_EQ(FromNativeName("a\\b"), QStringLiteral("a") + QChar(0xF05C) + u'b');
  EXPECT_EQ(ToNativeName(FromNativeName("a\\b"), {}), QByteArray("a\\b"));
  EXPECT_EQ(ToNativeName(FromNativeName(carrier), {}), carrier);
  const QByteArray mixed = "\xE3" + carrier + "\\" + carrier + "\xC3\xA9";
  EXPECT_EQ(ToNativeName(FromNativeName(mixed), {}), mixed);
  EXPECT_NE(FromNativeName(carrier), FromNativeName("\\"));
}

TEST(NativeNameTest, SurrogatesThatEncodeNoByteAreInvalidNames) {
  for (const char16_t unit : {char16_t(0xD800), char16_t(0xDC00), char16_t(0xDC7F), char16_t(0xDD00)}) {
    EXPECT_EQ(ErrorOf([&] { (void)ToNativeName(QString(QChar(unit)), {}); }), error::kInvalidName);
  }
}

TEST(ErrnoTableTest, EachFailureHasTheNumberOfItsKind) {
  const std::pair<int, qint32> rows[] = {{EACCES, error::kAccessDenied},
                                         {EPERM, error::kAccessDenied},
                                         {ENOENT, error::kNotFound},
                                         {ENOTDIR, error::kNotFound},
                                         {EEXIST, error::kExists},
                                         {ENOSPC, error::kDiskFull},
                                         {EDQUOT, error::kDiskFull},
                                         {ETIMEDOUT, error::kTimeOut},
                                         {ESTALE, error::kWin32Error + 64},
                                         {EROFS, error::kWin32Error + 19},
                                         {ENAMETOOLONG, error::kWin32Error + 206},
                                         {ENOTEMPTY, error::kDirectoryNotEmpty},
                                         {EXDEV, error::kWin32Error + 17},
                                         {EBUSY, error::kWin32Error + 170},
                                         {EIO, error::kWin32Error + 1117},
                                         {ENOMEDIUM, error::kDeviceNotReady},
                                         {ENXIO, error::kDeviceNotReady},
                                         {EINVAL, error::kInvalidParameter},
                                         {EMFILE, error::kWin32Error + 4},
                                         {ELOOP, error::kWin32Error + 1921},
                                         {EBADMSG, error::kWin32Error + 31}};
  for (const auto& [code, number] : rows) {
    EXPECT_EQ(local::NumberOfErrno(code), number) << code;
  }
}

TEST_F(LocalFileSystemTest, CircularLinksAreListedAndDeletedButNotOpened) {
  ASSERT_EQ(::symlink("b", Native("a").constData()), 0);
  ASSERT_EQ(::symlink("a", Native("b").constData()), 0);
  EXPECT_EQ(Names(kTop), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
  EXPECT_TRUE(Files().Stat(QStringLiteral("a")).IsLink());
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), QStringLiteral("a")); }), providererror::kLinkLoop);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), QStringLiteral("a"), "x"); }), providererror::kLinkLoop);
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(QStringLiteral("a")); }), providererror::kLinkLoop);
  Files().Remove(QStringLiteral("a"));
  EXPECT_EQ(Names(kTop), QStringList{QStringLiteral("b")});
}

TEST_F(LocalFileSystemTest, DanglingLinksShowTheirOwnSize) {
  ASSERT_EQ(::symlink("target", Native("l").constData()), 0);
  const FileEntry entry = Files().Stat(QStringLiteral("l"));
  EXPECT_TRUE(entry.IsLink());
  EXPECT_FALSE(entry.IsFolder());
  EXPECT_EQ(entry.size, 6);
  EXPECT_TRUE(entry.modified.IsPresent());
  WriteFile(Files(), QStringLiteral("l"), "new");
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("target")), QByteArray("new"));
  EXPECT_TRUE(Files().Stat(QStringLiteral("l")).IsLink());
}

TEST_F(LocalFileSystemTest, ALinkToAFileReportsTheSizeAndTimesOfItsTarget) {
  Put("f", "12345");
  ASSERT_EQ(::symlink("f", Native("l").constData()), 0);
  const FileEntry file = Files().Stat(QStringLiteral("f"));
  const FileEntry link = Files().Stat(QStringLiteral("l"));
  EXPECT_EQ(link.attributes, attribute::kLink | attribute::kArchive);
  EXPECT_EQ(link.size, 5);
  EXPECT_EQ(link.modified, file.modified);
}

TEST_F(LocalFileSystemTest, WritingThroughAChainOfLinksReplacesTheTarget) {
  Files().CreateFolder(QStringLiteral("d"));
  Put("d/f", "old");
  ASSERT_EQ(::symlink("f", Native("d/near").constData()), 0);
  ASSERT_EQ(::symlink("d/near", Native("far").constData()), 0);
  ASSERT_EQ(::symlink(Native("far").constData(), Native("absolute").constData()), 0);
  WriteFile(Files(), QStringLiteral("absolute"), "new");
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("d\\f")), QByteArray("new"));
  for (const char* link : {"d/near", "far", "absolute"}) {
    EXPECT_TRUE(S_ISLNK(StatusOf(link).st_mode)) << link;
  }
}

TEST_F(LocalFileSystemTest, PipesSocketsAndDevicesAreNeverOpened) {
  ASSERT_EQ(::mkfifo(Native("pipe").constData(), 0666), 0);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const QByteArray path = Native("socket");
  ASSERT_LT(static_cast<std::size_t>(path.size()), sizeof address.sun_path);
  std::copy(path.begin(), path.end(), address.sun_path);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::symlink("pipe", Native("link to pipe").constData()), 0);
  for (const QString& name : {QStringLiteral("pipe"), QStringLiteral("socket")}) {
    EXPECT_EQ(Files().Stat(name).attributes, attribute::kDevice);
    EXPECT_EQ(Files().Stat(name).size, 0);
    EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), name); }), error::kAccessDenied);
    EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), name, "x"); }), error::kAccessDenied);
    EXPECT_EQ(ErrorOf([&] { Files().Copy(name, QStringLiteral("copy"), true); }), error::kNotSupported);
    EXPECT_EQ(ErrorOf([&] { Files().CreateFile(name); }), error::kExists);
  }
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), QStringLiteral("link to pipe")); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), QStringLiteral("link to pipe"), "x"); }), error::kAccessDenied);
  Put("f", "x");
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("f"), QStringLiteral("pipe"), true); }),
            error::kExists);
  Files().Remove(QStringLiteral("pipe"));
  Files().Rename(QStringLiteral("socket"), QStringLiteral("moved"), false);
  EXPECT_TRUE(S_ISSOCK(StatusOf("moved").st_mode));
  ::close(socket);
}

TEST_F(LocalFileSystemTest, ASparseFileKeepsItsHoles) {
  constexpr off_t kSize = 64 * 1024 * 1024;
  const int file = ::open(Native("sparse").constData(), O_WRONLY | O_CREAT, 0666);
  ASSERT_GE(file, 0);
  ASSERT_EQ(::pwrite(file, "middle", 6, kSize / 2), 6);
  ASSERT_EQ(::ftruncate(file, kSize), 0);
  ::close(file);
  const int hole = ::open(Native("hole").constData(), O_WRONLY | O_CREAT, 0666);
  ASSERT_EQ(::ftruncate(hole, kSize), 0);
  ::close(hole);
  if (StatusOf("sparse").st_blocks * 512 > kSize / 2) {
    GTEST_SKIP() << "no sparse files here";
  }
  Files().Copy(QStringLiteral("sparse"), QStringLiteral("copy"), false);
  Files().Copy(QStringLiteral("hole"), QStringLiteral("hole copy"), false);
  EXPECT_EQ(StatusOf("copy").st_size, kSize);
  EXPECT_LT(StatusOf("copy").st_blocks * 512, kSize / 8);
  EXPECT_EQ(StatusOf("hole copy").st_size, kSize);
  EXPECT_LT(StatusOf("hole copy").st_blocks * 512, kSize / 8);
  EXPECT_TRUE(ReadFile(Files(), QStringLiteral("copy")) == ReadFile(Files(), QStringLiteral("sparse")));
}

TEST_F(LocalFileSystemTest, CopyKeepsPermissionsTimesOwnerAndAttributes) {
  Put("f", "x");
  const QByteArray path = Native("f");
  ASSERT_EQ(::chmod(path.constData(), 0751), 0);
  const bool hasAttributes = ::setxattr(path.constData(), "user.note", "kept", 4, 0) == 0;
  const timespec times[] = {{1000000000, 123456789}, {1100000000, 987654321}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(path.constData(), 1234, 4321), 0);
  }
  Files().Copy(QStringLiteral("f"), QStringLiteral("g"), false);
  const struct stat source = StatusOf("f");
  const struct stat copy = StatusOf("g");
  EXPECT_EQ(copy.st_mode, source.st_mode);
  EXPECT_EQ(copy.st_mtim.tv_sec, 1100000000);
  EXPECT_EQ(copy.st_mtim.tv_nsec, 987654321);
  EXPECT_EQ(copy.st_atim.tv_sec, 1000000000);
  EXPECT_EQ(copy.st_uid, source.st_uid);
  EXPECT_EQ(copy.st_gid, source.st_gid);
  if (hasAttributes) {
    char value[8] = {};
    EXPECT_EQ(::getxattr(Native("g").constData(), "user.note", value, sizeof value), 4);
    EXPECT_STREQ(value, "kept");
  }
}

TEST_F(LocalFileSystemTest, CopyKeepsThePermissionsOfAFolderThatForbidsWriting) {
  Files().CreateFolder(QStringLiteral("d"));
  Put("d/f", "x");
  ASSERT_EQ(::chmod(Native("d").constData(), 0555), 0);
  Files().Copy(QStringLiteral("d"), QStringLiteral("e"), false);
  EXPECT_EQ(StatusOf("e").st_mode & 07777, 0555U);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("e\\f")), QByteArray("x"));
  ASSERT_EQ(::chmod(Native("d").constData(), 0755), 0);
  ASSERT_EQ(::chmod(Native("e").constData(), 0755), 0);
}

TEST_F(LocalFileSystemTest, WriteKeepsPermissionsAndOwnerOfTheFileItReplaces) {
  Put("f", "old");
  ASSERT_EQ(::chmod(Native("f").constData(), 0640), 0);
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(Native("f").constData(), 1234, 4321), 0);
  }
  const struct stat before = StatusOf("f");
  WriteFile(Files(), QStringLiteral("f"), "new");
  const struct stat after = StatusOf("f");
  EXPECT_EQ(after.st_mode, before.st_mode);
  EXPECT_EQ(after.st_uid, before.st_uid);
  EXPECT_EQ(after.st_gid, before.st_gid);
  EXPECT_EQ(Names(kTop), QStringList{QStringLiteral("f")});
}

TEST_F(LocalFileSystemTest, ANewFileGetsThePermissionsThatTheUserWants) {
  const mode_t old = ::umask(0027);
  WriteFile(Files(), QStringLiteral("f"), "x");
  Files().CreateFile(QStringLiteral("g"));
  Files().CreateFolder(QStringLiteral("d"));
  ::umask(old);
  EXPECT_EQ(StatusOf("f").st_mode & 07777, 0640U);
  EXPECT_EQ(StatusOf("g").st_mode & 07777, 0640U);
  EXPECT_EQ(StatusOf("d").st_mode & 07777, 0750U);
}

TEST_F(LocalFileSystemTest, ItemsThatTheUserCannotWriteAreReadOnly) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "needs the super-user";
  }
  ASSERT_EQ(::chmod(world_.Root().toUtf8().constData(), 0777), 0);
  Put("mine", "old");
  ASSERT_EQ(::chmod(Native("mine").constData(), 0644), 0);
  Files().CreateFolder(QStringLiteral("locked"));
  Put("locked/f", "x");
  ASSERT_EQ(::chmod(Native("locked").constData(), 0700), 0);
  EXPECT_EQ(Files().Stat(QStringLiteral("mine")).attributes & attribute::kReadOnly, 0);
  const auto asNobody = [this](const std::function<void(LocalFileSystem&)>& work) {
    return ErrorAsNobody([&] {
      LocalFileSystem files(world_.Drives());
      work(files);
    });
  };
  EXPECT_EQ(asNobody([](LocalFileSystem& files) {
              if ((files.Stat(QStringLiteral("mine")).attributes & attribute::kReadOnly) == 0) {
                Fail(error::kWin32Error, {});
              }
            }),
            0);
  EXPECT_EQ(asNobody([](LocalFileSystem& files) { WriteFile(files, QStringLiteral("mine"), "new"); }),
            error::kAccessDenied);
  EXPECT_EQ(asNobody([](LocalFileSystem& files) {
              WriteFile(files, QStringLiteral("own"), "new");
              files.Copy(QStringLiteral("own"), QStringLiteral("mine"), true);
            }),
            error::kAccessDenied);
  EXPECT_EQ(asNobody([](LocalFileSystem& files) { (void)files.List(QStringLiteral("locked")); }),
            error::kAccessDenied);
  EXPECT_EQ(asNobody([](LocalFileSystem& files) { (void)files.Stat(QStringLiteral("locked\\f")); }),
            error::kAccessDenied);
  EXPECT_EQ(asNobody([](LocalFileSystem& files) {
              files.Copy(QStringLiteral("locked"), QStringLiteral("copy"), false);
            }),
            error::kAccessDenied);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("mine")), QByteArray("old"));
  EXPECT_EQ(Names(kTop),
            (QStringList{QStringLiteral("locked"), QStringLiteral("mine"), QStringLiteral("own")}));
}

TEST_F(LocalFileSystemTest, AFolderWhoseItemsMayNotBeAskedAboutIsRefused) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "needs the super-user";
  }
  ASSERT_EQ(::chmod(world_.Root().toUtf8().constData(), 0755), 0);
  Files().CreateFolder(QStringLiteral("d"));
  Put("d/f", "x");
  ASSERT_EQ(::chmod(Native("d").constData(), 0744), 0);
  EXPECT_EQ(ErrorAsNobody([this] { (void)LocalFileSystem(world_.Drives()).List(QStringLiteral("d")); }),
            error::kAccessDenied);
}

TEST_F(LocalFileSystemTest, ADriveThatIsAnotherVolumeThanBeforeIsNotReady) {
  Put("f", "x");
  struct stat status = StatusOf("");
  const quint64 own = (static_cast<quint64>(major(status.st_dev)) << 32) | minor(status.st_dev);
  const auto setDevice = [&](quint64 device) {
    world_.Drives().Set({{kTop, world_.Root(), drivetype::kFixed, device}});
  };
  setDevice(own);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("C:\\f")), QByteArray("x"));
  EXPECT_EQ(Names(kTop), QStringList{QStringLiteral("f")});
  setDevice(own + 1);
  const QString f = QStringLiteral("C:\\f");
  const QString g = QStringLiteral("C:\\g");
  for (const std::function<void()>& work : std::vector<std::function<void()>>{
           [&] { (void)Files().List(kTop); }, [&] { (void)Files().Stat(f); },
           [&] { (void)ReadFile(Files(), f); }, [&] { WriteFile(Files(), f, "y"); },
           [&] { Files().CreateFile(g); }, [&] { Files().CreateFolder(g); },
           [&] { Files().Copy(f, g, false); }, [&] { Files().Rename(f, g, false); },
           [&] { Files().Remove(f); }, [&] { Files().RemoveAlone(f); }, [&] { (void)Files().Identity(f); }}) {
    EXPECT_EQ(ErrorOf(work), error::kDeviceNotReady);
  }
  EXPECT_TRUE(Files().Stat(kTop).IsFolder());
  setDevice(0);
  EXPECT_EQ(Names(kTop), QStringList{QStringLiteral("f")});
  EXPECT_EQ(ReadFile(Files(), f), QByteArray("x"));
}

TEST_F(LocalFileSystemTest, WritingANewFileReplacesNothingThatAppears) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    bool appeared = false;
    const ChildEnd end = RunInterruptedAt(
        call, [&] { WriteNewFile(Files(), QStringLiteral("f"), "ours", {}); },
        [&] {
          const int file = ::open(Native("f").constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
          appeared = file >= 0 && ::write(file, "theirs", 6) == 6;
          ::close(file);
        });
    if (end == ChildEnd::CannotTrace) {
      GTEST_SKIP() << "cannot trace here";
    }
    EXPECT_EQ(end == ChildEnd::Failed, appeared);
    EXPECT_EQ(ReadFile(Files(), QStringLiteral("f")), QByteArray(appeared ? "theirs" : "ours"));
    EXPECT_EQ(Names(kTop), QStringList{QStringLiteral("f")});
    Files().Remove(QStringLiteral("f"));
    if (!appeared) {
      EXPECT_GT(call, 5);
      break;
    }
    ASSERT_FALSE(HasFailure());
    ASSERT_LT(call, 1000);
  }
}

TEST_F(LocalFileSystemTest, MountPointsAreRecognizedByTheirDevice) {
  struct Row {
    const char* label;
    QByteArray path;
    bool isMountPoint;
  };
  Files().CreateFolder(QStringLiteral("d"));
  for (const Row& row : {Row{"a file system of its own", "/proc", true}, {"a folder", Native("d"), false}}) {
    SCOPED_TRACE(row.label);
    const local::FileDescriptor folder(::open(row.path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    ASSERT_TRUE(folder.IsOpen());
    struct statx status {};
    ASSERT_EQ(local::StatusOf(folder.Get(), status), 0);
    EXPECT_EQ(local::IsMountPoint(status, folder.Get()), row.isMountPoint);
    status.stx_attributes_mask &= ~static_cast<quint64>(STATX_ATTR_MOUNT_ROOT);
    status.stx_attributes &= ~static_cast<quint64>(STATX_ATTR_MOUNT_ROOT);
    EXPECT_EQ(local::IsMountPoint(status, folder.Get()), row.isMountPoint);
  }
}

TEST_F(LocalFileSystemTest, AccessControlListsCanAllowWriting) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "needs the super-user";
  }
  ASSERT_EQ(::chmod(world_.Root().toUtf8().constData(), 0777), 0);
  Put("shared", "old");
  ASSERT_EQ(::chmod(Native("shared").constData(), 0644), 0);
  // Version 2; then tag, rights and id of each entry: owner rw, user 65534 rw, group r, mask rw, others r.
  struct Entry {
    quint16 tag;
    quint16 rights;
    quint32 id;
  };
  struct List {
    quint32 version;
    Entry entries[5];
  };
  constexpr quint32 kNoId = 0xFFFFFFFF;
  const List list{2, {{1, 6, kNoId}, {2, 6, 65534}, {4, 4, kNoId}, {16, 6, kNoId}, {32, 4, kNoId}}};
  if (::setxattr(Native("shared").constData(), "system.posix_acl_access", &list, sizeof list, 0) != 0) {
    GTEST_SKIP() << "no access control lists here";
  }
  EXPECT_EQ(ErrorAsNobody([&] {
              LocalFileSystem files(world_.Drives());
              if ((files.Stat(QStringLiteral("shared")).attributes & attribute::kReadOnly) != 0) {
                Fail(providererror::kWriteProtected, {});
              }
              WriteFile(files, QStringLiteral("shared"), "new");
            }),
            0);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("shared")), QByteArray("new"));
}

TEST_F(LocalFileSystemTest, OrdinaryUsersAreBoundByTheirPermissions) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "the super-user has no such limits";
  }
  Put("f", "old");
  ASSERT_EQ(::chmod(Native("f").constData(), 0444), 0);
  EXPECT_NE(Files().Stat(QStringLiteral("f")).attributes & attribute::kReadOnly, 0);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), QStringLiteral("f"), "new"); }), error::kAccessDenied);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("f")), QByteArray("old"));
  Files().CreateFolder(QStringLiteral("d"));
  Put("d/inner", "x");
  ASSERT_EQ(::chmod(Native("d").constData(), 0500), 0);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), QStringLiteral("d\\new"), "x"); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { Files().Remove(QStringLiteral("d")); }), error::kAccessDenied);
  ASSERT_EQ(::chmod(Native("d").constData(), 0000), 0);
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(QStringLiteral("d")); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { (void)Files().Stat(QStringLiteral("d\\inner")); }), error::kAccessDenied);
  ASSERT_EQ(::chmod(Native("d").constData(), 0700), 0);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("d\\inner")), QByteArray("x"));
}

TEST_F(LocalFileSystemTest, ErrorsInsideATreeNameTheItem) {
  Files().CreateFolder(QStringLiteral("d"));
  Files().CreateFolder(QStringLiteral("d\\e"));
  ASSERT_EQ(::mkfifo(Native("d/e/pipe").constData(), 0600), 0);
  EXPECT_EQ(ErrorTextOf([&] { Files().Copy(QStringLiteral("/d"), QStringLiteral("x"), false); }),
            QStringLiteral("A device, pipe or socket cannot be copied: C:\\d\\e\\pipe"));
}

TEST_F(LocalFileSystemTest, NamesThatOnlyTheDiskKnowsCanBeUsed) {
  Put("back\\slash", "1");
  Put("\xEF\x81\x9C", "2");
  Put("\xFF\xFE", "3");
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("back") + QChar(0xF05C) + QStringLiteral("slash")),
            QByteArray("1"));
  Files().Copy(QStringLiteral("back") + QChar(0xF05C) + QStringLiteral("slash"),
               QStringLiteral("a") + QChar(0xF05C) + u'b', false);
  EXPECT_EQ(StatusOf("a\\b").st_size, 1);
  for (const QString& name : Names(kTop)) {
    Files().Remove(name);
  }
  EXPECT_TRUE(Names(kTop).isEmpty());
}

TEST_F(LocalFileSystemTest, FilesOfUnknownSizeAreReadWhole) {
  FakeVolumes drives({{kTop, QStringLiteral("/proc/self/"), drivetype::kFixed}});
  LocalFileSystem files(drives);
  EXPECT_EQ(files.Stat(QStringLiteral("status")).size, 0);
  EXPECT_TRUE(ReadFile(files, QStringLiteral("status")).startsWith("Name:"));
}

TEST_F(LocalFileSystemTest, ListMakesOneCallAnEntry) {
  constexpr int kFiles = 2000;
  for (int i = 0; i < kFiles; ++i) {
    Put(("file " + QByteArray::number(i)).constData(), {});
  }
  const int calls = CountSystemCalls([this] { (void)Files().List(kTop); });
  if (calls < 0) {
    GTEST_SKIP() << "cannot trace here";
  }
  EXPECT_GE(calls, kFiles);
  EXPECT_LE(calls, kFiles * 105 / 100);
}

}  // namespace
}  // namespace trevane::test
