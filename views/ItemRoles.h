#pragma once

#include <Qt>

namespace trevane {

/// What the models tell of a node or an item besides what is shown. Qt::EditRole is the real name, and
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
