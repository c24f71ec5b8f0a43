# Cross-building for 64-bit Windows, with the compilers whose threads are Windows' own: what the module is made of
# does nothing while it is being loaded. Programs that need std::thread include posix_threads.cmake.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-win32)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-win32)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
find_program(WINE NAMES wine64 wine PATHS /usr/lib/wine REQUIRED) # the loader itself, not its wrapper script
set(CMAKE_CROSSCOMPILING_EMULATOR ${WINE}) # add_test() on a target runs it under Wine
