#pragma once

#include "base/Variant.h"

#include <QtGlobal>

#include <optional>

namespace trevane {

/// The properties of an item that a copy keeps besides name and content; empty where a file system lacks
/// them.
struct FileTraits {
  /// The nine permission bits of POSIX, 0777 at most, so that nothing runs as somebody else. They give an
  /// access control list's owner, group and others the rights that these have at least.
  std::optional<quint32> permissions = {};
  /// Those of the attribute bits 1 read-only, 2 hidden, 4 system and 32 archive that are set.
  std::optional<qint32> marks = {};
  Date created = {};
  Date modified = {};
};

}  // namespace trevane
