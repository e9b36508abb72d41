#include "engine/providers/ftp/FtpOwnFolders.h"

#include <algorithm>

namespace trevane::ftp {

void OwnFolders::Move(const QByteArray& from, const QByteArray& to) {
  if (folders_.contains(from)) {
    folders_.insert(to, folders_.take(from));
  } else {
    folders_.remove(to);
  }
}

bool OwnFolders::Has(const QByteArray& path, const QByteArray& unique) {
  const auto known = folders_.find(path);
  if (known == folders_.end()) {
    return false;
  }
  if (known->isEmpty()) {
    *known = unique;
  }
  return *known == unique;
}

bool OwnFolders::IsAt(QByteArray folder, const QByteArray& unique, char separator) const {
  if (unique.isEmpty()) {
    return false;
  }
  while (!folder.isEmpty()) {
    if (folders_.value(folder) == unique) {
      return true;
    }
    folder.truncate(std::max<qsizetype>(folder.lastIndexOf(separator), 0));
  }
  return false;
}

}  // namespace trevane::ftp
