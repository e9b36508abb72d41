#include "engine/providers/local/linux/FolderChain.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/NativeName.h"
#include "platform/linux/SystemCalls.h"

#include <cerrno>

#include <fcntl.h>

namespace trevane::local {
namespace {

constexpr std::size_t kOpenLevels = 32;

}  // namespace

FolderChain::FolderChain(FileDescriptor root, QString text) : rootText_(std::move(text)) {
  levels_.push_back({std::move(root), {}, {}});
}

int FolderChain::Enter(const QByteArray& name, const QByteArray& shown) {
  Level level;
  level.fd = OpenAt(Fd(), name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK);
  if (!level.fd.IsOpen()) {
    return errno;
  }
  if (const int code = StatusOf(level.fd.Get(), level.status); code != 0) {
    return code;
  }
  level.name = name;
  level.shown = shown.isEmpty() ? name : shown;
  levels_.push_back(std::move(level));
  // The root stays open: it could not be opened again from below.
  if (levels_.size() > kOpenLevels + 1) {
    levels_[levels_.size() - 1 - kOpenLevels].fd.Close();
  }
  return 0;
}

void FolderChain::Leave() {
  Level& above = levels_[levels_.size() - 2];
  if (!above.fd.IsOpen()) {
    FileDescriptor opened = OpenAt(Fd(), "..", O_RDONLY | O_DIRECTORY | O_NONBLOCK);
    struct statx status {};
    if (!opened.IsOpen() || StatusOf(opened.Get(), status) != 0 || !IsSameItem(status, above.status)) {
      Fail(providererror::kChanged, Text());
    }
    above.fd = std::move(opened);
  }
  levels_.pop_back();
}

QString FolderChain::Text() const {
  QString text = rootText_;
  for (std::size_t i = 1; i < levels_.size(); ++i) {
    text = providerpath::Child(text, FromNativeName(levels_[i].shown));
  }
  return text;
}

QString FolderChain::TextOf(const QByteArray& name) const {
  return providerpath::Child(Text(), FromNativeName(name));
}

}  // namespace trevane::local
