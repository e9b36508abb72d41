#pragma once

#include "fileops/commands/CommandState.h"

#include <array>
#include <cstddef>
#include <optional>

namespace trevane {

/// When a command is enabled at one place for one kind of entry.
enum class EnabledCell {
  Off,
  On,
  /// As the clipboard set and the selection allow a paste.
  Paste,
  /// On where the entry itself was clicked.
  OnForEntry,
  OffForEntry,
  /// On where the current folder has a parent.
  WithParent,
};

/// When a command is enabled at one place: a cell for each kind of entry. A place without cells keeps the
/// state that it was given otherwise.
class EnabledColumn {
 public:
  constexpr EnabledColumn() = default;
  constexpr EnabledColumn(EnabledCell workspace, EnabledCell myComputer, EnabledCell drive,
                          EnabledCell controller, EnabledCell fileOrFolder)
      : cells_({workspace, myComputer, drive, controller, fileOrFolder}) {}

  /// A pure function of the state; nothing where there are no cells.
  [[nodiscard]] std::optional<bool> Enabled(const CommandState& state) const;

 private:
  static constexpr std::size_t kKinds = 5;

  std::optional<std::array<EnabledCell, kKinds>> cells_;
};

}  // namespace trevane
