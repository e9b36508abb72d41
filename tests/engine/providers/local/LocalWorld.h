#pragma once

#include "engine/providers/local/LocalFileSystem.h"
#include "tests/support/FakeVolumes.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace trevane::test {

/// A temporary folder as drive C: of a local file system. Names below C: are separated by "/".
class LocalWorld {
 public:
  /// If `parent` is empty, the system's folder for temporary files is used.
  explicit LocalWorld(const QString& parent = {});
  ~LocalWorld();
  LocalWorld(const LocalWorld&) = delete;
  LocalWorld& operator=(const LocalWorld&) = delete;

  LocalFileSystem& Files() { return files_; }
  FakeVolumes& Drives() { return volumes_; }
  [[nodiscard]] QString Root() const { return folder_.path() + u'/'; }
  /// The system's path of an item below C:, in bytes.
  [[nodiscard]] QByteArray Native(const char* below) const;

  /// A second drive, D:, on another volume; false when this machine has none.
  [[nodiscard]] bool AddOtherVolume();
  /// False where the system or this user cannot create such links.
  [[nodiscard]] bool MakeLink(const char* below, const char* target);
  [[nodiscard]] bool MakeHardLink(const char* below, const char* target);

  /// A folder with files and folders in it; paths are those of the file system.
  void MakeTree(const QString& top);
  [[nodiscard]] bool IsWholeTree(const QString& top);

 private:
  QTemporaryDir folder_;
  FakeVolumes volumes_;
  LocalFileSystem files_;
  std::unique_ptr<LocalWorld> other_;
};

}  // namespace trevane::test
