#include "engine/providers/local/linux/TreeCopier.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TreeCopy.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileCopier.h"
#include "engine/providers/local/linux/FolderReader.h"
#include "engine/providers/local/linux/Leftovers.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/TreeRemover.h"
#include "platform/linux/SystemCalls.h"

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

bool IsFileOrLink(const struct statx& status) {
  return S_ISREG(status.stx_mode) || S_ISLNK(status.stx_mode);
}

/// The folders of two chains, for CopyTree.
class ChainPair {
 public:
  using Name = QByteArray;
  using Status = struct statx;

  struct Item {
    QByteArray name;
    /// DT_DIR and so on.
    unsigned char type = DT_UNKNOWN;
    std::optional<FileIdentity> identity;
  };

  ChainPair(FolderChain& from, FolderChain& to, const Credentials& user, LeftoverLog& leftovers)
      : from_(from), to_(to), user_(user), leftovers_(leftovers), files_(user) {}

  [[nodiscard]] static QString TextFromName(const QByteArray& name) { return FromNativeName(name); }
  [[nodiscard]] static QByteArray NameFromText(const QString& text) { return text.toLatin1(); }
  [[nodiscard]] static QByteArray NameOf(const Item& item) { return item.name; }
  [[nodiscard]] static bool IsFolder(const Item& item) { return item.type == DT_DIR; }
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const Item& item) { return item.identity; }
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const struct statx& status) {
    return local::IdentityOf(status);
  }
  [[nodiscard]] QString SourceTextOf(const Item& item) const { return from_.TextOf(item.name); }
  [[nodiscard]] QString Text() const { return to_.Text(); }
  [[nodiscard]] QString TextOf(const QByteArray& name) const { return to_.TextOf(name); }

  [[nodiscard]] std::vector<Item> List() const {
    std::vector<Item> items;
    const int code =
        FolderReader::Each(from_.Fd(), [&items](const char* name, std::size_t length, unsigned char type) {
          items.push_back({QByteArray(name, static_cast<qsizetype>(length)), type, std::nullopt});
        });
    if (code != 0) {
      FailErrno(code, from_.Text());
    }
    return items;
  }

  void Examine(Item& item, bool withIdentity) const {
    if (item.type != DT_UNKNOWN && (!withIdentity || item.type == DT_DIR)) {
      return;
    }
    struct statx status {};
    if (const int code = StatusAt(from_.Fd(), item.name.constData(), status); code != 0) {
      FailErrno(code, from_.TextOf(item.name));
    }
    item.type = static_cast<unsigned char>(IFTODT(status.stx_mode));
    item.identity = local::IdentityOf(status);
  }

  [[nodiscard]] std::optional<FileIdentity> EnterSource(const Item& item) {
    if (const int code = from_.Enter(item.name); code != 0) {
      if (code == ENOTDIR || code == ELOOP) {
        Fail(providererror::kChanged, from_.TextOf(item.name));
      }
      FailErrno(code, from_.TextOf(item.name));
    }
    return local::IdentityOf(from_.Status());
  }

  void LeaveSource() { from_.Leave(); }

  [[nodiscard]] std::optional<struct statx> Find(const QByteArray& name) const {
    return StatusIfThere(to_, name);
  }

  [[nodiscard]] std::optional<FileIdentity> IdentityAt(const QByteArray& name) const {
    const std::optional<struct statx> status = StatusIfThere(to_, name);
    return status.has_value() ? std::optional(local::IdentityOf(*status)) : std::nullopt;
  }

  void RequireReplaceable(const Item& source, const struct statx& existing, const QByteArray& name) const {
    local::RequireReplaceable(IsFolder(source), existing, to_, name, user_);
  }

  void MakeFolder(const QByteArray& name, const QByteArray& madeName) const {
    if (::mkdirat(to_.Fd(), madeName.constData(), 0700) != 0) {
      FailErrno(errno, to_.TextOf(name));
    }
  }

  [[nodiscard]] std::optional<FileIdentity> EnterDestination(const QByteArray& name,
                                                             const QByteArray& madeName, bool /*isNew*/) {
    if (const int code = to_.Enter(madeName, name); code != 0) {
      FailErrno(code, to_.TextOf(name));
    }
    return local::IdentityOf(to_.Status());
  }

  void LeaveDestination() { to_.Leave(); }
  [[nodiscard]] std::vector<FileIdentity> FoldersAbove() const { return FoldersUpwards(to_.Fd()); }

  [[nodiscard]] static bool HasTemporaryNames() { return true; }
  void SearchLeftovers() const {
    local::SearchLeftovers(
        to_.Fd(), [this] { return to_.Text(); }, user_, leftovers_);
  }

  void Rename(const QByteArray& from, const QByteArray& to, bool replace) const {
    if (const int code = RenameItem(to_.Fd(), from, to_.Fd(), to, replace); code != 0) {
      FailErrno(code, to_.TextOf(to));
    }
  }

  void RemoveUnfinished(const QByteArray& name) {
    // A file, or a folder that is still empty, is deleted without being opened.
    if (::unlinkat(to_.Fd(), name.constData(), 0) == 0 ||
        ::unlinkat(to_.Fd(), name.constData(), AT_REMOVEDIR) == 0) {
      return;
    }
    try {
      TreeRemover::Remove(to_, name);
    } catch (const RunTimeError&) {
      // It is left under its temporary name.
    }
  }

  void RequireCopyable(const Item& item, const QByteArray& /*name*/) const {
    if (item.type != DT_REG && item.type != DT_LNK) {
      Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"),
           from_.TextOf(item.name));
    }
  }

  void CopyContent(const Item& item, const QByteArray& name, const QByteArray& madeName, bool replaces,
                   const CopyProgress& progress) {
    const ChainItem source{from_, item.name};
    const ChainItem target{to_, name};
    if (item.type == DT_LNK) {
      files_.CopyLink(source, target, madeName.constData());
    } else {
      // A replacement is flushed before the rename.
      files_.CopyFile(source, target, madeName.constData(), replaces, progress);
    }
  }

  void CopyAttributes() {
    if (const int code = files_.CopyAttributes(from_.Fd(), to_.Fd(), from_.Status()); code != 0) {
      FailErrno(code, to_.Text());
    }
  }

 private:
  FolderChain& from_;
  FolderChain& to_;
  const Credentials& user_;
  LeftoverLog& leftovers_;
  FileCopier files_;
};

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

