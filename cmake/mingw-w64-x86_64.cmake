# Cross-compiling the Windows program on Debian with mingw-w64. The posix
# thread variant of the compilers is needed for std::thread and std::mutex.
# Everything is linked statically, so the executables need no DLLs beside
# them; wine runs them in place of a Windows machine (tests, the packaged
# program's checks).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(PELLUCIDA_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${PELLUCIDA_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${PELLUCIDA_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${PELLUCIDA_MINGW_PREFIX}-windres)

# Headers and libraries come from the mingw-w64 sysroot only: a Linux header
# found by accident would compile and then fail at link time.
set(CMAKE_FIND_ROOT_PATH /usr/${PELLUCIDA_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

find_program(PELLUCIDA_WINE NAMES wine wine64)
if(PELLUCIDA_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PELLUCIDA_WINE})
endif()
