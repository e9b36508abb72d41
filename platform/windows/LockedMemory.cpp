#include "platform/LockedMemory.h"

#include <new>

#include <windows.h>

namespace trevane {

// The system locks whole pages, and one call unlocks what several have locked: no two secrets share a page.

void* AllocateLocked(std::size_t bytes) {
  void* const start = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (start == nullptr) {
    throw std::bad_alloc();
  }
  VirtualLock(start, bytes);
  return start;
}

void FreeLocked(void* start, std::size_t /*bytes*/) noexcept {
  // Unlocks them, too.
  VirtualFree(start, 0, MEM_RELEASE);
}

}  // namespace trevane
