# Cross-builds for 64-bit Windows with Debian's MinGW-w64 compilers. The
# posix thread model is the one whose libstdc++ has std::thread and
# std::mutex. The libraries built by scripts/windows_deps.sh are found in
# ZEPT_WINDOWS_DEPS (default: the folder that script last built or reused).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZEPT_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ZEPT_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZEPT_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${ZEPT_MINGW_TRIPLET}-windres)

if(NOT ZEPT_WINDOWS_DEPS)
  if(DEFINED ENV{ZEPT_WINDOWS_DEPS})
    set(ZEPT_WINDOWS_DEPS $ENV{ZEPT_WINDOWS_DEPS})
  else()
    set(ZEPT_WINDOWS_DEPS $ENV{HOME}/.cache/zept-windows-deps/current)
  endif()
endif()
set(ZEPT_WINDOWS_DEPS ${ZEPT_WINDOWS_DEPS} CACHE PATH "Windows builds of the third-party libraries")

set(CMAKE_FIND_ROOT_PATH /usr/${ZEPT_MINGW_TRIPLET} ${ZEPT_WINDOWS_DEPS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config sees only the Windows libraries, never the host's.
set(ENV{PKG_CONFIG_LIBDIR} "${ZEPT_WINDOWS_DEPS}/lib/pkgconfig:/usr/${ZEPT_MINGW_TRIPLET}/lib/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "")
set(ENV{PKG_CONFIG_PATH} "")

# Static zlib, so that no zlib1.dll has to travel with the program.
set(ZLIB_INCLUDE_DIR /usr/${ZEPT_MINGW_TRIPLET}/include CACHE PATH "")
set(ZLIB_LIBRARY /usr/${ZEPT_MINGW_TRIPLET}/lib/libz.a CACHE FILEPATH "")

# Programs of the build run under Wine (test discovery, custom commands).
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine_run.sh)
