#include "base/NameCodec.h"
#include "platform/SystemVolumes.h"
#include "platform/linux/MountTable.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace trevane {
namespace {

constexpr char kRoot[] = "20 1 8:2 / / rw,relatime shared:1 - ext4 /dev/sda2 rw\n";

// A system of fixtures: its mount table, its block devices and its file-system ids.
class SystemVolumesTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(root_.isValid());
    Mount({});
  }

  void Write(const QString& path, const QByteArray& content) {
    const QString whole = root_.path() + path;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(whole).path()));
    QFile file(whole);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }

  void Mount(const QByteArray& lines) { Write(QStringLiteral("/proc/self/mountinfo"), kRoot + lines); }

  // A block device as /sys and udev show it.
  void Device(const QString& number, const QString& description, const QString& uuid = {},
              const QByteArray& removable = "0\n") {
    const QString folder = root_.path() + QStringLiteral("/sys/devices/") + description;
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/sys/dev/block")));
    Write(QStringLiteral("/sys/devices/") + QFileInfo(description).path() + QStringLiteral("/removable"),
          removable);
    ASSERT_TRUE(QFile::link(QStringLiteral("../../devices/") + description,
                            root_.path() + QStringLiteral("/sys/dev/block/") + number));
    if (!uuid.isEmpty()) {
      SetId(QFileInfo(description).fileName(), uuid);
    }
  }

  // A disk or partition as /sys/class shows it.
  void Class(const QString& name, const QString& description, const QByteArray& removable = "0\n") {
    ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/sys/devices/") + description));
    ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/sys/class/block")));
    Write(QStringLiteral("/sys/devices/") + QFileInfo(description).path() + QStringLiteral("/removable"),
          removable);
    ASSERT_TRUE(QFile::link(QStringLiteral("../../devices/") + description,
                            root_.path() + QStringLiteral("/sys/class/block/") + name));
  }
  // A device made of others.
  void Stack(const QString& name, const QStringList& below) {
    Class(name, QStringLiteral("virtual/block/") + name);
    const QString slaves =
        root_.path() + QStringLiteral("/sys/devices/virtual/block/") + name + QStringLiteral("/slaves");
    ASSERT_TRUE(QDir().mkpath(slaves));
    for (const QString& one : below) {
      ASSERT_TRUE(QFile::link(QStringLiteral("../../../../../class/block/") + one, slaves + u'/' + one));
    }
  }
  void Number(const QString& number, const QString& name) {
    ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/sys/dev/block")));
    ASSERT_TRUE(QFile::link(QStringLiteral("../../devices/virtual/block/") + name,
                            root_.path() + QStringLiteral("/sys/dev/block/") + number));
  }

  void SetId(const QString& name, const QString& uuid) {
    ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/dev/disk/by-uuid")));
    ASSERT_TRUE(QFile::link(QStringLiteral("../../") + name,
                            root_.path() + QStringLiteral("/dev/disk/by-uuid/") + uuid));
  }
  void DropIds() { QDir(root_.path() + QStringLiteral("/dev/disk")).removeRecursively(); }

  // "C: / 3, D: /data/ 3"
  static std::string Shown(const SystemVolumes& volumes) {
    QStringList shown;
    for (const Volume& volume : volumes.Current()) {
      shown += QStringLiteral("%1 %2 %3").arg(volume.name, volume.rootPath).arg(volume.driveType);
    }
    return shown.join(u", ").toStdString();
  }

  std::string RefreshedWith(const QByteArray& lines) {
    Mount(lines);
    EXPECT_TRUE(volumes_.Refresh());
    return Shown(volumes_);
  }

  QTemporaryDir root_;
  SystemVolumes volumes_{root_.path()};
};

TEST_F(SystemVolumesTest, NothingIsCurrentBeforeTheFirstRefresh) {
  EXPECT_TRUE(volumes_.Current().empty());
}

