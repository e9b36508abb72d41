#include "platform/LockedMemory.h"

#include <windows.h>

namespace trevane {

void LockMemory(void* start, std::size_t bytes) noexcept {
  VirtualLock(start, bytes);
}

void UnlockMemory(void* start, std::size_t bytes) noexcept {
  VirtualUnlock(start, bytes);
}

}  // namespace trevane
