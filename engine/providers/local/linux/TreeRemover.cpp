#include "engine/providers/local/linux/TreeRemover.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TreeRemoval.h"
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

/// The folders of a chain, as RemoveTree takes them.
class ChainTree {
 public:
  using Item = FolderItem;

  explicit ChainTree(FolderChain& chain) : chain_(chain) {}

  [[nodiscard]] static bool IsFolder(const Item& item) { return item.type == DT_DIR; }
  [[nodiscard]] static QString NameOf(const Item& item) { return FromNativeName(item.name); }
  [[nodiscard]] QString Text() const { return chain_.Text(); }
  [[nodiscard]] QString TextOf(const Item& item) const { return chain_.TextOf(item.name); }
  [[nodiscard]] bool IsMountPoint() const { return local::IsMountPoint(chain_.Status(), chain_.Fd()); }
  void Leave() { chain_.Leave(); }

  [[nodiscard]] std::vector<Item> List() const {
    std::vector<Item> items;
    if (const int code = FolderReader::All(chain_.Fd(), items); code != 0) {
      FailErrno(code, chain_.Text());
    }
    for (Item& item : items) {
      struct statx status {};
      if (item.type == DT_UNKNOWN && StatusAt(chain_.Fd(), item.name.constData(), status) == 0) {
        item.type = static_cast<unsigned char>(IFTODT(status.stx_mode));
      }
    }
    return items;
  }

  [[nodiscard]] bool Enter(const Item& item) {
    const int code = chain_.Enter(item.name);
    if (code == 0 || code == ENOENT) {
      return code == 0;
    }
    if (code == ENOTDIR || code == ELOOP) {
      Fail(providererror::kChanged, TextOf(item));
    }
    FailErrno(code, TextOf(item));
  }

  void Remove(const Item& item) const {
    const int flags = IsFolder(item) ? AT_REMOVEDIR : 0;
    if (::unlinkat(chain_.Fd(), item.name.constData(), flags) != 0 && errno != ENOENT) {
      FailErrno(errno, TextOf(item));
    }
  }

 private:
  FolderChain& chain_;
};

}  // namespace

void TreeRemover::Remove(FolderChain& parent, const QByteArray& name, const ItemObserver& observer) {
  struct statx status {};
  if (const int code = StatusAt(parent.Fd(), name.constData(), status); code != 0) {
    FailErrno(code, parent.TextOf(name));
  }
  ChainTree tree(parent);
  RemoveTree(tree, FolderItem{name, static_cast<unsigned char>(IFTODT(status.stx_mode))}, observer);
}

}  // namespace trevane::local