TEST_F(SystemVolumesTest, RootFileSystemIsDriveC) {
  EXPECT_EQ(RefreshedWith({}), "C: / 3");
}

TEST_F(SystemVolumesTest, MissingMountTableKeepsTheCurrentDrives) {
  ASSERT_TRUE(volumes_.Refresh());
  ASSERT_TRUE(QFile::remove(root_.filePath(QStringLiteral("proc/self/mountinfo"))));
  EXPECT_FALSE(volumes_.Refresh());
  EXPECT_EQ(Shown(volumes_), "C: / 3");
  Write(QStringLiteral("/proc/self/mountinfo"), "nonsense\n\n1 2 3\n");
  EXPECT_FALSE(volumes_.Refresh());
  EXPECT_EQ(Shown(volumes_), "C: / 3");
}

TEST_F(SystemVolumesTest, MountedVolumesTakeLettersInOrderOfMounting) {
  EXPECT_EQ(RefreshedWith("30 20 8:3 / /home rw - ext4 /dev/sda3 rw\n"
                          "31 20 8:17 / /data rw - xfs /dev/sdb1 rw\n"),
            "C: / 3, D: /home/ 3, E: /data/ 3");
}

TEST_F(SystemVolumesTest, PseudoFileSystemsHaveNoLetter) {
  EXPECT_EQ(RefreshedWith("21 20 0:20 / /sys rw - sysfs sysfs rw\n"
                          "22 20 0:21 / /proc rw - proc proc rw\n"
                          "23 20 0:5 / /dev rw - devtmpfs udev rw\n"
                          "24 23 0:22 / /dev/pts rw - devpts devpts rw\n"
                          "25 20 0:23 / /run rw - tmpfs tmpfs rw\n"
                          "26 23 0:24 / /dev/shm rw - tmpfs tmpfs rw\n"
                          "27 25 0:25 / /run/user/1000 rw - tmpfs tmpfs rw\n"
                          "28 21 0:26 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw\n"
                          "29 20 0:27 / /mnt/auto rw - autofs systemd-1 rw\n"
                          "30 27 0:28 / /run/user/1000/gvfs rw - fuse.gvfsd-fuse gvfsd-fuse rw\n"
                          "31 20 0:29 / /var/lib/docker/overlay2/x/merged rw - overlay overlay rw\n"
                          "32 20 7:1 / /snap/core/1 ro - squashfs /dev/loop1 ro\n"),
            "C: / 3");
}

TEST_F(SystemVolumesTest, MemoryFileSystemOfTheUserIsRamDisk) {
  EXPECT_EQ(RefreshedWith("21 20 0:40 / /tmp rw - tmpfs tmpfs rw\n"
                          "22 20 0:41 / /mnt/ram rw - ramfs none rw\n"),
            "C: / 3, D: /tmp/ 6, E: /mnt/ram/ 6");
}

TEST_F(SystemVolumesTest, NetworkFileSystemsAreRemote) {
  EXPECT_EQ(RefreshedWith("21 20 0:40 / /mnt/a rw - nfs4 server:/export rw\n"
                          "22 20 0:41 / /mnt/b rw - cifs //server/share rw\n"
                          "23 20 0:42 / /mnt/c rw - smb3 //server/other rw\n"
                          "24 20 0:43 / /mnt/d rw - fuse.sshfs cell:/ rw\n"
                          "25 20 0:44 / /mnt/e rw - 9p host rw\n"),
            "C: / 3, D: /mnt/a/ 4, E: /mnt/b/ 4, F: /mnt/c/ 4, G: /mnt/d/ 4, H: /mnt/e/ 4");
}

TEST_F(SystemVolumesTest, FilesOfAProgramAreRemote) {
  EXPECT_EQ(RefreshedWith("21 20 0:40 / /mnt/a rw - fuse.archive archive rw\n"
                          "22 20 0:41 / /mnt/b rw - fuse cell:/ rw\n"
                          "23 20 8:17 / /mnt/c rw - fuseblk /dev/sdb1 rw\n"),
            "C: / 3, D: /mnt/a/ 4, E: /mnt/b/ 4, F: /mnt/c/ 3");
}

