#include "engine/providers/local/linux/TreeRemover.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/FolderReader.h"
#include "engine/providers/local/linux/NativeName.h"

#include <cerrno>
#include <vector>

#include <dirent.h>
#include <fcntl.h>

namespace trevane::local {
namespace {

using Names = std::vector<QByteArray>;

// 0, or an errno.
int DeleteItem(const FolderChain& chain, const QByteArray& name, ChangeGuard* guard) {
  struct statx status {};
  if (guard != nullptr) {
    if (const int code = StatusAt(chain.Fd(), name.constData(), status); code != 0) {
      return code;
    }
    if (guard->IsChanged(status)) {
      Fail(providererror::kChanged, chain.TextOf(name));
    }
  }
  if (::unlinkat(chain.Fd(), name.constData(), 0) != 0) {
    return errno;
  }
  if (guard != nullptr) {
    guard->NoteDeleted(status);
  }
  return 0;
}

void Tell(const ItemObserver& observer, const FolderChain& chain, const QByteArray& name) {
  if (observer && !observer(FromNativeName(name))) {
    Fail(error::kCancelled, chain.TextOf(name));
  }
}

// Deletes what is no folder in the current folder and answers the names of its folders.
Names ClearLevel(const FolderChain& chain, ChangeGuard* guard, const ItemObserver& observer) {
  std::vector<FolderItem> items;
  if (const int code = FolderReader::All(chain.Fd(), items); code != 0) {
    FailErrno(code, chain.Text());
  }
  Names folders;
  for (FolderItem& item : items) {
    if (item.type == DT_UNKNOWN) {
      struct statx status {};
      if (StatusAt(chain.Fd(), item.name.constData(), status) == 0 && S_ISDIR(status.stx_mode)) {
        item.type = DT_DIR;
      }
    }
    if (item.type == DT_DIR) {
      folders.push_back(std::move(item.name));
      continue;
    }
    Tell(observer, chain, item.name);
    if (const int code = DeleteItem(chain, item.name, guard); code != 0 && code != ENOENT) {
      FailErrno(code, chain.TextOf(item.name));
    }
  }
  return folders;
}

}  // namespace

void TreeRemover::Remove(FolderChain& parent, const QByteArray& name, ChangeGuard* guard,
                         const ItemObserver& observer) {
  struct statx status {};
  if (const int code = StatusAt(parent.Fd(), name.constData(), status); code != 0) {
    FailErrno(code, parent.TextOf(name));
  }
  if (!S_ISDIR(status.stx_mode)) {
    if (const int code = DeleteItem(parent, name, guard); code != 0) {
      FailErrno(code, parent.TextOf(name));
    }
    return;
  }
  FolderChain& chain = parent;
  const std::size_t top = chain.Depth();
  std::vector<Names> pending{{name}};
  while (!pending.empty()) {
    if (pending.back().empty()) {
      pending.pop_back();
      if (chain.Depth() == top) {
        break;
      }
      const QByteArray done = chain.Name();
      chain.Leave();
      if (::unlinkat(chain.Fd(), done.constData(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
        FailErrno(errno, chain.TextOf(done));
      }
      continue;
    }
    const QByteArray next = std::move(pending.back().back());
    pending.back().pop_back();
    if (chain.Depth() > top) {
      Tell(observer, chain, next);
    }
    const int code = chain.Enter(next);
    if (code == ENOENT) {
      continue;
    }
    if (code != 0) {
      // Also an empty folder that may not be read can be deleted.
      if (::unlinkat(chain.Fd(), next.constData(), AT_REMOVEDIR) != 0) {
        FailErrno(code, chain.TextOf(next));
      }
      continue;
    }
    if (IsMountPoint(chain.Status(), chain.Fd())) {
      Fail(providererror::kBusy, QStringLiteral("A drive is mounted here"), chain.Text());
    }
    pending.push_back(ClearLevel(chain, guard, observer));
  }
}

}  // namespace trevane::local
