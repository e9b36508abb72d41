#pragma once

#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

#include <vector>

namespace trevane::local {

/// An item by its name in the folder a chain stands in.
struct ChainItem {
  const FolderChain& folder;
  const QByteArray& name;

  [[nodiscard]] int Fd() const { return folder.Fd(); }
  [[nodiscard]] const char* Name() const { return name.constData(); }
  [[nodiscard]] QString Text() const { return folder.TextOf(name); }
};

/// Copies single files and links to names that do not exist yet, with times, permissions, extended attributes
/// and, where this user may, the owner. What is built is removed again when it cannot be finished.
class FileCopier {
 public:
  explicit FileCopier(const Credentials& user) : user_(user) {}

  /// A regular file. Refuses everything else without reading from it. Fails with providererror::kChanged when
  /// it gives fewer bytes than its size said at the beginning. The copy is made under `madeName` in
  /// the folder of `to`, which failures name. With `flush` it is on the disk when this returns.
  void CopyFile(const ChainItem& from, const ChainItem& to, const char* madeName, bool flush);

  void CopyLink(const ChainItem& from, const ChainItem& to, const char* madeName);

  /// Onto something open: extended attributes, owner, permissions, times. 0, or an errno.
  [[nodiscard]] int CopyAttributes(int from, int to, const struct statx& status);

 private:
  /// 0, or an errno; `readFailed` tells whose.
  /// `copied` is how far the content has come over, holes included.
  [[nodiscard]] int CopyContent(int from, int to, const struct statx& status, qint64& copied,
                                bool& readFailed);
  [[nodiscard]] int CopySparse(int from, int to, qint64 size, qint64& copied, bool& readFailed);
  /// Up to `length` bytes, fewer when the file ends before; `copied` grows by them.
  [[nodiscard]] int CopyRange(int from, int to, qint64 offset, qint64 length, qint64& copied,
                              bool& readFailed);
  [[nodiscard]] int CopyByHand(int from, int to, qint64 offset, qint64 length, qint64& copied,
                               bool& readFailed);

  const Credentials& user_;
  std::vector<char> buffer_;
  /// What a file system once said it cannot do is not asked of it again for each file.
  bool canClone_ = true;
  bool canCopyRange_ = true;
  bool hasExtendedAttributes_ = true;
};

/// All extended attributes that this user may read and set, but `except`. EOPNOTSUPP when the file system of
/// `from` has none, otherwise 0: an attribute that the other file system refuses is left out.
[[nodiscard]] int CopyExtendedAttributes(int from, int to, const char* except = nullptr);

/// Whether an errno tells that the file system has no such attributes, which is no reason to fail.
[[nodiscard]] bool IsRefusedAttribute(int code);

/// All of `size` bytes to an open file: 0, or an errno.
[[nodiscard]] int WriteAll(int fd, const char* data, qint64 size);

}  // namespace trevane::local