TEST_F(SystemVolumesTest, DiscsAreOptical) {
  Device(QStringLiteral("11:0"), QStringLiteral("pci0000:00/ata2/block/sr0"), {}, "1\n");
  EXPECT_EQ(RefreshedWith("21 20 11:0 / /media/disc ro - iso9660 /dev/sr0 ro\n"
                          "22 20 7:0 / /mnt/image ro - iso9660 /dev/loop0 ro\n"
                          "23 20 11:1 / /media/dvd ro - udf /dev/sr1 ro\n"),
            "C: / 3, D: /media/disc/ 5, E: /mnt/image/ 5, F: /media/dvd/ 5");
}

TEST_F(SystemVolumesTest, RemovableComesFromTheDiskOfThePartition) {
  Device(QStringLiteral("8:17"), QStringLiteral("pci0000:00/0/block/sdb/sdb1"), {}, "1\n");
  Device(QStringLiteral("8:33"), QStringLiteral("pci0000:00/usb1/1-1/block/sdc/sdc1"));
  Device(QStringLiteral("8:49"), QStringLiteral("pci0000:00/ata1/block/sdd/sdd1"));
  EXPECT_EQ(RefreshedWith("21 20 8:17 / /media/a rw - vfat /dev/sdb1 rw\n"
                          "22 20 8:33 / /media/b rw - ext4 /dev/sdc1 rw\n"
                          "23 20 8:49 / /media/c rw - ext4 /dev/sdd1 rw\n"),
            "C: / 3, D: /media/a/ 2, E: /media/b/ 2, F: /media/c/ 3");
}

TEST_F(SystemVolumesTest, RemovableComesFromTheDisksThatAVolumeIsMadeOf) {
  Class(QStringLiteral("sdb1"), QStringLiteral("pci0000:00/usb1/1-1/block/sdb/sdb1"));
  Class(QStringLiteral("sdc1"), QStringLiteral("pci0000:00/usb1/1-2/block/sdc/sdc1"));
  Class(QStringLiteral("sdd1"), QStringLiteral("pci0000:00/ata1/block/sdd/sdd1"));
  Class(QStringLiteral("sde1"), QStringLiteral("pci0000:00/ata2/block/sde/sde1"), "1\n");
  Stack(QStringLiteral("dm-0"), {QStringLiteral("sdc1")});
  Stack(QStringLiteral("dm-1"), {QStringLiteral("sdd1")});
  Stack(QStringLiteral("dm-2"), {QStringLiteral("dm-1"), QStringLiteral("dm-0")});
  Stack(QStringLiteral("dm-3"), {QStringLiteral("sde1")});
  Stack(QStringLiteral("dm-4"), {QStringLiteral("dm-4")});
  Number(QStringLiteral("253:0"), QStringLiteral("dm-0"));
  Number(QStringLiteral("253:2"), QStringLiteral("dm-2"));
  ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/dev/mapper")));
  for (const int i : {1, 3, 4}) {
    ASSERT_TRUE(QFile::link(QStringLiteral("../dm-%1").arg(i),
                            root_.path() + QStringLiteral("/dev/mapper/m%1").arg(i)));
  }
  struct Row {
    const char* label;
    QByteArray line;
    const char* shown;
  };
  const Row rows[] = {
      {"counts its own numbers", "21 20 0:50 / /media/a rw - btrfs /dev/sdb1 rw\n", "C: / 3, D: /media/a/ 2"},
      {"encrypted", "22 20 253:0 / /media/b rw - ext4 /dev/mapper/m0 rw\n", "C: / 3, E: /media/b/ 2"},
      {"encrypted on a fixed disk", "23 20 0:51 / /media/c rw - btrfs /dev/mapper/m1 rw\n",
       "C: / 3, F: /media/c/ 3"},
      {"a logical volume over both", "24 20 253:2 / /media/d rw - xfs /dev/mapper/m2 rw\n",
       "C: / 3, G: /media/d/ 2"},
      {"own numbers, encrypted", "25 20 0:52 / /media/e rw - btrfs /dev/mapper/m3 rw\n",
       "C: / 3, H: /media/e/ 2"},
      {"made of itself", "26 20 0:53 / /media/f rw - btrfs /dev/mapper/m4 rw\n", "C: / 3, I: /media/f/ 3"},
      {"unknown", "27 20 0:54 / /media/g rw - btrfs /dev/sdz9 rw\n", "C: / 3, J: /media/g/ 3"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.label);
    EXPECT_EQ(RefreshedWith(row.line), row.shown);
  }
}

