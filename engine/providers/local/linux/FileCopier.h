#pragma once

#include "engine/files/CopyProgress.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

#include <memory>

namespace trevane::local {

/// An item by its name in the current folder of a chain.
struct ChainItem {
  const FolderChain& folder;
  const QByteArray& name;

  [[nodiscard]] int Fd() const { return folder.Fd(); }
  [[nodiscard]] const char* Name() const { return name.constData(); }
  [[nodiscard]] QString Text() const { return folder.TextOf(name); }
};

/// Copies single files and links to new names, with times, permissions, extended attributes and, where
/// allowed, the owner. Unfinished copies are removed.
class FileCopier {
 public:
  explicit FileCopier(const Credentials& user) : user_(user) {}

  /// A regular file. Everything else is refused without reading from it. Fails with providererror::kChanged
  /// when the file becomes shorter meanwhile. The copy is made under `madeName` in the folder of `to`, which
  /// failures name. With `flush` the copy is on the disk when this returns.
  void CopyFile(const ChainItem& from, const ChainItem& to, const char* madeName, bool flush,
                const CopyProgress& progress);

  void CopyLink(const ChainItem& from, const ChainItem& to, const char* madeName);

  /// Between open items: extended attributes, owner, permissions, times. 0, or an errno.
  [[nodiscard]] int CopyAttributes(int from, int to, const struct statx& status);

 private:
  /// 0, or an errno; `readFailed` tells on which side. `copied` is the number of bytes copied, holes
  /// included.
  [[nodiscard]] int CopyContent(int from, int to, const struct statx& status, qint64& copied,
                                bool& readFailed);
  [[nodiscard]] int CopySparse(int from, int to, qint64 size, qint64& copied, bool& readFailed);
  /// Up to `length` bytes, fewer when the file ends before; `copied` grows by them.
  [[nodiscard]] int CopyRange(int from, int to, qint64 offset, qint64 length, qint64& copied,
                              bool& readFailed);
  [[nodiscard]] int CopyByHand(int from, int to, qint64 offset, qint64 length, qint64& copied,
                               bool& readFailed);

  /// Reports that so many bytes are done. False when the copy is to end.
  [[nodiscard]] bool IsGoingOn(qint64 copied);

  const Credentials& user_;
  /// Of the file that is being copied; null when nobody asks.
  const CopyProgress* progress_ = nullptr;
  qint64 size_ = 0;
  bool isCancelled_ = false;
  std::unique_ptr<char[]> buffer_;
  /// What a file system does not support is not tried again for each file.
  bool canClone_ = true;
  bool canCopyRange_ = true;
  bool hasExtendedAttributes_ = true;
};

/// All extended attributes that this user may read and set, but `except`. EOPNOTSUPP when the file system of
/// `from` has none, otherwise 0: an attribute that the other file system refuses is left out.
[[nodiscard]] int CopyExtendedAttributes(int from, int to, const char* except = nullptr);

/// Whether an errno means that the file system has no such attributes, which is no failure.
[[nodiscard]] bool IsRefusedAttribute(int code);

}  // namespace trevane::local
