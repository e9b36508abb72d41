#include "tests/engine/providers/ProviderBed.h"

#include "engine/files/ProviderPath.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/DriveRouter.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/providers/share/OpenShare.h"
#include "engine/remote/BlockingRemote.h"
#include "engine/remote/LearntFileSystem.h"
#include "engine/remote/RemoteFileSystem.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/PlainFileSystem.h"
#include "tests/support/RawFileSystem.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <chrono>

#ifdef Q_OS_WIN
#include "platform/windows/WindowsText.h"
#include "tests/engine/providers/windows/LoopbackBeds.h"
#include "tests/engine/providers/windows/NativeDates.h"

#include <windows.h>
#undef CreateFile
#else
#include "engine/providers/sftp/SftpFileSystem.h"
#include "engine/providers/ssh/OpenSftp.h"
#include "tests/engine/providers/FtpBeds.h"
#include "tests/engine/providers/sftp/FilterChannel.h"
#include "tests/engine/providers/sftp/PipeChannel.h"
#include "tests/support/Sshd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace trevane::test {
namespace {

class LocalBed : public ProviderBed {
 public:
  explicit LocalBed(qint32 driveType = drivetype::kFixed) {
    EXPECT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("c/base")));
    EXPECT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("d")));
    volumes_.Set({{QStringLiteral("C:"), folder_.filePath(QStringLiteral("c/")), driveType},
                  {QStringLiteral("D:"), folder_.filePath(QStringLiteral("d/")), driveType}});
  }

  ~LocalBed() override {
    // QTemporaryDir cannot remove names that are no text.
    EXPECT_EQ(ErrorOf([this] { files_.Remove(QStringLiteral("C:\\base")); }), 0);
  }
  LocalBed(const LocalBed&) = delete;
  LocalBed& operator=(const LocalBed&) = delete;

  FileSystem& Files() override { return files_; }
  QString Base() const override { return QStringLiteral("C:\\base"); }
#ifdef Q_OS_WIN
  bool MakeLink(const QString& path, const QString& target) override {
    const QString native = Native(target);
    const DWORD attributes = GetFileAttributesW(windowstext::Wide(native));
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const QString link = Native(path);
    // 2: without a privilege, in developer mode. Wine reports success and creates nothing.
    return CreateSymbolicLinkW(windowstext::Wide(link), windowstext::Wide(native),
                               (isFolder ? 1U : 0U) | 2U) != FALSE &&
           GetFileAttributesW(windowstext::Wide(link)) != INVALID_FILE_ATTRIBUTES;
  }
  bool MakeDevice(const QString& /*path*/) override {
    return false;
  }
  void SetModified(const QString& path, Date modified) override {
    SetNativeModified(Native(path), modified);
  }
  bool HoldsAnyBytes() const override {
    return false;
  }
  bool RefusesNamesOfWindows() const override {
    return true;
  }
  // Only Wine does so; on Windows a dot has no meaning.
  bool HidesDotNames() const override {
    return RunsUnderWine();
  }
  qsizetype LongestPath() const override {
    return RunsUnderWine() ? 3000 : 8000;
  }
