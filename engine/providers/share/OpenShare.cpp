#include "engine/providers/share/OpenShare.h"

#include "engine/files/ProviderError.h"
#include "engine/files/RootedFileSystem.h"
#include "platform/AppInfo.h"
#include "platform/TypedPath.h"
#include "platform/Volumes.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace trevane {
namespace {

const QString kDrive = QStringLiteral("C:");

/// One drive: the folder.
class OneVolume final : public Volumes {
 public:
  explicit OneVolume(const QString& folder)
      : volumes_{{.name = kDrive, .rootPath = folder, .driveType = drivetype::kRemote}} {}

  /// What is there now must be there later.
  void Pin(quint64 device) { volumes_.front().device = device; }

  bool Refresh() override { return true; }
  [[nodiscard]] const std::vector<Volume>& Current() const override { return volumes_; }

 private:
  std::vector<Volume> volumes_;
};

/// The local file system together with what must outlive it.
struct Mounted {
  Mounted(const QString& folder, LocalFileSystem::Opener opener)
      : volumes(folder), files(volumes, std::move(opener)) {}

  OneVolume volumes;
  LocalFileSystem files;
};

void RequireAbsolute(const QString& path, const QString& typed) {
  const bool hasSlashes = appinfo::PathSeparator() == u"/";
  if (typedpath::IsShare(path)) {
    if (hasSlashes) {
      Fail(error::kNotSupported,
           QStringLiteral("A share must be mounted, and the machine be the folder where it is mounted"),
           typed);
    }
    const QStringList names = path.split(u'\\', Qt::SkipEmptyParts);
    if (names.size() < 2) {
      Fail(error::kInvalidName, QStringLiteral("The machine names a server, but no share of it"), typed);
    }
    return;
  }
  if (!QDir::isAbsolutePath(path) || (!hasSlashes && path.startsWith(u'\\'))) {
    Fail(error::kInvalidName, QStringLiteral("The machine must be the whole path of a shared folder"), typed);
  }
}

}  // namespace

ConnectionHelp ShareHelp() {
  const bool hasSlashes = appinfo::PathSeparator() == u"/";
  return {.machineExample = hasSlashes ? QStringLiteral("/mnt/cell7") : QStringLiteral("\\\\server\\share"),
          .machine =
              hasSlashes
                  ? QStringLiteral("The whole path of the folder where the other machine's folder is mounted")
                  : QStringLiteral("\\\\server\\share, or the path of a folder below it"),
          .option = QStringLiteral("Not used")};
}

std::shared_ptr<FileSystem> OpenShare(const FileSystemRequest& request, LocalFileSystem::Opener opener) {
  const QString& typed = request.machine;
  if (typed.trimmed().isEmpty()) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("The machine name is missing: it is the path of a shared folder"));
  }
  const QString path = typedpath::Understand(typed);
  RequireAbsolute(path, typed);
  const QString separator = appinfo::PathSeparator();
  const auto mounted =
      std::make_shared<Mounted>(path.endsWith(separator) ? path : path + separator, std::move(opener));
  const QFileInfo folder(path);
  if (folder.exists() && !folder.isDir()) {
    Fail(providererror::kNotAFolder, typed);
  }
  try {
    // A name that is no text is seen by this call only.
    const std::optional<FileIdentity> identity = mounted->files.Identity(kDrive);
    if (identity) {
      mounted->volumes.Pin(identity->volume);
    }
  } catch (const RunTimeError& failure) {
    Fail(failure.Number() == error::kDeviceNotReady ? error::kNotFound : failure.Number(), typed);
  }
  return std::make_shared<RootedFileSystem>(std::shared_ptr<FileSystem>(mounted, &mounted->files), kDrive,
                                            path);
}

}  // namespace trevane
