#include "engine/providers/local/windows/Leftovers.h"

#include "engine/files/TemporaryName.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/TreeRemover.h"

#include <algorithm>
#include <exception>
#include <vector>

namespace trevane::local {

using windowstext::FromWide;

namespace {

/// In units of 100 nanoseconds.
constexpr qint64 kSecond = 10'000'000;

qint64 Now() {
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  return static_cast<qint64>((static_cast<quint64>(now.dwHighDateTime) << 32) | now.dwLowDateTime);
}

/// The other times may be those of the source. Without a time of the last change the age is unknown.
bool IsOld(const QString& path, qint64 now) {
  const FileHandle item = OpenItem(path, FILE_READ_ATTRIBUTES);
  FILE_BASIC_INFO basic{};
  if (!item.IsOpen() ||
      GetFileInformationByHandleEx(item.Get(), FileBasicInfo, &basic, sizeof basic) == FALSE ||
      basic.ChangeTime.QuadPart == 0) {
    return false;
  }
  const qint64 day = std::chrono::seconds(LeftoverLog::kOldEnough).count() * kSecond;
  return std::max(basic.ChangeTime.QuadPart, basic.LastWriteTime.QuadPart) < now - day;
}

/// A copy that is still being made contains recent items.
bool IsOldTree(const QString& top) {
  const qint64 now = Now();
  std::vector<QString> pending{top};
  while (!pending.empty()) {
    const QString path = std::move(pending.back());
    pending.pop_back();
    ItemStatus status;
    if (StatusAt(path, status) != 0 || IsMountPoint(path, status) || !IsOld(path, now)) {
      return false;
    }
    if (!status.IsFolder()) {
      continue;
    }
    const DWORD code = EachItem(path, [&](const WIN32_FIND_DATAW& found) {
      pending.push_back(Below(path, FromWide(found.cFileName)));
    });
    if (code != 0) {
      return false;
    }
  }
  return true;
}

bool RemoveIfOurs(const QString& path, const QString& name, const QString& text) {
  try {
    if (!IsOwnTemporaryName(name) || !IsOldTree(path)) {
      return false;
    }
    RemoveTree(path, text);
    return true;
  } catch (const RunTimeError&) {
    return false;
  }
}

}  // namespace

void SearchLeftovers(const QString& folder, const QString& text, LeftoverLog& log) noexcept {
  try {
    const auto identity = IdentityAt(folder);
    if (!log.IsDue(identity ? *identity : FileIdentity{0, qHash(folder.toLower())})) {
      return;
    }
    std::vector<QString> names;
    const DWORD code = EachItem(folder, [&names](const WIN32_FIND_DATAW& found) {
      if (found.cFileName[0] == L'.') {
        QString name = FromWide(found.cFileName);
        if (IsTemporaryName(name)) {
          names.push_back(std::move(name));
        }
      }
    });
    if (code != 0) {
      return;
    }
    for (const QString& name : names) {
      const QString itemText = text + u'\\' + name;
      log.Add(itemText, RemoveIfOurs(Below(folder, name), name, itemText));
    }
  } catch (const std::exception&) {
    // The leftovers are found again the next time.
  }
}

}  // namespace trevane::local
