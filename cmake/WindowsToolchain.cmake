# Cross-compiles for 64-bit Windows with Debian's mingw-w64 (g++-mingw-w64-x86-64-posix: the variant whose standard
# library has std::thread and std::mutex). Everything is linked statically, the compiler's own libraries as well.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(trevane_tools x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${trevane_tools}-gcc-posix)
set(CMAKE_CXX_COMPILER ${trevane_tools}-g++-posix)
set(CMAKE_RC_COMPILER ${trevane_tools}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${trevane_tools})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
