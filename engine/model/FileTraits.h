#pragma once

#include "base/Variant.h"

#include <QtGlobal>

#include <optional>

namespace trevane {

/// What a copy keeps of an item besides its name and its content. What a file system does not have is empty.
struct FileTraits {
  /// Who may do what: the nine bits of POSIX, 0777 at most, so that nothing runs as somebody else. Where an
  /// access control list says more than they can, they give what its owner, group and others have at least.
  std::optional<quint32> permissions = {};
  /// Which of the attribute bits 1 read-only, 2 hidden, 4 system and 32 archive the item is marked with.
  std::optional<qint32> marks = {};
  Date created = {};
};

}  // namespace trevane
