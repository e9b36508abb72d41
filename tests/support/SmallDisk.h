#pragma once

#include <QString>
#include <QTemporaryDir>

namespace trevane::test {

/// A volume of 64 kilobytes, mounted for as long as this lives. Linux only, and only where the process may
/// mount: a test that cannot have it is skipped.
class SmallDisk {
 public:
  SmallDisk();
  ~SmallDisk();
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  [[nodiscard]] bool IsMounted() const { return mounted_; }
  [[nodiscard]] QString Path() const { return folder_.path(); }

  /// Writes a file "filling" until nothing more is taken.
  void Fill() const;

 private:
  QTemporaryDir folder_;
  bool mounted_ = false;
};

}  // namespace trevane::test
