#include "engine/files/ProviderError.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FolderChain.h"
#include "engine/providers/local/linux/FolderReader.h"
#include "engine/providers/local/linux/Leftovers.h"
#include "engine/providers/local/linux/LocalNative.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/NativePath.h"
#include "engine/providers/local/linux/TreeCopier.h"
#include "engine/providers/local/linux/TreeRemover.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace trevane {

using local::FailErrno;
using local::FolderChain;
using local::NativePath;
using local::ResolvePath;

namespace {

// Source and destination of a copy or a rename, with their folders open. Checks everything that can be
// checked before anything is written.
struct Transfer {
  Transfer(const NativePath& from, const NativePath& to)
      : fromName(from.names.back()),
        toName(to.names.back()),
        fromText(from.text),
        toText(to.text),
        fromFolder(local::OpenForNames(from.Parent()), from.ParentText()),
        toFolder(local::OpenForNames(to.Parent()), to.ParentText()) {
    if (const int code = local::StatusAt(fromFolder.Fd(), fromName.constData(), source); code != 0) {
      FailErrno(code, fromText);
    }
    existing = local::StatusIfThere(toFolder, toName);
  }

  [[nodiscard]] bool IsSame() const { return existing.has_value() && local::IsSameItem(source, *existing); }

  void RefuseSame() const {
    if (IsSame()) {
      Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
           toText);
    }
  }

  void RefuseInside() const {
    if (!S_ISDIR(source.stx_mode)) {
      return;
    }
    const FileIdentity own{local::DeviceOf(source), source.stx_ino};
    const std::vector<FileIdentity> above = local::FoldersUpwards(toFolder.Fd());
    if (std::find(above.begin(), above.end(), own) != above.end()) {
      Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), toText);
    }
  }

  void RefuseExisting(bool overwrite, const local::Credentials& user) const {
    if (!existing.has_value()) {
      return;
    }
    if (!overwrite) {
      Fail(error::kExists, toText);
    }
    local::RequireReplaceable(S_ISDIR(source.stx_mode), *existing, toFolder, toName, user);
  }

  QByteArray fromName;
  QByteArray toName;
  QString fromText;
  QString toText;
  FolderChain fromFolder;
  FolderChain toFolder;
  struct statx source {};
  std::optional<struct statx> existing;
};

NativePath ResolveItem(const Volumes& volumes, const QString& path, qint32 refusal) {
  NativePath native = ResolvePath(volumes, path);
  if (native.IsTopOrDrive()) {
    Fail(refusal, native.text.isEmpty() ? path : native.text);
  }
  return native;
}

void RefuseSpecial(const Transfer& transfer) {
  const mode_t kind = local::KindOf(transfer.source);
  if (kind != S_IFREG && kind != S_IFLNK && kind != S_IFDIR) {
    Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"),
         transfer.fromText);
  }
}

// Whether source and destination are one item under names that differ in case. On a case-sensitive file
// system they are two hard links, and a rename would do nothing.
bool IsCaseChange(const Transfer& transfer) {
  const QString from = local::FromNativeName(transfer.fromName);
  const QString to = local::FromNativeName(transfer.toName);
  if (from == to || from.compare(to, Qt::CaseInsensitive) != 0) {
    return false;
  }
  struct statx fromParent {};
  struct statx toParent {};
  if (local::StatusOf(transfer.fromFolder.Fd(), fromParent) != 0 ||
      local::StatusOf(transfer.toFolder.Fd(), toParent) != 0 || !local::IsSameItem(fromParent, toParent)) {
    return false;
  }
  const local::FileDescriptor folder = local::OpenAt(transfer.toFolder.Fd(), ".", O_RDONLY | O_DIRECTORY);
  bool bothThere = false;
  const int code =
      folder.IsOpen() ? local::FolderReader::Each(
                            folder.Get(),
                            [&](const char* name, std::size_t length, unsigned char) {
                              bothThere = bothThere || QByteArrayView(name, static_cast<qsizetype>(length)) ==
                                                           transfer.toName;
                            })
                      : errno;
  return code == 0 && !bothThere;
}

}  // namespace

void LocalFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                           const ItemObserver& observer) {
  const NativePath source = ResolveItem(volumes_, from, error::kAccessDenied);
  const NativePath target = ResolveItem(volumes_, to, error::kExists);
  Transfer transfer(source, target);
  transfer.RefuseSame();
  transfer.RefuseInside();
  RefuseSpecial(transfer);
  transfer.RefuseExisting(overwrite, native_->user);
  local::SearchLeftovers(
      transfer.toFolder.Fd(), [&] { return transfer.toFolder.Text(); }, native_->user, native_->leftovers);
  local::TreeCopier copier(transfer.fromFolder, transfer.toFolder, native_->user, native_->leftovers);
  copier.Copy(transfer.fromName, transfer.toName, overwrite, observer);
}

void LocalFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  const NativePath source = ResolveItem(volumes_, from, error::kAccessDenied);
  const NativePath target = ResolveItem(volumes_, to, error::kExists);
  Transfer transfer(source, target);
  bool replace = false;
  if (transfer.IsSame() && IsCaseChange(transfer)) {
    replace = true;
  } else {
    transfer.RefuseSame();
    transfer.RefuseInside();
    transfer.RefuseExisting(overwrite, native_->user);
    replace = transfer.existing.has_value();
  }
  const int code = local::RenameItem(transfer.fromFolder.Fd(), transfer.fromName, transfer.toFolder.Fd(),
                                     transfer.toName, replace);
  if (code == EEXIST && replace) {
    Fail(error::kDirectoryNotEmpty, transfer.toText);
  }
  if (code != 0) {
    FailErrno(code,
              code == EEXIST || code == ENOTEMPTY || code == ENOSPC ? transfer.toText : transfer.fromText);
  }
}

void LocalFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  const NativePath native = ResolveItem(volumes_, path, error::kAccessDenied);
  FolderChain parent(local::OpenForNames(native.Parent()), native.ParentText());
  local::TreeRemover::Remove(parent, native.names.back(), observer);
}

void LocalFileSystem::RemoveAlone(const QString& path) {
  const NativePath native = ResolveItem(volumes_, path, error::kAccessDenied);
  const local::FileDescriptor parent = local::OpenForNames(native.Parent());
  const QByteArray& name = native.names.back();
  struct statx status {};
  if (const int code = local::StatusAt(parent.Get(), name.constData(), status); code != 0) {
    FailErrno(code, native.text);
  }
  if (::unlinkat(parent.Get(), name.constData(), S_ISDIR(status.stx_mode) ? AT_REMOVEDIR : 0) != 0) {
    FailErrno(errno == EEXIST ? ENOTEMPTY : errno, native.text);
  }
}

std::vector<Leftover> LocalFileSystem::TakeLeftovers() {
  return native_->leftovers.Take();
}

std::vector<FileIdentity> LocalFileSystem::FolderIdentities(const QString& folder) {
  const NativePath native = ResolvePath(volumes_, folder);
  if (native.IsTop()) {
    return {};
  }
  return local::FoldersUpwards(local::OpenForNames(native).Get());
}

}  // namespace trevane
