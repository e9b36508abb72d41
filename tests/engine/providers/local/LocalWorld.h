#pragma once

#include "engine/providers/local/LocalFileSystem.h"
#include "tests/support/FakeVolumes.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace trevane::test {

/// A temporary folder that is drive C: of a local file system, for what only the operating system can do.
/// Names below C: have "/" between them.
class LocalWorld {
 public:
  /// `parent` empty is the system's folder for temporary files.
  explicit LocalWorld(const QString& parent = {});
  ~LocalWorld();
  LocalWorld(const LocalWorld&) = delete;
  LocalWorld& operator=(const LocalWorld&) = delete;

  LocalFileSystem& Files() { return files_; }
  FakeVolumes& Drives() { return volumes_; }
  [[nodiscard]] QString Root() const { return folder_.path() + u'/'; }
  /// The system's path for one below C:, in bytes.
  [[nodiscard]] QByteArray Native(const char* below) const;

  /// A second drive, D:, on another volume; false when this machine has none at hand.
  [[nodiscard]] bool AddOtherVolume();
  /// False where the system, or this user, has no links of that kind.
  [[nodiscard]] bool MakeLink(const char* below, const char* target);
  [[nodiscard]] bool MakeHardLink(const char* below, const char* target);

  /// A folder with files and folders in it, in paths of the file system.
  void MakeTree(const QString& top);
  [[nodiscard]] bool IsWholeTree(const QString& top);

 private:
  QTemporaryDir folder_;
  FakeVolumes volumes_;
  LocalFileSystem files_;
  std::unique_ptr<LocalWorld> other_;
};

}  // namespace trevane::test
