#include "engine/providers/local/linux/TreeCopier.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FolderReader.h"
#include "engine/providers/local/linux/Leftovers.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/TreeRemover.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <unistd.h>

namespace trevane::local {
namespace {

FileIdentity IdentityOf(const struct statx& status) {
  return {DeviceOf(status), status.stx_ino};
}

[[noreturn]] void FailSpecial(const QString& text) {
  Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"), text);
}

std::pair<quint64, quint64> KeyOf(const struct statx& status) {
  return {DeviceOf(status), status.stx_ino};
}

bool IsFileOrLink(const struct statx& status) {
  return S_ISREG(status.stx_mode) || S_ISLNK(status.stx_mode);
}

}  // namespace

std::optional<struct statx> StatusIfThere(const FolderChain& folder, const QByteArray& name) {
  struct statx status {};
  const int code = StatusAt(folder.Fd(), name.constData(), status);
  if (code == 0) {
    return status;
  }
  if (code == ENOENT) {
    return std::nullopt;
  }
  FailErrno(code, folder.TextOf(name));
}

void RequireReplaceable(const struct statx& source, const struct statx& existing, const FolderChain& folder,
                        const QByteArray& name, const Credentials& user) {
  const bool sourceIsFolder = S_ISDIR(source.stx_mode);
  if (sourceIsFolder != S_ISDIR(existing.stx_mode) || (!sourceIsFolder && !IsFileOrLink(existing))) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), folder.TextOf(name));
  }
  if (S_ISREG(existing.stx_mode) && ((existing.stx_attributes & STATX_ATTR_IMMUTABLE) != 0 ||
                                     !CanWriteItem(existing, folder.Fd(), name.constData(), user))) {
    Fail(error::kAccessDenied, folder.TextOf(name));
  }
}

int RenameItem(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to, bool replace) {
  struct statx before {};
  const bool known = StatusAt(fromFolder, from.constData(), before) == 0;
  int code = 0;
  if (replace) {
    code = ::renameat(fromFolder, from.constData(), toFolder, to.constData()) == 0 ? 0 : errno;
  } else {
    code = ::renameat2(fromFolder, from.constData(), toFolder, to.constData(), RENAME_NOREPLACE) == 0 ? 0
                                                                                                      : errno;
    if (code == EINVAL || code == ENOSYS) {
      // The file system does not support the flag. A hard link never replaces anything either; where there
      // are no hard links, the destination is checked first.
      const bool isFolder = known && S_ISDIR(before.stx_mode);
      code = isFolder ? EPERM : ::linkat(fromFolder, from.constData(), toFolder, to.constData(), 0);
      if (!isFolder && code != 0) {
        code = errno;
      }
      if (code == 0) {
        return ::unlinkat(fromFolder, from.constData(), 0) == 0 ? 0 : errno;
      }
      if (code != EEXIST && code != EXDEV) {
        struct statx there {};
        const int look = StatusAt(toFolder, to.constData(), there);
        if (look != ENOENT) {
          return look == 0 ? EEXIST : look;
        }
        code = ::renameat(fromFolder, from.constData(), toFolder, to.constData()) == 0 ? 0 : errno;
      }
    }
  }
  if (code != 0 && known) {
    struct statx there {};
    struct statx here {};
    if (StatusAt(toFolder, to.constData(), there) == 0 && IsSameItem(before, there) &&
        StatusAt(fromFolder, from.constData(), here) == ENOENT) {
      return 0;
    }
  }
  return code;
}

std::vector<FileIdentity> FoldersUpwards(int folder) {
  std::vector<FileIdentity> above;
  struct statx status {};
  FileDescriptor current;
  int fd = folder;
  while (StatusOf(fd, status) == 0) {
    const FileIdentity identity = IdentityOf(status);
    if (!above.empty() && above.back() == identity) {
      break;  // the root is its own parent
    }
    above.push_back(identity);
    FileDescriptor next = OpenAt(fd, "..", O_PATH | O_DIRECTORY);
    if (!next.IsOpen()) {
      break;
    }
    current = std::move(next);
    fd = current.Get();
  }
  return above;
}

TreeCopier::TreeCopier(FolderChain& from, FolderChain& to, const Credentials& user)
    : from_(from), to_(to), user_(user), files_(user) {}

