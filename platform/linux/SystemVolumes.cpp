#include "platform/SystemVolumes.h"

#include "base/NameCodec.h"
#include "platform/linux/MountTable.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <climits>
#include <initializer_list>
#include <utility>

#include <dirent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace trevane {
namespace {

constexpr char16_t kRootLetter = u'C';
constexpr char16_t kLastLetter = u'Z';

using Names = std::initializer_list<const char*>;

bool IsOneOf(const QByteArray& text, Names names) {
  return std::any_of(names.begin(), names.end(), [&text](const char* name) { return text == name; });
}

// File systems that show the kernel's or a daemon's own matters.
bool IsPseudoType(const QByteArray& type) {
  return IsOneOf(type,
                 {"autofs",     "binfmt_misc", "bpf",       "cgroup",     "cgroup2",    "configfs",
                  "debugfs",    "devpts",      "devtmpfs",  "efivarfs",   "fusectl",    "fuse.gvfsd-fuse",
                  "fuse.lxcfs", "fuse.portal", "hugetlbfs", "mqueue",     "nsfs",       "pipefs",
                  "proc",       "pstore",      "resctrl",   "rpc_pipefs", "securityfs", "selinuxfs",
                  "smackfs",    "sockfs",      "sysfs",     "tracefs"});
}

bool IsNetworkType(const QByteArray& type) {
  return IsOneOf(type, {"9p",
                        "acfs",
                        "afs",
                        "beegfs",
                        "ceph",
                        "cifs",
                        "coda",
                        "davfs",
                        "fuse.afp",
                        "fuse.cephfs",
                        "fuse.ceph-fuse",
                        "fuse.curlftpfs",
                        "fuse.davfs",
                        "fuse.davfs2",
                        "fuse.glusterfs",
                        "fuse.moosefs",
                        "fuse.rclone",
                        "fuse.s3fs",
                        "fuse.smbnetfs",
                        "fuse.sshfs",
                        "glusterfs",
                        "gfs2",
                        "lustre",
                        "ncpfs",
                        "nfs",
                        "nfs4",
                        "ocfs2",
                        "orangefs",
                        "pvfs2",
                        "smb3",
                        "smbfs",
                        "vboxsf",
                        "virtiofs",
                        "vmhgfs",
                        "fuse.vmhgfs-fuse"});
}

bool IsMemoryType(const QByteArray& type) {
  return IsOneOf(type, {"tmpfs", "ramfs"});
}
bool IsFuse(const QByteArray& type) {
  return type == "fuse" || type.startsWith("fuse.");
}

// Mounts that no user made and no user looks into.
bool IsOfTheSystem(const Mount& mount) {
  const auto isBelow = [&mount](Names folders) {
    return std::any_of(folders.begin(), folders.end(),
                       [&mount](const char* folder) { return IsAtOrBelow(mount.point, folder); });
  };
  if (IsPseudoType(mount.type) || isBelow({"/proc", "/sys", "/dev", "/etc"})) {
    return true;
  }
  if (IsMemoryType(mount.type) && isBelow({"/run", "/var/run"})) {
    return true;
  }
  if (isBelow({"/snap", "/var/lib/snapd", "/var/lib/docker", "/var/lib/containers", "/var/lib/containerd",
               "/var/lib/kubelet", "/run/containerd", "/run/docker", "/run/snapd"})) {
    return true;
  }
  // A program that mounts itself for as long as it runs.
  return IsFuse(mount.type) && mount.point.startsWith("/tmp/.mount_");
}

// As Volume::device has it.
quint64 NumberOf(quint32 majorNumber, quint32 minorNumber) {
  return (static_cast<quint64>(majorNumber) << 32) | minorNumber;
}

// Data of the system about the block devices, by paths that may be fixtures.
class Devices {
 public:
  explicit Devices(QByteArray systemRoot) : systemRoot_(std::move(systemRoot)) {}

  /// Of a "major:minor": where its description lies; empty when it is no block device.
  [[nodiscard]] QByteArray Path(const QByteArray& device) const {
    return LinkTarget(systemRoot_ + "/sys/dev/block/" + device);
  }

  /// The kernel's name of the mount's device ("sda1"), empty when there is none.
  [[nodiscard]] QByteArray Name(const Mount& mount) const {
    QByteArray path = Path(mount.device);
    if (path.isEmpty() && mount.source.startsWith("/dev/")) {
      // A file system that counts its own device numbers names its device all the same.
      const QByteArray target = LinkTarget(systemRoot_ + mount.source);
      path = target.isEmpty() ? mount.source : target;
    }
    return path.mid(path.lastIndexOf('/') + 1);
  }

  [[nodiscard]] bool IsRemovable(const Mount& mount) const {
    if (!Path(mount.device).isEmpty()) {
      return IsRemovableDisk(systemRoot_ + "/sys/dev/block/" + mount.device, 0);
    }
    const QByteArray name = Name(mount);
    return !name.isEmpty() && IsRemovableDisk(systemRoot_ + "/sys/class/block/" + name, 0);
  }

