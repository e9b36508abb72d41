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
#include <unistd.h>

namespace trevane::local {
namespace {

using Names = std::vector<QByteArray>;

void Tell(const ItemObserver& observer, const FolderChain& chain, const QByteArray& name) {
  if (observer && !observer(FromNativeName(name))) {
    Fail(error::kCancelled, chain.TextOf(name));
  }
}

// Deletes what is no folder in the current folder and answers the names of its folders.
Names ClearLevel(const FolderChain& chain, const ItemObserver& observer) {
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
    if (::unlinkat(chain.Fd(), item.name.constData(), 0) != 0 && errno != ENOENT) {
      FailErrno(errno, chain.TextOf(item.name));
    }
  }
  return folders;
}

}  // namespace

void TreeRemover::Remove(FolderChain& parent, const QByteArray& name, const ItemObserver& observer) {
  struct statx status {};
  if (const int code = StatusAt(parent.Fd(), name.constData(), status); code != 0) {
    FailErrno(code, parent.TextOf(name));
  }
  if (!S_ISDIR(status.stx_mode)) {
    if (::unlinkat(parent.Fd(), name.constData(), 0) != 0) {
      FailErrno(errno, parent.TextOf(name));
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
    pending.push_back(ClearLevel(chain, observer));
  }
}

}  // namespace trevane::local