TEST_F(SystemVolumesTest, EachVolumeHasTheDeviceNumberThatItsFolderHas) {
  const auto numberOf = [](quint64 majorNumber, quint64 minorNumber) {
    return majorNumber << 32 | minorNumber;
  };
  Mount(
      "21 20 8:17 / /data rw - xfs /dev/sdb1 rw\n"
      "22 20 0:48 / /mnt/a rw - cifs //server/share rw\n"
      "23 20 0:50 / /mnt/b rw - btrfs /dev/sdc1 rw\n"
      "24 20 0:51 / /mnt/gone rw - btrfs /dev/sdd1 rw\n");
  // Its subvolumes have other numbers than those in the table.
  ASSERT_TRUE(QDir().mkpath(root_.path() + QStringLiteral("/mnt/b")));
  struct stat status {};
  ASSERT_EQ(::stat(root_.path().toUtf8().constData(), &status), 0);
  ASSERT_TRUE(volumes_.Refresh());
  std::vector<quint64> devices;
  for (const Volume& volume : volumes_.Current()) {
    devices.push_back(volume.device);
  }
  EXPECT_EQ(devices, (std::vector<quint64>{numberOf(8, 2), numberOf(8, 17), numberOf(0, 48),
                                           numberOf(major(status.st_dev), minor(status.st_dev)), 0}));
}

TEST(RunningSystemVolumesTest, EachDriveIsTheVolumeMountedThere) {
  SystemVolumes volumes;
  ASSERT_TRUE(volumes.Refresh());
  for (const Volume& volume : volumes.Current()) {
    SCOPED_TRACE(volume.rootPath.toStdString());
    struct stat status {};
    if (volume.driveType == drivetype::kRemote ||
        ::stat(EncodeText(volume.rootPath).constData(), &status) != 0) {
      continue;
    }
    EXPECT_EQ(volume.device, (static_cast<quint64>(major(status.st_dev)) << 32) | minor(status.st_dev));
  }
}

TEST_F(SystemVolumesTest, RootFileSystemOnARemovableDiskIsFixed) {
  Device(QStringLiteral("8:2"), QStringLiteral("pci0000:00/usb1/1-1/block/sda/sda2"), {}, "1\n");
  EXPECT_EQ(RefreshedWith({}), "C: / 3");
}

TEST_F(SystemVolumesTest, OctalEscapesOfMountPointsAreDecoded) {
  ASSERT_TRUE(volumes_.Refresh());
  Mount("21 20 8:17 / /media/My\\040Disk\\134x\\011y rw - vfat /dev/sdb1 rw\n");
  ASSERT_TRUE(volumes_.Refresh());
  ASSERT_EQ(volumes_.Current().size(), 2U);
  EXPECT_EQ(volumes_.Current()[1].rootPath, QStringLiteral("/media/My Disk\\x\ty/"));
}

