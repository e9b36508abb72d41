/* What the linker of other compilers puts into every program, and this one's leaves out: the load
   configuration. The libraries that the program is linked against are looked for in the system's own folder
   alone, and not first beside the program, where anybody may have put another one of that name.
   tools/finish-windows-program.py enters it in the program's header. Source: IMAGE_LOAD_CONFIG_DIRECTORY64 of
   the Windows API documentation and "/DEPENDENTLOADFLAG" of the linker's. */
#include <stddef.h>
#include <stdint.h>

struct LoadConfig {
  uint32_t size;
  uint32_t timeStamp;
  uint16_t version[2];
  uint32_t globalFlags[2];
  uint32_t criticalSectionTimeout;
  uint64_t heapAndAffinity[6];
  uint32_t processHeapFlags;
  uint16_t servicePack;
  uint16_t dependentLoadFlags;
  uint64_t editList;
  uint64_t cookieAndHandlers[3];
};

_Static_assert(offsetof(struct LoadConfig, dependentLoadFlags) == 0x4E, "as the system reads it");
_Static_assert(sizeof(struct LoadConfig) == 0x70, "as the system reads it");

enum { kSearchSystemFolder = 0x800 }; /* LOAD_LIBRARY_SEARCH_SYSTEM32 */

__attribute__((used, section(".ldcfg"))) const struct LoadConfig kLoadConfig = {
    .size = sizeof(struct LoadConfig),
    .dependentLoadFlags = kSearchSystemFolder,
};