void TreeCopier::Copy(const QByteArray& name, const QByteArray& newName, bool replace) {
  struct statx status {};
  if (const int code = StatusAt(from_.Fd(), name.constData(), status); code != 0) {
    FailErrno(code, from_.TextOf(name));
  }
  if (S_ISDIR(status.stx_mode)) {
    CopyFolder(name, newName, replace);
  } else {
    PutItem(name, newName, status, replace);
  }
}

void TreeCopier::PutItem(const QByteArray& name, const QByteArray& newName, const struct statx& status,
                         bool replace) {
  const ChainItem item{from_, name};
  if (!IsFileOrLink(status)) {
    FailSpecial(item.Text());
  }
  const ChainItem target{to_, newName};
  // A replacement is flushed before the rename.
  const bool flush = replace && S_ISREG(status.stx_mode) && StatusIfThere(to_, newName).has_value();
  const QString made = MakeUnderTemporaryName([&](const QString& free) {
    try {
      if (S_ISLNK(status.stx_mode)) {
        files_.CopyLink(item, target, free.toLatin1().constData());
      } else {
        files_.CopyFile(item, target, free.toLatin1().constData(), flush);
      }
      return true;
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kExists) {
        throw;
      }
      return false;
    }
  });
  const QByteArray temporary = made.toLatin1();
  if (const int code = RenameItem(to_.Fd(), temporary, to_.Fd(), newName, replace); code != 0) {
    ::unlinkat(to_.Fd(), temporary.constData(), 0);
    FailErrno(code, target.Text());
  }
}

void TreeCopier::CopyFolder(const QByteArray& name, const QByteArray& newName, bool replace) {
  above_ = FoldersUpwards(to_.Fd());
  const std::size_t top = to_.Depth();
  try {
    EnterLevel(name, newName, replace);
    CopyLevelItems();
    while (!levels_.empty()) {
      if (levels_.back().folders.empty()) {
        LeaveLevel();
        continue;
      }
      const QByteArray next = std::move(levels_.back().folders.back());
      levels_.back().folders.pop_back();
      ReportProgress(next);
      EnterLevel(next, next, replace);
      CopyLevelItems();
    }
  } catch (const RunTimeError&) {
    DropTemporary();
    while (to_.Depth() > top) {
      to_.Leave();
    }
    throw;
  }
}

void TreeCopier::RefuseInside() const {
  if (std::find(above_.begin(), above_.end(), IdentityOf(from_.Status())) != above_.end()) {
    Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), to_.Text());
  }
}

void TreeCopier::EnterLevel(const QByteArray& name, const QByteArray& newName, bool replace) {
  if (const int code = from_.Enter(name); code != 0) {
    if (code == ENOTDIR || code == ELOOP) {
      Fail(providererror::kChanged, from_.TextOf(name));
    }
    FailErrno(code, from_.TextOf(name));
  }
  RefuseInside();
  Level level;
  level.finalName = newName;
  QByteArray made = newName;
  if (!levels_.empty() && levels_.back().fresh) {
    level.fresh = true;
    if (::mkdirat(to_.Fd(), newName.constData(), 0700) != 0) {
      FailErrno(errno, to_.TextOf(newName));
    }
  } else {
    const std::optional<struct statx> existing = StatusIfThere(to_, newName);
    if (existing.has_value()) {
      if (!replace) {
        Fail(error::kExists, to_.TextOf(newName));
      }
      RefusePut(*existing, newName);
      RequireReplaceable(from_.Status(), *existing, to_, newName, user_);
    } else {
      made = MakeTemporaryFolder();
      level.fresh = true;
      level.isTemporary = true;
    }
  }
  const bool isTemporary = level.isTemporary;
  levels_.push_back(std::move(level));
  if (const int code = to_.Enter(made, newName); code != 0) {
    if (isTemporary) {
      ::unlinkat(to_.Fd(), made.constData(), AT_REMOVEDIR);
    }
    levels_.pop_back();
    FailErrno(code, to_.TextOf(newName));
  }
  if (IsSameItem(from_.Status(), to_.Status())) {
    Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
         to_.Text());
  }
  above_.push_back(IdentityOf(to_.Status()));
  if (leftovers_ != nullptr && !levels_.back().fresh) {
    SearchLeftovers(
        to_.Fd(), [this] { return to_.Text(); }, user_, *leftovers_);
  }
  if (levels_.size() > 1 && !levels_[levels_.size() - 2].fresh) {
    levels_[levels_.size() - 2].put.insert(KeyOf(to_.Status()));
  }
}