TEST_F(SystemVolumesTest, MountPointThatIsNoTextKeepsItsBytes) {
  Mount("21 20 8:17 / /media/\xFF rw - vfat /dev/sdb1 rw\n");
  ASSERT_TRUE(volumes_.Refresh());
  ASSERT_EQ(volumes_.Current().size(), 2U);
  EXPECT_EQ(volumes_.Current()[1].rootPath, QStringLiteral("/media/") + QChar(0xDCFF) + u'/');
}

TEST_F(SystemVolumesTest, SameFileSystemMountedTwiceHasOneLetter) {
  EXPECT_EQ(RefreshedWith("21 20 8:17 / /data rw - ext4 /dev/sdb1 rw\n"
                          "22 20 8:17 / /srv/data rw - ext4 /dev/sdb1 rw\n"
                          "23 20 8:2 / /mnt/root rw - ext4 /dev/sda2 rw\n"),
            "C: / 3, D: /data/ 3");
}

TEST_F(SystemVolumesTest, ABindMountOfAListedFileSystemHasNoLetter) {
  EXPECT_EQ(RefreshedWith("21 20 8:2 /home/user /srv/user rw - ext4 /dev/sda2 rw\n"
                          "22 20 8:17 /part /mnt/part rw - ext4 /dev/sdb1 rw\n"
                          "23 20 8:17 / /mnt/whole rw - ext4 /dev/sdb1 rw\n"),
            "C: / 3, D: /mnt/whole/ 3");
}

TEST_F(SystemVolumesTest, FolderOfAnUnseenFileSystemHasALetter) {
  EXPECT_EQ(RefreshedWith("21 20 8:17 /part /mnt/part rw - ext4 /dev/sdb1 rw\n"), "C: / 3, D: /mnt/part/ 3");
  // It keeps it when the whole appears.
  EXPECT_EQ(RefreshedWith("21 20 8:17 /part /mnt/part rw - ext4 /dev/sdb1 rw\n"
                          "22 20 8:17 / /mnt/whole rw - ext4 /dev/sdb1 rw\n"),
            "C: / 3, D: /mnt/part/ 3, E: /mnt/whole/ 3");
}

TEST_F(SystemVolumesTest, SingleFilesMountedIntoAContainerHaveNoLetter) {
  Write(QStringLiteral("/srv/settings.conf"), "x");
  Write(QStringLiteral("/etc/hosts"), "x");
  EXPECT_EQ(RefreshedWith("21 20 8:17 /c/hosts /etc/hosts rw - ext4 /dev/sdb1 rw\n"
                          "22 20 8:17 /c/resolv.conf /etc/resolv.conf rw - ext4 /dev/sdb1 rw\n"
                          "23 20 8:17 /c/settings /srv/settings.conf rw - ext4 /dev/sdb1 rw\n"),
            "C: / 3");
}

TEST_F(SystemVolumesTest, SubvolumesHaveLettersOfTheirOwn) {
  SetId(QStringLiteral("sda2"), QStringLiteral("1234"));
  Write(QStringLiteral("/proc/self/mountinfo"),
        "20 1 0:30 /@ / rw - btrfs /dev/sda2 rw\n"
        "21 20 0:30 /@home /home rw - btrfs /dev/sda2 rw\n");
  ASSERT_TRUE(volumes_.Refresh());
  EXPECT_EQ(Shown(volumes_), "C: / 3, D: /home/ 3");
}

TEST_F(SystemVolumesTest, CoveredMountsAreNotShown) {
  // The first root is covered by the real one; the disk on /mnt by another mounted there later.
  Write(QStringLiteral("/proc/self/mountinfo"),
        "1 0 0:2 / / rw - rootfs rootfs rw\n"
        "20 1 8:2 / / rw - ext4 /dev/sda2 rw\n"
        "21 20 8:17 / /mnt rw - ext4 /dev/sdb1 rw\n"
        "22 21 8:33 / /mnt/deep rw - ext4 /dev/sdc1 rw\n"
        "23 21 8:49 / /mnt rw - ext4 /dev/sdd1 rw\n");
  ASSERT_TRUE(volumes_.Refresh());
  EXPECT_EQ(Shown(volumes_), "C: / 3, D: /mnt/ 3");
}

