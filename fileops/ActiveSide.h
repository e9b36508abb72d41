#pragma once

namespace trevane {

/// The view that a command acts on: the one with the focus, or, when nothing in the window has it, the one
/// that had it last.
enum class ActiveSide { Neither, Tree, List };

}  // namespace trevane