#else
  bool MakeLink(const QString& path, const QString& target) override {
    return ::symlink(Native(target).constData(), Native(path).constData()) == 0;
  }
  bool MakeDevice(const QString& path) override {
    return ::mkfifo(Native(path).constData(), 0600) == 0;
  }
  void SetModified(const QString& path, Date modified) override {
    qint64 seconds = modified.msecs / 1000;
    qint64 rest = modified.msecs % 1000;
    if (rest < 0) {
      rest += 1000;
      --seconds;
    }
    const timespec time{static_cast<time_t>(seconds), static_cast<long>(rest * 1000000)};
    const timespec times[] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, Native(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  bool HoldsAnyBytes() const override {
    return true;
  }
#endif
  qint64 TimePrecision() const override {
    return 0;
  }

 protected:
  [[nodiscard]] QString DriveFolder() const {
    return folder_.filePath(QStringLiteral("c"));
  }
  [[nodiscard]] Volumes& Drives() {
    return volumes_;
  }

 private:
#ifdef Q_OS_WIN
  [[nodiscard]] QString Native(const QString& path) const {
    return windowstext::LiteralPath(folder_.path() + u'/' + path.first(1).toLower() + path.sliced(2));
  }
#else
  [[nodiscard]] QByteArray Native(const QString& path) const {
    QString below = path;
    below.replace(u'\\', u'/');
    return QFile::encodeName(folder_.path() + u'/' + below.first(1).toLower() + below.sliced(2));
  }
#endif

  QTemporaryDir folder_;
  FakeVolumes volumes_;
  LocalFileSystem files_{volumes_};
};

/// The folder behind the drive C: of the other bed, as a share.
class ShareBed final : public LocalBed {
 public:
  FileSystem& Files() override { return *share_; }
  QString Base() const override { return QStringLiteral("base"); }
  bool MakeLink(const QString& path, const QString& target) override {
    return LocalBed::MakeLink(OnDrive(path), OnDrive(target));
  }
  bool MakeDevice(const QString& path) override { return LocalBed::MakeDevice(OnDrive(path)); }
  void SetModified(const QString& path, Date modified) override {
    LocalBed::SetModified(OnDrive(path), modified);
  }

 private:
  [[nodiscard]] static QString OnDrive(const QString& path) { return QStringLiteral("C:\\") + path; }

  std::shared_ptr<FileSystem> share_ = OpenShare({.machine = DriveFolder(), .option = {}});
};

/// The other bed's drives as slow ones.
class RoutedBed final : public LocalBed {
 public:
  RoutedBed() : LocalBed(drivetype::kRemovable) {}
  ~RoutedBed() override { EXPECT_TRUE(remote_.Context().controllers->StopAll(std::chrono::seconds(20))); }
  RoutedBed(const RoutedBed&) = delete;
  RoutedBed& operator=(const RoutedBed&) = delete;

  FileSystem& Files() override { return files_; }

 private:
  BlockingRemote remote_;
  DriveRouter files_{remote_.Context(), Drives(), [](Volumes& drives, const FileSystemRequest&) {
                       return std::make_shared<LocalFileSystem>(drives);
                     }};
};

class MemoryBed final : public ProviderBed {
 public:
  /// What the tests see of the file system.
  enum class Shown { Whole, Plain, PlainWithIdentities };

  MemoryBed(bool caseSensitive, const QStringList& drives, Shown shown = Shown::Whole)
      : memory_(std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{
            .caseSensitive = caseSensitive, .drives = drives, .identity = shown != Shown::Plain})),
        files_(*memory_),
        shown_(memory_),
        base_(drives.isEmpty() ? QStringLiteral("base") : drives.first() + QStringLiteral("\\base")) {
    files_.AddFolder(base_);
    if (shown != Shown::Whole) {
      shown_ = std::make_shared<PlainFileSystem>(
          memory_, PlainOptions{.identities = shown == Shown::PlainWithIdentities});
    }
  }

  FileSystem& Files() override { return *shown_; }
  QString Base() const override { return base_; }
  bool MakeLink(const QString& path, const QString& target) override {
    files_.AddLink(path, target);
    return true;
  }
  bool MakeDevice(const QString& path) override {
    files_.AddDevice(path);
    return true;
  }
  void SetModified(const QString& path, Date modified) override {
    files_.SetTimes(path, files_.Now(), modified, modified);
  }
  qint64 TimePrecision() const override { return 0; }
  bool HoldsAnyBytes() const override { return false; }
  bool IsPlain() const override { return shown_ != memory_; }

 private:
  std::shared_ptr<MemoryFileSystem> memory_;
  MemoryFileSystem& files_;
  std::shared_ptr<FileSystem> shown_;
  QString base_;
};

