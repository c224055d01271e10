# Cross-compiling for Windows x64 with Debian's MinGW-w64, for the Windows plug-in (Quillo.aex), the
# Windows simulated host and the tests that run them under Wine (scripts/test.sh builds build/win32).
# The posix thread model, because the code uses std::thread and std::mutex.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(_mingw x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${_mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${_mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${_mingw}-windres)

# Libraries and headers from the MinGW tree only (zlib comes from libz-mingw-w64-dev); programs such
# as python3 and rsvg-convert from the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${_mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The tests run under Wine (scripts/wine-env.sh prepares its prefix and display).
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