void RequireReplaceable(bool sourceIsFolder, const struct statx& existing, const FolderChain& folder,
                        const QByteArray& name, const Credentials& user) {
  if (sourceIsFolder != S_ISDIR(existing.stx_mode) || (!sourceIsFolder && !IsFileOrLink(existing))) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), folder.TextOf(name));
  }
  if (S_ISREG(existing.stx_mode) && ((existing.stx_attributes & STATX_ATTR_IMMUTABLE) != 0 ||
                                     !CanWriteItem(existing, folder.Fd(), name.constData(), user))) {
    Fail(error::kAccessDenied, folder.TextOf(name));
  }
}

int RenameItem(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to, bool replace,
               const struct statx* source) {
  struct statx before {};
  bool known = source != nullptr;
  if (known) {
    before = *source;
  } else {
    known = StatusAt(fromFolder, from.constData(), before) == 0;
  }
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

void TreeCopier::Copy(const QByteArray& name, const QByteArray& newName, bool replace,
                      const ItemObserver& observer) {
  ChainPair folders(from_, to_, user_, leftovers_);
  ChainPair::Item top{name, DT_UNKNOWN, std::nullopt};
  folders.Examine(top, false);
  CopyTree(folders, top, newName, replace, observer);
}

}  // namespace trevane::local