/// A simple server with staged contents.
class RawBed final : public ProviderBed {
 public:
  explicit RawBed(const RawCapabilities& can) : files_(memory_, can) {
    memory_->AddFolder(QStringLiteral("base"));
  }

  FileSystem& Files() override { return files_; }
  QString Base() const override { return QStringLiteral("base"); }
  // Staged sinks are given paths with all links followed.
  bool MakeLink(const QString& /*path*/, const QString& /*target*/) override { return false; }
  bool MakeDevice(const QString& path) override {
    memory_->AddDevice(path);
    return true;
  }
  void SetModified(const QString& path, Date modified) override {
    memory_->SetTimes(path, memory_->Now(), modified, modified);
  }
  qint64 TimePrecision() const override { return 0; }
  bool HoldsAnyBytes() const override { return false; }
  bool IsPlain() const override { return true; }

 private:
  std::shared_ptr<MemoryFileSystem> memory_ =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.identity = false});
  RawFileSystem files_;
};

#ifndef Q_OS_WIN
/// A folder of this computer behind a server of SFTP.
class SftpBed final : public ProviderBed {
 public:
  explicit SftpBed(std::shared_ptr<FileSystem> files) : files_(std::move(files)) {
    EXPECT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("base")));
  }
  ~SftpBed() override {
    // QTemporaryDir cannot remove names that are no text.
    EXPECT_EQ(ErrorOf([this] { files_->Remove(Base()); }), 0);
  }
  SftpBed(const SftpBed&) = delete;
  SftpBed& operator=(const SftpBed&) = delete;

  FileSystem& Files() override { return *files_; }
  QString Base() const override {
    QString base = folder_.filePath(QStringLiteral("base")).sliced(1);
    base.replace(u'/', u'\\');
    return base;
  }
  bool MakeLink(const QString& path, const QString& target) override {
    return ::symlink(Native(target).constData(), Native(path).constData()) == 0;
  }
  bool MakeDevice(const QString& path) override { return ::mkfifo(Native(path).constData(), 0600) == 0; }
  void SetModified(const QString& path, Date modified) override {
    const timespec time{static_cast<time_t>(modified.msecs / 1000),
                        static_cast<long>(modified.msecs % 1000 * 1000000)};
    const timespec times[] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, Native(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  qint64 TimePrecision() const override { return 1000; }
  bool HoldsAnyBytes() const override { return true; }
  bool HoldsEarlyDates() const override { return false; }
  // The server's system takes 4096 bytes in one call.
  qsizetype LongestPath() const override { return 3000; }

 private:
  [[nodiscard]] static QByteArray Native(const QString& path) {
    QString native = u'/' + path;
    native.replace(u'\\', u'/');
    return QFile::encodeName(native);
  }

  QTemporaryDir folder_;
  std::shared_ptr<FileSystem> files_;
};

/// Null where there is no server.
std::unique_ptr<ProviderBed> MakeSftpBed(const std::optional<OldServer>& old) {
  if (SftpServerProgram().isEmpty()) {
    return nullptr;
  }
  PipeConnector::Wrap wrap;
  if (old) {
    wrap = [old](std::unique_ptr<SftpChannel> pipe) {
      return std::make_unique<OldServerChannel>(std::move(pipe), *old);
    };
  }
  return std::make_unique<SftpBed>(
      OpenSftpFileSystem(std::make_unique<PipeConnector>(wrap),
                         {.host = QStringLiteral("pipe"), .user = QStringLiteral("test")}, {}));
}

/// The same over SSH. One server serves all beds of the process.
std::unique_ptr<ProviderBed> MakeSshdBed(std::unique_ptr<Sshd>& sshd, const Sshd::Options& options,
                                         const QString& option) {
  if (!Sshd::IsAvailable()) {
    return nullptr;
  }
  if (!sshd) {
    sshd = std::make_unique<Sshd>(options);
  }
  return std::make_unique<SftpBed>(OpenSftp({sshd->Machine(), option}, sshd->Place(), {}));
}

std::unique_ptr<ProviderBed> MakeSshdBed() {
  static std::unique_ptr<Sshd> sshd;
  return MakeSshdBed(sshd, {}, QString());
}

std::unique_ptr<ProviderBed> MakeOldSshdBed() {
  static std::unique_ptr<Sshd> sshd;
  return MakeSshdBed(sshd, Sshd::OldAlgorithms(), QStringLiteral("OldAlgorithms=Yes"));
}
#endif

/// Another bed on a thread of its own, with the memory of what was learnt.
class RemoteBed final : public ProviderBed {
 public:
  explicit RemoteBed(std::unique_ptr<ProviderBed> behind)
      : behind_(std::move(behind)),
        files_(std::make_shared<RemoteFileSystem>(
                   remote_.Context(), RemoteConnection::Opening{QStringLiteral("Remote"),
                                                                [this](const FileSystemRequest&) {
                                                                  return std::shared_ptr<FileSystem>(
                                                                      std::shared_ptr<void>(),
                                                                      &behind_->Files());
                                                                },
                                                                {}}),
               remote_.Context().learnt) {}
  ~RemoteBed() override { EXPECT_TRUE(remote_.Context().controllers->StopAll(std::chrono::seconds(20))); }
  RemoteBed(const RemoteBed&) = delete;
  RemoteBed& operator=(const RemoteBed&) = delete;

  FileSystem& Files() override { return files_; }
  QString Base() const override { return behind_->Base(); }
  bool MakeLink(const QString& path, const QString& target) override {
    files_.ForgetLearnt();
    return behind_->MakeLink(path, target);
  }
  bool MakeDevice(const QString& path) override {
    files_.ForgetLearnt();
    return behind_->MakeDevice(path);
  }
  void SetModified(const QString& path, Date modified) override {
    files_.ForgetLearnt();
    behind_->SetModified(path, modified);
  }
  qint64 TimePrecision() const override { return behind_->TimePrecision(); }
  bool HoldsAnyBytes() const override { return behind_->HoldsAnyBytes(); }
  bool HoldsEarlyDates() const override { return behind_->HoldsEarlyDates(); }
  bool RefusesNamesOfWindows() const override { return behind_->RefusesNamesOfWindows(); }
  bool HidesDotNames() const override { return behind_->HidesDotNames(); }
  bool IsPlain() const override { return behind_->IsPlain(); }
  qsizetype LongestPath() const override { return behind_->LongestPath(); }

 private:
  BlockingRemote remote_;
  std::unique_ptr<ProviderBed> behind_;
  LearntFileSystem files_;
};

}  // namespace

