#pragma once

#include <QString>

#include <functional>

namespace trevane {

/// The item that a long operation is at.
struct ItemProgress {
  /// Its name, without any folder.
  QString name;
  /// The folders between the item that the operation was called for and this one, the former's name first,
  /// separated by "\"; empty when the operation does not tell.
  QString folder = {};
  /// Of the content, in bytes: done so far, and all of it; -1 when it is not known.
  qint64 bytes = 0;
  qint64 size = -1;
  /// Files that are done, and files that the listings read so far hold; -1 when it is not known.
  qint64 files = -1;
  qint64 filesKnown = -1;
  /// Of the contents of all those files, in bytes, where the sizes of all are known beforehand; -1 otherwise.
  qint64 allBytes = -1;
  qint64 allSize = -1;
};

/// Called by a long operation before it works on an item within a folder, and while it copies a file at least
/// every 16 MiB. False ends the operation: it undoes or leaves what it would after a failure, and fails with
/// error::kCancelled.
using ItemObserver = std::function<bool(const ItemProgress& item)>;

}  // namespace trevane
