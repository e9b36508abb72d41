#pragma once

#include "platform/linux/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <vector>

#include <sys/stat.h>

namespace trevane::local {

/// A path down a tree of open folders. It never follows a link, has any depth and keeps only the lowest
/// levels open: a higher one is opened again from below when it is needed, and its identity is checked.
class FolderChain {
 public:
  /// Begins in `root`, an open folder (for *at calls at least); `text` is its path in texts.
  FolderChain(FileDescriptor root, QString text);

  /// Opens the folder `name` of the current one and makes it current. 0, or an errno (ENOTDIR for a link).
  /// `shown` is its name in texts, `name` where it is empty.
  [[nodiscard]] int Enter(const QByteArray& name, const QByteArray& shown = {});

  /// Makes the folder above current. Fails with providererror::kChanged when it was moved meanwhile.
  void Leave();

  [[nodiscard]] int Fd() const { return levels_.back().fd.Get(); }
  /// 0 in the root.
  [[nodiscard]] std::size_t Depth() const { return levels_.size() - 1; }
  /// Of the current folder; not of the root.
  [[nodiscard]] const struct statx& Status() const { return levels_.back().status; }
  [[nodiscard]] const QByteArray& Name() const { return levels_.back().name; }
  [[nodiscard]] QString Text() const;
  [[nodiscard]] QString TextOf(const QByteArray& name) const;

 private:
  struct Level {
    FileDescriptor fd;
    QByteArray name;
    QByteArray shown;
    struct statx status {};
  };

  QString rootText_;
  std::vector<Level> levels_;
};

}  // namespace trevane::local