  /// The file system's own id as udev has read it; empty when it has none. No device is touched.
  [[nodiscard]] QByteArray FileSystemId(const QByteArray& name) const {
    const QByteArray folder = systemRoot_ + "/dev/disk/by-uuid";
    if (name.isEmpty()) {
      return {};
    }
    for (const QByteArray& id : EntriesOf(folder)) {
      const QByteArray target = LinkTarget(folder + '/' + id);
      if (target.mid(target.lastIndexOf('/') + 1) == name) {
        return id;
      }
    }
    return {};
  }

  /// The device number of the mounted folder.
  [[nodiscard]] quint64 DeviceNumber(const Mount& mount) const {
    // These give each subvolume a number of its own, which is not the one in the table. Nothing is read from
    // the disk for it: the folder is in memory as long as it is mounted.
    if (IsOneOf(mount.type, {"bcachefs", "btrfs"})) {
      struct stat status {};
      return ::lstat((systemRoot_ + mount.point).constData(), &status) == 0
                 ? NumberOf(major(status.st_dev), minor(status.st_dev))
                 : 0;
    }
    const qsizetype colon = mount.device.indexOf(':');
    return colon < 0 ? 0 : NumberOf(mount.device.left(colon).toUInt(), mount.device.mid(colon + 1).toUInt());
  }

  /// For the root when the mount table has no line for it (chroot).
  [[nodiscard]] quint64 DeviceNumberOfRoot() const {
    struct stat status {};
    return ::lstat((systemRoot_ + '/').constData(), &status) == 0
               ? NumberOf(major(status.st_dev), minor(status.st_dev))
               : 0;
  }

  /// True for one file that is mounted over another, as containers do. Only asked of what cannot hang.
  [[nodiscard]] bool IsFile(const Mount& mount) const {
    struct stat status {};
    return ::lstat((systemRoot_ + mount.point).constData(), &status) == 0 && !S_ISDIR(status.st_mode);
  }

 private:
  /// `folder` describes a disk, a partition, or a device that is made of others (encryption, logical
  /// volumes).
  [[nodiscard]] bool IsRemovableDisk(const QByteArray& folder, int depth) const {
    constexpr int kMostLayers = 8;
    // A partition has no such files of its own; its disk, one up, has.
    if (LinkTarget(folder).contains("/usb") || FirstLine(folder + "/removable") == "1" ||
        FirstLine(folder + "/../removable") == "1" || FirstLine(folder + "/device/type") == "SD" ||
        FirstLine(folder + "/../device/type") == "SD") {
      return true;
    }
    const std::vector<QByteArray> below =
        depth < kMostLayers ? EntriesOf(folder + "/slaves") : std::vector<QByteArray>();
    return std::any_of(below.begin(), below.end(), [&](const QByteArray& name) {
      return IsRemovableDisk(systemRoot_ + "/sys/class/block/" + name, depth + 1);
    });
  }

  static std::vector<QByteArray> EntriesOf(const QByteArray& folder) {
    std::vector<QByteArray> names;
    DIR* entries = ::opendir(folder.constData());
    if (entries == nullptr) {
      return names;
    }
    while (const dirent* entry = ::readdir(entries)) {
      if (entry->d_name[0] != '.') {
        names.emplace_back(entry->d_name);
      }
    }
    ::closedir(entries);
    return names;
  }

  static QByteArray LinkTarget(const QByteArray& path) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(path.constData(), target.data(), target.size());
    return length < 0 ? QByteArray() : QByteArray(target.data(), length);
  }

  static QByteArray FirstLine(const QByteArray& path) {
    QFile file(DecodeBytes(path));
    return file.open(QIODevice::ReadOnly) ? file.readLine(64).trimmed() : QByteArray();
  }

  QByteArray systemRoot_;
};

qint32 DriveType(const Mount& mount, const Devices& devices) {
  if (IsNetworkType(mount.type)) {
    return drivetype::kRemote;
  }
  if (IsMemoryType(mount.type)) {
    return drivetype::kRamDisk;
  }
  // A program gives its files, and may answer late or never, wherever it has them from.
  if (IsFuse(mount.type) && mount.point != "/" && !mount.source.startsWith("/dev/")) {
    return drivetype::kRemote;
  }
  const QByteArray name = devices.Name(mount);
  // A disc in a drive, or its picture in a file.
  if (name.startsWith("sr") || (mount.type == "iso9660" && name.startsWith("loop"))) {
    return drivetype::kCdrom;
  }
  // The root file system stays while the system runs, whatever it is on.
  if (mount.point != "/" && devices.IsRemovable(mount)) {
    return drivetype::kRemovable;
  }
  return drivetype::kFixed;
}

// Identifies a volume within one run. Device names are used again for other disks, so they count only
// together with the mount point, and only if the file system has no id.
QString Identity(const Mount& mount, qint32 driveType, const Devices& devices) {
  QByteArray identity;
  const QByteArray id = devices.FileSystemId(devices.Name(mount));
  if (!id.isEmpty()) {
    identity = "id\n" + id + '\n' + mount.root;
  } else if (driveType == drivetype::kRemote) {
    identity = mount.type + '\n' + mount.source + '\n' + mount.root;
  } else {
    identity = mount.type + '\n' + mount.source + '\n' + mount.root + '\n' + mount.point;
  }
  return DecodeBytes(identity);
}

