#pragma once

#include <cstddef>

namespace trevane {

/// Pages of their own that hold nothing else, filled with zeros, which the system is asked to keep out of the
/// swap space and, where it can, of memory dumps. Where it refuses that, for instance because the user may
/// lock no more, they are memory like any other. Throws std::bad_alloc where there is none.
[[nodiscard]] void* AllocateLocked(std::size_t bytes);
/// Gives back what AllocateLocked gave for as many bytes. What they hold is the caller's to overwrite.
void FreeLocked(void* start, std::size_t bytes) noexcept;

}  // namespace trevane
