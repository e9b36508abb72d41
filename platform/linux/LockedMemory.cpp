#include "platform/LockedMemory.h"

#include <new>

#include <sys/mman.h>

namespace trevane {

// The system locks whole pages, and one call unlocks what several have locked: no two secrets share a page.

void* AllocateLocked(std::size_t bytes) {
  void* const start = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) {
    throw std::bad_alloc();
  }
  ::mlock(start, bytes);
  ::madvise(start, bytes, MADV_DONTDUMP);
  return start;
}

void FreeLocked(void* start, std::size_t bytes) noexcept {
  ::munmap(start, bytes);
}

}  // namespace trevane