void TreeCopier::RefusePut(const struct statx& existing, const QByteArray& name) const {
  if (!levels_.empty() && levels_.back().put.count(KeyOf(existing)) != 0) {
    Fail(error::kExists, QStringLiteral("Two names of the source are one name here"), to_.TextOf(name));
  }
}

void TreeCopier::ReportProgress(const QByteArray& name) const {
  if (observer_ && !observer_(FromNativeName(name))) {
    Fail(error::kCancelled, from_.TextOf(name));
  }
}

QByteArray TreeCopier::MakeTemporaryFolder() {
  const QString made = MakeUnderTemporaryName([this](const QString& free) {
    if (::mkdirat(to_.Fd(), free.toLatin1().constData(), 0700) == 0) {
      return true;
    }
    if (errno != EEXIST) {
      FailErrno(errno, to_.Text());
    }
    return false;
  });
  return made.toLatin1();
}

void TreeCopier::CopyLevelItems() {
  std::vector<FolderItem> items;
  if (const int code = FolderReader::All(from_.Fd(), items); code != 0) {
    FailErrno(code, from_.Text());
  }
  Level& level = levels_.back();
  for (FolderItem& item : items) {
    struct statx status {};
    if (item.type == DT_UNKNOWN || !level.fresh) {
      const int code = StatusAt(from_.Fd(), item.name.constData(), status);
      if (code != 0) {
        FailErrno(code, from_.TextOf(item.name));
      }
      item.type = static_cast<unsigned char>(IFTODT(status.stx_mode));
    }
    const ChainItem source{from_, item.name};
    if (item.type != DT_DIR) {
      ReportProgress(item.name);
    }
    switch (item.type) {
      case DT_DIR:
        level.folders.push_back(std::move(item.name));
        continue;
      case DT_REG:
      case DT_LNK:
        break;
      default:
        FailSpecial(source.Text());
    }
    if (!level.fresh) {
      MergeItem(item.name, status);
      continue;
    }
    if (item.type == DT_REG) {
      files_.CopyFile(source, {to_, item.name}, item.name.constData(), false);
    } else {
      files_.CopyLink(source, {to_, item.name}, item.name.constData());
    }
  }
}

void TreeCopier::MergeItem(const QByteArray& name, const struct statx& status) {
  const std::optional<struct statx> existing = StatusIfThere(to_, name);
  if (existing.has_value()) {
    RefusePut(*existing, name);
    if (IsSameItem(status, *existing)) {
      return;  // two names of one file: it has this content already
    }
    RequireReplaceable(status, *existing, to_, name, user_);
  }
  PutItem(name, name, status, existing.has_value());
  struct statx made {};
  if (const int code = StatusAt(to_.Fd(), name.constData(), made); code == 0) {
    levels_.back().put.insert(KeyOf(made));
  } else if (code != ENOENT) {
    FailErrno(code, to_.TextOf(name));
  }
}

void TreeCopier::LeaveLevel() {
  // Last, since every new item changes the times of its folder.
  if (levels_.back().fresh) {
    if (const int code = files_.CopyAttributes(from_.Fd(), to_.Fd(), from_.Status()); code != 0) {
      FailErrno(code, to_.Text());
    }
  }
  const QByteArray madeName = to_.Name();
  from_.Leave();
  to_.Leave();
  above_.pop_back();
  const Level level = std::move(levels_.back());
  levels_.pop_back();
  if (!level.isTemporary) {
    return;
  }
  const std::size_t depth = to_.Depth();
  try {
    if (const int code = RenameItem(to_.Fd(), madeName, to_.Fd(), level.finalName, false); code != 0) {
      FailErrno(code, to_.TextOf(level.finalName));
    }
  } catch (const RunTimeError&) {
    // Removed here, since it is no level any more.
    try {
      while (to_.Depth() > depth) {
        to_.Leave();
      }
      TreeRemover::Remove(to_, madeName);
    } catch (const RunTimeError&) {
      // The copy is left under its temporary name; the first failure is the one to report.
    }
    throw;
  }
}

void TreeCopier::DropTemporary() {
  const auto temporary =
      std::find_if(levels_.begin(), levels_.end(), [](const Level& level) { return level.isTemporary; });
  if (temporary == levels_.end()) {
    return;
  }
  const auto below = static_cast<std::size_t>(levels_.end() - temporary);
  try {
    QByteArray made;
    for (std::size_t i = 0; i < below; ++i) {
      made = to_.Name();
      to_.Leave();
    }
    TreeRemover::Remove(to_, made);
  } catch (const RunTimeError&) {
    // As above.
  }
}

}  // namespace trevane::local