TEST_F(SystemVolumesTest, RootThatIsNotInTheTableIsDriveCAllTheSame) {
  Write(QStringLiteral("/proc/self/mountinfo"), "21 20 8:17 / /data rw - ext4 /dev/sdb1 rw\n");
  ASSERT_TRUE(volumes_.Refresh());
  EXPECT_EQ(Shown(volumes_), "C: / 3, D: /data/ 3");
  // The number is that of its folder.
  struct stat status {};
  ASSERT_EQ(::stat(root_.path().toUtf8().constData(), &status), 0);
  EXPECT_EQ(volumes_.Current()[0].device,
            (static_cast<quint64>(major(status.st_dev)) << 32) | minor(status.st_dev));
}

TEST_F(SystemVolumesTest, MemoryOfTheSystemHasNoLetterAndAStickBesideItHas) {
  EXPECT_EQ(RefreshedWith("21 20 0:23 / /run rw - tmpfs tmpfs rw\n"
                          "22 21 0:40 / /run/lock rw - tmpfs tmpfs rw\n"
                          "23 21 0:41 / /run/credentials/systemd-sysctl.service ro - ramfs none rw\n"
                          "24 20 0:42 / /dev/shm rw - tmpfs tmpfs rw\n"
                          "25 20 0:43 / /sys/fs/cgroup ro - tmpfs tmpfs ro\n"
                          "26 21 0:44 / /run/media rw - tmpfs none rw\n"
                          "27 26 8:17 / /run/media/user/STICK rw - vfat /dev/sdb1 rw\n"
                          "28 20 0:45 / /runner rw - tmpfs tmpfs rw\n"),
            "C: / 3, D: /run/media/user/STICK/ 3, E: /runner/ 6");
}

TEST_F(SystemVolumesTest, SpaceIsReadOnlyFromVolumesThatDoNotBlock) {
  Mount(
      "21 20 0:40 / /tmp rw - tmpfs tmpfs rw\n"
      "22 20 0:41 / /usr rw - nfs4 server:/export rw\n"
      "23 20 0:42 / /var rw - fuse.archive archive rw\n");
  ASSERT_TRUE(volumes_.Refresh());
  ASSERT_EQ(volumes_.Current().size(), 4U);
  const std::optional<VolumeSpace> space = volumes_.QueryOfSpace(volumes_.Current()[1])();
  ASSERT_TRUE(space.has_value());
  EXPECT_GT(space->total, 0);
  EXPECT_LE(space->free, space->total);
  EXPECT_GE(space->free, 0);
  EXPECT_FALSE(volumes_.QueryOfSpace(volumes_.Current()[2])().has_value());
  EXPECT_FALSE(volumes_.QueryOfSpace(volumes_.Current()[3])().has_value());
  EXPECT_FALSE(
      volumes_.QueryOfSpace({QStringLiteral("X:"), QStringLiteral("/no/such/place/"), drivetype::kFixed})()
          .has_value());
}

TEST_F(SystemVolumesTest, VolumeThatComesAgainHasItsOldLetter) {
  const QByteArray a = "21 20 8:17 / /data rw - ext4 /dev/sdb1 rw\n";
  const QByteArray b = "22 20 8:33 / /more rw - ext4 /dev/sdc1 rw\n";
  EXPECT_EQ(RefreshedWith(a + b), "C: / 3, D: /data/ 3, E: /more/ 3");
  EXPECT_EQ(RefreshedWith(b), "C: / 3, E: /more/ 3");
  EXPECT_EQ(RefreshedWith(b + a), "C: / 3, D: /data/ 3, E: /more/ 3");
}

