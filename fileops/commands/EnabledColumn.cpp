#include "fileops/commands/EnabledColumn.h"

#include "views/addresses/NodeTags.h"

namespace trevane {

namespace {

/// The cell of the entry's kind, in the order of the constructor's parameters.
std::size_t KindOf(qint32 tag) {
  if (IsWorkspace(tag)) {
    return 0;
  }
  if (IsMyComputer(tag)) {
    return 1;
  }
  if (IsDrive(tag)) {
    return 2;
  }
  return IsController(tag) ? 3 : 4;
}

}  // namespace

std::optional<bool> EnabledColumn::Enabled(const CommandState& state) const {
  if (!cells_) {
    return std::nullopt;
  }
  switch ((*cells_)[KindOf(state.tag)]) {
    case EnabledCell::Off:
      return false;
    case EnabledCell::On:
      return true;
    case EnabledCell::Paste:
      return state.clipboardCount >= 1 && state.selectedListItems <= 1;
    case EnabledCell::OnForEntry:
      return state.entry;
    case EnabledCell::OffForEntry:
      return !state.entry;
    case EnabledCell::WithParent:
      return state.hasParent;
  }
  return std::nullopt;
}

}  // namespace trevane
