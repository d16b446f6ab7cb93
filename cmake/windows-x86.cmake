# Toolchain: 32-bit x86 Windows, cross-built by mingw-w64 with its POSIX threads, which OpenMP and
# the standard library's threads need.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(toolchain i686-w64-mingw32)
set(CMAKE_C_COMPILER ${toolchain}-gcc-posix)
set(CMAKE_CXX_COMPILER ${toolchain}-g++-posix)
set(CMAKE_RC_COMPILER ${toolchain}-windres)
# The compiler's archiver wrapper loads a plug-in for link-time code, which this build does not have.
set(CMAKE_AR ${toolchain}-ar CACHE FILEPATH "Archiver")

# Windows guarantees stacks aligned to 4 bytes, vector code needs 16: functions called from outside
# (from code of other compilers, on new threads) realign. Floats are computed in SSE registers, in
# single precision: results are defined to the last bit.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")

# The run-time libraries are linked statically, so that the product needs no library but Windows'.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# Folders of the cross-built dependencies, as tools/windows/dependencies prints them.
set(VELORN_WINDOWS_DEPENDENCIES "" CACHE STRING "Folders of the cross-built dependencies")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELORN_WINDOWS_DEPENDENCIES)
set(CMAKE_FIND_ROOT_PATH ${VELORN_WINDOWS_DEPENDENCIES} /usr/${toolchain})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(description_folders ${VELORN_WINDOWS_DEPENDENCIES})
list(TRANSFORM description_folders APPEND /lib/pkgconfig)
list(JOIN description_folders : description_folders)
set(ENV{PKG_CONFIG_LIBDIR} "${description_folders}")
unset(ENV{PKG_CONFIG_PATH})