// True when the files of `mount` are seen through `other`, too: the same file system from the same folder or
// one above it.
bool IsSeenThrough(const Mount& mount, const Mount& other) {
  return mount.device == other.device && IsAtOrBelow(mount.root, other.root);
}

}  // namespace

SystemVolumes::SystemVolumes(QString systemRoot) : systemRoot_(std::move(systemRoot)) {}

QChar SystemVolumes::LetterOf(const QString& identity) {
  const auto known = letters_.constFind(identity);
  if (known != letters_.constEnd()) {
    return *known;
  }
  const auto next = static_cast<char16_t>(kRootLetter + 1 + letters_.size());
  if (next > kLastLetter) {
    return {};
  }
  letters_.insert(identity, QChar(next));
  return QChar(next);
}

bool SystemVolumes::Refresh() {
  QFile table(systemRoot_ + QStringLiteral("/proc/self/mountinfo"));
  if (!table.open(QIODevice::ReadOnly)) {
    return false;
  }
  const std::vector<Mount> mounts = VisibleMounts(ParseMountTable(table.readAll()));
  if (mounts.empty()) {
    return false;
  }
  const Devices devices(EncodeText(systemRoot_));
  const auto root =
      std::find_if(mounts.begin(), mounts.end(), [](const Mount& mount) { return mount.point == "/"; });

  std::vector<Volume> volumes;
  volumes.push_back({QStringLiteral("C:"), QStringLiteral("/"),
                     root == mounts.end() ? drivetype::kFixed : DriveType(*root, devices),
                     root == mounts.end() ? devices.DeviceNumberOfRoot() : devices.DeviceNumber(*root)});
  std::vector<Mount> taken;
  if (root != mounts.end()) {
    taken.push_back(*root);
  }
  // A mount that shows only part of a listed file system gets no letter.
  std::vector<Mount> candidates;
  std::copy_if(mounts.begin(), mounts.end(), std::back_inserter(candidates),
               [](const Mount& mount) { return mount.point != "/" && !IsOfTheSystem(mount); });
  for (size_t i = 0; i < candidates.size(); ++i) {
    const Mount& mount = candidates[i];
    const qint32 driveType = DriveType(mount, devices);
    const QString identity = Identity(mount, driveType, devices);
    const auto isTwin = [&mount](const Mount& other) {
      return mount.device == other.device && mount.root == other.root;
    };
    const auto holds = [&mount](const Mount& other) { return IsSeenThrough(mount, other); };
    const bool isPart = std::any_of(taken.begin(), taken.end(), holds) ||
                        std::any_of(candidates.begin() + qsizetype(i) + 1, candidates.end(),
                                    [&](const Mount& other) { return !isTwin(other) && holds(other); });
    // A part that has had its letter keeps it when the whole is mounted later.
    if (std::any_of(taken.begin(), taken.end(), isTwin) || (isPart && !letters_.contains(identity))) {
      continue;
    }
    // Asking for a folder on the network or on a removable medium can hang.
    const bool isSafe =
        (driveType == drivetype::kFixed || driveType == drivetype::kRamDisk) && !IsFuse(mount.type);
    if (mount.root.endsWith("//deleted") || (isSafe && mount.root != "/" && devices.IsFile(mount))) {
      continue;
    }
    taken.push_back(mount);
    const QChar letter = LetterOf(identity);
    const QString name = letter + QStringLiteral(":");
    const bool isListed = std::any_of(volumes.begin(), volumes.end(),
                                      [&name](const Volume& volume) { return volume.name == name; });
    if (!letter.isNull() && !isListed) {
      Volume volume{name, DecodeBytes(mount.point) + QStringLiteral("/"), driveType,
                    devices.DeviceNumber(mount)};
      volume.byProgram = IsFuse(mount.type);
      volumes.push_back(std::move(volume));
    }
  }
  std::sort(volumes.begin(), volumes.end(),
            [](const Volume& left, const Volume& right) { return left.name < right.name; });
  current_ = std::move(volumes);
  return true;
}

Volumes::SpaceQuery SystemVolumes::QueryOfSpace(const Volume& volume) const {
  if (volume.driveType == drivetype::kRemote || volume.byProgram) {
    return Volumes::QueryOfSpace(volume);
  }
  return [path = EncodeText(volume.rootPath)]() -> std::optional<VolumeSpace> {
    struct statvfs space {};
    if (::statvfs(path.constData(), &space) != 0) {
      return std::nullopt;
    }
    const auto block = static_cast<qint64>(space.f_frsize);
    return VolumeSpace{static_cast<qint64>(space.f_bavail) * block,
                       static_cast<qint64>(space.f_blocks) * block};
  };
}

}  // namespace trevane
