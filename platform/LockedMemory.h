#pragma once

#include <cstddef>

namespace trevane {

/// Asks the system to keep these bytes out of the swap space. Where it refuses, for instance because the user
/// may lock no more, nothing happens.
void LockMemory(void* start, std::size_t bytes) noexcept;
void UnlockMemory(void* start, std::size_t bytes) noexcept;

}  // namespace trevane
