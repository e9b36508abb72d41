#include "engine/substitute/SubstituteWorkspaces.h"

#include "base/RunTimeError.h"
#include "engine/model/IxoWorkspace.h"

namespace trevane {

std::shared_ptr<IxoWorkspace> SubstituteWorkspaces::Item(const Variant& index) {
  if (std::holds_alternative<QString>(index)) {
    throw RunTimeError(error::kNoSuchKey, QStringLiteral("Workspaces are selected by their position"));
  }
  const auto position = IntegerIn(index);
  if (position == 0) {
    return workspace_;
  }
  if (position) {
    throw RunTimeError(error::kOutOfRange, QStringLiteral("There is no workspace at that position"));
  }
  throw RunTimeError(error::kInvalidParameter, QStringLiteral("Workspaces are selected by their position"));
}

}  // namespace trevane
