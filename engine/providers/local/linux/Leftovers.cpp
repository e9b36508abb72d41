#include "engine/providers/local/linux/Leftovers.h"

#include "engine/files/ProviderPath.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/linux/FolderChain.h"
#include "engine/providers/local/linux/FolderReader.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/TreeRemover.h"
#include "platform/linux/SystemCalls.h"

#include <exception>
#include <vector>

#include <fcntl.h>
#include <time.h>

namespace trevane::local {
namespace {

using Names = std::vector<QByteArray>;

// Whether an item of `user` was not touched in the day before `now`. The time of the last status change
// cannot be set back.
bool IsOld(const struct statx& status, const timespec& now, const Credentials& user) {
  const qint64 latest = now.tv_sec - std::chrono::seconds(LeftoverLog::kOldEnough).count();
  return status.stx_uid == user.user && status.stx_mtime.tv_sec < latest && status.stx_ctime.tv_sec < latest;
}

// A copy that is still being made contains recent items.
bool IsOldTree(FolderChain& chain, const QByteArray& top, const timespec& now, const Credentials& user) {
  const std::size_t start = chain.Depth();
  std::vector<Names> pending{{top}};
  bool isOld = true;
  while (!pending.empty()) {
    if (pending.back().empty()) {
      pending.pop_back();
      if (chain.Depth() > start) {
        chain.Leave();
      }
      continue;
    }
    const QByteArray name = std::move(pending.back().back());
    pending.back().pop_back();
    struct statx status {};
    isOld = isOld && StatusAt(chain.Fd(), name.constData(), status) == 0 && IsOld(status, now, user);
    if (!isOld || !S_ISDIR(status.stx_mode)) {
      continue;
    }
    std::vector<FolderItem> items;
    isOld = chain.Enter(name) == 0;
    if (isOld) {
      isOld = !IsMountPoint(chain.Status(), chain.Fd()) && FolderReader::All(chain.Fd(), items) == 0;
      Names& names = pending.emplace_back();
      for (FolderItem& item : items) {
        names.push_back(std::move(item.name));
      }
    }
  }
  return isOld;
}

bool RemoveIfOurs(FolderChain& chain, const QByteArray& name, const Credentials& user) {
  timespec now{};
  if (!IsOwnTemporaryName(FromNativeName(name)) || ::clock_gettime(CLOCK_REALTIME, &now) != 0) {
    return false;
  }
  try {
    if (!IsOldTree(chain, name, now, user)) {
      return false;
    }
    TreeRemover::Remove(chain, name);
    return true;
  } catch (const RunTimeError&) {
    return false;
  }
}

}  // namespace

void SearchLeftovers(int folder, const TextOf& text, const Credentials& user, LeftoverLog& log) noexcept {
  try {
    struct statx status {};
    if (StatusOf(folder, status) != 0 || !log.IsDue({DeviceOf(status), status.stx_ino})) {
      return;
    }
    const FileDescriptor opened = OpenAt(folder, ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK);
    Names names;
    const auto take = [&names](const char* name, std::size_t length, unsigned char) {
      const QByteArrayView bytes(name, static_cast<qsizetype>(length));
      if (bytes.startsWith(".trevane-") && IsTemporaryName(FromNativeName(bytes))) {
        names.push_back(bytes.toByteArray());
      }
    };
    if (!opened.IsOpen() || FolderReader::Each(opened.Get(), take) != 0) {
      return;
    }
    const QString path = names.empty() ? QString() : text();
    for (const QByteArray& name : names) {
      FolderChain chain(OpenAt(folder, ".", O_PATH | O_DIRECTORY), path);
      const bool removed = RemoveIfOurs(chain, name, user);
      log.Add(providerpath::Child(path, FromNativeName(name)), removed);
    }
  } catch (const std::exception&) {
    // The leftovers are found again the next time.
  }
}

}  // namespace trevane::local
