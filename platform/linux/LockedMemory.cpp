#include "platform/LockedMemory.h"

#include <sys/mman.h>

namespace trevane {

void LockMemory(void* start, std::size_t bytes) noexcept {
  mlock(start, bytes);
}

void UnlockMemory(void* start, std::size_t bytes) noexcept {
  munlock(start, bytes);
}

}  // namespace trevane
