#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/Leftovers.h"
#include "engine/providers/local/windows/LocalNative.h"
#include "engine/providers/local/windows/TreeCopier.h"
#include "engine/providers/local/windows/TreeRemover.h"
#include "engine/providers/local/windows/Win32Errors.h"

#include <algorithm>
#include <optional>

namespace trevane {

using local::FailAt;
using local::ItemStatus;
using local::Place;
using local::ResolveItem;
using local::ResolvePath;
using local::WindowsPath;
using windowstext::FromWide;
using windowstext::Wide;

namespace {

/// Source and destination of a copy or a rename. Checks everything that can be checked before anything is
/// written.
struct Transfer {
  Transfer(const WindowsPath& source, const WindowsPath& destination) : from(source), to(destination) {
    if (const DWORD code = local::StatusAt(from.whole, status); code != 0) {
      FailAt(code, from);
    }
    ItemStatus parent;
    if (const DWORD code = local::StatusAt(to.Parent(), parent); code != 0) {
      FailAt(code, to);
    }
    existing = local::StatusIfThere(to.whole, to.text);
    if (existing) {
      const auto own = local::IdentityAt(from.whole);
      isSame = own && own == local::IdentityAt(to.whole);
    }
  }

  /// Whether both are one item under names that differ only in case, and not two hard links of a
  /// case-sensitive folder.
  [[nodiscard]] bool IsCaseChange() const {
    const QString& oldName = from.names.last();
    const QString& newName = to.names.last();
    if (!isSame || oldName == newName || oldName.compare(newName, Qt::CaseInsensitive) != 0) {
      return false;
    }
    const auto folder = local::IdentityAt(from.Parent());
    return folder ? folder == local::IdentityAt(to.Parent())
                  : from.Parent().compare(to.Parent(), Qt::CaseInsensitive) == 0;
  }

  void RefuseSame() const {
    if (isSame) {
      Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
           to.text);
    }
  }

  void RefuseInside() const {
    if (!status.IsFolder()) {
      return;
    }
    const auto own = local::IdentityAt(from.whole);
    const auto above = local::FoldersUpwards(to.Parent());
    const bool byName = (to.whole + u'\\').startsWith(from.whole + u'\\', Qt::CaseInsensitive);
    if (byName || (own && std::find(above.begin(), above.end(), *own) != above.end())) {
      Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), to.text);
    }
  }

  void RefuseExisting(bool overwrite) const {
    if (!existing) {
      return;
    }
    if (!overwrite) {
      Fail(error::kExists, to.text);
    }
    local::RequireReplaceable(status.IsFolder(), *existing, to.text);
  }

  [[nodiscard]] Place Source() const { return {from.whole, from.text}; }
  [[nodiscard]] Place Destination() const { return {to.whole, to.text}; }

  WindowsPath from;
  WindowsPath to;
  ItemStatus status;
  std::optional<ItemStatus> existing;
  bool isSame = false;
};

bool IsEmptyFolder(const QString& path) {
  bool isEmpty = true;
  const DWORD code = local::EachItem(path, [&isEmpty](const WIN32_FIND_DATAW&) { isEmpty = false; });
  return code == 0 && isEmpty;
}

bool HasName(const QString& path, const QString& name) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW(Wide(path), &found);
  if (search == INVALID_HANDLE_VALUE) {
    return false;
  }
  FindClose(search);
  return FromWide(found.cFileName) == name;
}

/// Some file systems ignore a rename that changes only the case: there the item is renamed twice.
DWORD ChangeCase(const Transfer& transfer) {
  DWORD code = local::RenameItem(transfer.from.whole, transfer.to.whole, false);
  if (code == 0 && HasName(transfer.to.whole, transfer.to.names.last())) {
    return 0;
  }
  const QString between = local::Below(transfer.to.Parent(), MakeAsideName());
  code = local::RenameItem(transfer.from.whole, between, false);
  if (code == 0) {
    code = local::RenameItem(between, transfer.to.whole, false);
    if (code != 0) {
      static_cast<void>(local::RenameItem(between, transfer.from.whole, false));
    }
  }
  return code;
}

}  // namespace

void LocalFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                           const ItemObserver& observer) {
  const WindowsPath source = ResolveItem(volumes_, from, error::kAccessDenied);
  const WindowsPath target = ResolveItem(volumes_, to, error::kExists);
  const Transfer transfer(source, target);
  transfer.RefuseSame();
  transfer.RefuseInside();
  transfer.RefuseExisting(overwrite);
  local::SearchLeftovers(target.Parent(), target.ParentText(), native_->leftovers);
  local::TreeCopier copier(native_->leftovers);
  copier.Copy(transfer.Source(), transfer.status, transfer.Destination(), overwrite, observer);
}

void LocalFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  const WindowsPath source = ResolveItem(volumes_, from, error::kAccessDenied);
  const WindowsPath target = ResolveItem(volumes_, to, error::kExists);
  const Transfer transfer(source, target);
  const bool caseChange = transfer.IsCaseChange();
  if (!caseChange) {
    transfer.RefuseSame();
    transfer.RefuseInside();
    transfer.RefuseExisting(overwrite);
  }
  local::RequireNewName(target.names.last(), target.text);
  const bool replace = transfer.existing.has_value() && !caseChange;
  const bool replaceFolder = replace && transfer.existing->IsFolder();
  if (replaceFolder && !IsEmptyFolder(target.whole)) {
    Fail(error::kDirectoryNotEmpty, target.text);
  }
  const DWORD code = caseChange      ? ChangeCase(transfer)
                     : replaceFolder ? local::RenameOverEmptyFolder(source.whole, target.whole)
                                     : local::RenameItem(source.whole, target.whole, replace, true);
  if (code == ERROR_NOT_SAME_DEVICE) {
    // On two disks of which one is a clone of the other, different files have equal numbers.
    if (caseChange) {
      transfer.RefuseSame();
    }
  }
  if (code != 0) {
    const qint32 number = local::NumberOfWin32(code);
    FailAt(code, number == error::kExists || number == error::kDiskFull ? target : source);
  }
}

void LocalFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kAccessDenied);
  if (!Find(path)) {
    FailAt(ERROR_FILE_NOT_FOUND, native);
  }
  local::RemoveTree(native.whole, native.text, observer);
}

void LocalFileSystem::RemoveAlone(const QString& path) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kAccessDenied);
  ItemStatus status;
  DWORD code = local::StatusAt(native.whole, status);
  if (code == 0) {
    if (local::IsMountPoint(native.whole, status)) {
      Fail(providererror::kBusy, native.text);
    }
    code = local::RemoveOne(native.whole, status);
  }
  if (code != 0) {
    FailAt(code, native);
  }
}

std::vector<Leftover> LocalFileSystem::TakeLeftovers() {
  return native_->leftovers.Take();
}

}  // namespace trevane
