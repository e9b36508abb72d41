#pragma once

#include <Qt>

namespace trevane {

/// Data of a node or an item besides the parts that are shown. Qt::EditRole is the real name, and
/// Qt::ToolTipRole the full text of a cell whose own text may be cut.
enum ItemRole {
  kTagRole = Qt::UserRole,
  kKeyRole,
  kFullPathRole,
  kImageKeyRole,
  kExpandedImageKeyRole,
  kGhostedRole
};

}  // namespace trevane
