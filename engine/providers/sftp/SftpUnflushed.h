#pragma once

#include "engine/providers/sftp/SftpServer.h"

#include <QByteArray>

#include <set>
#include <vector>

namespace trevane::sftp {

/// The files that were written and may not outlast a power failure yet.
class Unflushed {
 public:
  /// Flushes all of them first where there are too many to remember.
  void Add(Server& server, const QByteArray& path);
  void Move(const QByteArray& from, const QByteArray& to);
  void Remove(const QByteArray& path);

  /// Returns when the item and all that is remembered below it outlast a power failure, as far as the server
  /// offers it. Files that are missing by now are no failure.
  void Flush(Server& server, const Place& place);

 private:
  [[nodiscard]] std::vector<QByteArray> TakeBelow(const QByteArray& path);

  std::set<QByteArray> paths_;
};

}  // namespace trevane::sftp