TEST_F(SystemVolumesTest, LetterOfAGoneVolumeIsNeverGivenToAnother) {
  EXPECT_EQ(RefreshedWith("21 20 8:17 / /data rw - ext4 /dev/sdb1 rw\n"), "C: / 3, D: /data/ 3");
  EXPECT_EQ(RefreshedWith("22 20 8:33 / /more rw - ext4 /dev/sdc1 rw\n"), "C: / 3, E: /more/ 3");
}

TEST_F(SystemVolumesTest, AnotherDiskOnTheSameDeviceHasAnotherLetter) {
  const QByteArray line = "21 20 8:17 / /media/usb rw - vfat /dev/sdb1 rw\n";
  Device(QStringLiteral("8:17"), QStringLiteral("pci0000:00/usb1/1-1/block/sdb/sdb1"),
         QStringLiteral("AAAA-1111"));
  EXPECT_EQ(RefreshedWith(line), "C: / 3, D: /media/usb/ 2");
  DropIds();
  SetId(QStringLiteral("sdb1"), QStringLiteral("BBBB-2222"));
  EXPECT_EQ(RefreshedWith(line), "C: / 3, E: /media/usb/ 2");
  DropIds();
  SetId(QStringLiteral("sdb1"), QStringLiteral("AAAA-1111"));
  EXPECT_EQ(RefreshedWith(line), "C: / 3, D: /media/usb/ 2");
}

TEST_F(SystemVolumesTest, DiskThatIsMountedElsewhereKeepsItsLetter) {
  Device(QStringLiteral("8:17"), QStringLiteral("pci0000:00/usb1/1-1/block/sdb/sdb1"),
         QStringLiteral("AAAA-1111"));
  EXPECT_EQ(RefreshedWith("21 20 8:17 / /media/usb rw - vfat /dev/sdb1 rw\n"), "C: / 3, D: /media/usb/ 2");
  EXPECT_EQ(RefreshedWith("21 20 8:17 / /mnt/stick rw - vfat /dev/sdb1 rw\n"), "C: / 3, D: /mnt/stick/ 2");
}

TEST_F(SystemVolumesTest, VolumesBeyondZHaveNone) {
  QByteArray lines;
  for (int i = 0; i < 40; ++i) {
    lines += QByteArray::number(100 + i) + " 20 9:" + QByteArray::number(i) + " / /mnt/" +
             QByteArray::number(i) + " rw - ext4 /dev/md" + QByteArray::number(i) + " rw\n";
  }
  Mount(lines);
  ASSERT_TRUE(volumes_.Refresh());
  EXPECT_EQ(volumes_.Current().size(), 24U);
  EXPECT_EQ(volumes_.Current().back().name, QStringLiteral("Z:"));
}

TEST_F(SystemVolumesTest, RunningSystemHasItsRoot) {
  SystemVolumes running;
  ASSERT_TRUE(running.Refresh());
  ASSERT_FALSE(running.Current().empty());
  EXPECT_EQ(running.Current()[0].name, QStringLiteral("C:"));
  EXPECT_EQ(running.Current()[0].rootPath, QStringLiteral("/"));
}

TEST(MountTable, LinesThatAreNoneAreLeftOut) {
  EXPECT_TRUE(ParseMountTable("").empty());
  EXPECT_TRUE(ParseMountTable("1 2 3:4 / /x rw ext4 /dev/sda rw\n").empty());
  EXPECT_TRUE(ParseMountTable("1 2 3:4 / /x rw -\n").empty());
  EXPECT_EQ(ParseMountTable("1 2 3:4 / /x rw shared:1 master:2 - ext4 /dev/sda rw\n").size(), 1U);
}

TEST(MountTable, ParentsThatRunInACircleEnd) {
  EXPECT_EQ(
      VisibleMounts(ParseMountTable("1 2 3:4 / /x rw - ext4 a rw\n2 1 3:5 / /y rw - ext4 b rw\n")).size(),
      2U);
}

}  // namespace
}  // namespace trevane