std::vector<ProviderCase> AllProviders() {
  std::vector<ProviderCase> all{
      {"Local", [] { return std::make_unique<LocalBed>(); }},
      {"Share", [] { return std::make_unique<ShareBed>(); }},
      {"MemoryCaseSensitive", [] { return std::make_unique<MemoryBed>(true, QStringList()); }},
      {"MemoryIgnoringCaseWithDrives",
       [] {
         return std::make_unique<MemoryBed>(false, QStringList{QStringLiteral("C:"), QStringLiteral("D:")});
       }},
      {"RemoteMemory",
       [] { return std::make_unique<RemoteBed>(std::make_unique<MemoryBed>(true, QStringList())); }},
      {"RemoteLocal", [] { return std::make_unique<RemoteBed>(std::make_unique<LocalBed>()); }},
      {"RoutedLocal", [] { return std::make_unique<RoutedBed>(); }},
      {"Plain", [] { return std::make_unique<MemoryBed>(true, QStringList(), MemoryBed::Shown::Plain); }},
      {"PlainWithIdentities",
       [] {
         return std::make_unique<MemoryBed>(true, QStringList(), MemoryBed::Shown::PlainWithIdentities);
       }},
#ifndef Q_OS_WIN
      {"SftpPipe", [] { return MakeSftpBed({}); }, NoSftpServerText},
      {"RemoteSftp",
       []() -> std::unique_ptr<ProviderBed> {
         std::unique_ptr<ProviderBed> sftp = MakeSftpBed({});
         return sftp ? std::make_unique<RemoteBed>(std::move(sftp)) : nullptr;
       },
       NoSftpServerText},
      {"SftpOldServer", [] { return MakeSftpBed(OldServer{}); }, NoSftpServerText},
      {"SftpOldReplacingServer", [] { return MakeSftpBed(OldServer{.renameReplaces = true}); },
       NoSftpServerText},
      {"Sshd", [] { return MakeSshdBed(); }, NoSftpServerText},
      {"SshdOld", [] { return MakeOldSshdBed(); }, NoSftpServerText},
#endif
      {"StagedReplacing",
       [] { return std::make_unique<RawBed>(RawCapabilities{.renameReplaces = true, .traits = true}); }},
      {"StagedNotReplacing",
       [] { return std::make_unique<RawBed>(RawCapabilities{.renameRefuses = true, .traits = true}); }},
      {"StagedWithoutTemporaryNames",
       [] {
         return std::make_unique<RawBed>(RawCapabilities{
             .renameReplaces = true, .exclusiveCreate = true, .temporaryNames = false, .traits = true});
       }},
  };
#ifdef Q_OS_WIN
  const std::vector<ProviderCase> servers = LoopbackProviders();
#else
  const std::vector<ProviderCase> servers = FtpProviders();
#endif
  all.insert(all.end(), servers.begin(), servers.end());
  return all;
}

void PrintTo(const ProviderCase& one, std::ostream* out) {
  *out << one.name;
}

std::string NameOfCase(const ::testing::TestParamInfo<ProviderCase>& info) {
  return info.param.name;
}

qint32 ErrorOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

QString ErrorTextOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Description();
  }
  return {};
}

void ConformanceTest::SetUp() {
  bed_ = GetParam().make();
  if (!bed_) {
    GTEST_SKIP() << GetParam().missing().toStdString();
  }
}

bool ConformanceTest::TellsItemsApart() {
  const FileSystemCapabilities can = Files().Capabilities();
  return can.identity && !can.identityOfPath;
}

bool ConformanceTest::IsThere(const QString& path) {
  const qint32 number = ErrorOf([&] { (void)Files().Stat(path); });
  EXPECT_TRUE(number == 0 || number == error::kNotFound) << number;
  return number == 0;
}

QStringList NamesIn(FileSystem& files, const QString& folder) {
  QStringList names;
  for (const FileEntry& entry : files.List(folder)) {
    names.append(entry.name);
  }
  names.sort();
  return names;
}

QStringList ConformanceTest::NamesIn(const QString& folder) {
  return test::NamesIn(Files(), folder);
}

QStringList ConformanceTest::TreeOf(const QString& folder) {
  QStringList lines;
  for (const FileEntry& entry : Files().List(folder)) {
    const QString path = providerpath::Child(folder, entry.name);
    if (entry.IsLink()) {
      lines.append(entry.name + QStringLiteral("@"));
    } else if (entry.IsFolder()) {
      lines.append(entry.name + u'\\');
      for (const QString& line : TreeOf(path)) {
        lines.append(entry.name + u'\\' + line);
      }
    } else if ((entry.attributes & attribute::kDevice) != 0) {
      lines.append(entry.name + u'!');
    } else {
      lines.append(entry.name + u'=' + QString::fromLatin1(ReadFile(Files(), path)));
    }
  }
  lines.sort();
  return lines;
}

FileEntry ConformanceTest::Listed(const QString& folder, const QString& name) {
  for (const FileEntry& entry : Files().List(folder)) {
    if (entry.name == name) {
      return entry;
    }
  }
  ADD_FAILURE() << "not in the listing: " << name.toStdString();
  return {};
}

}  // namespace trevane::test
