# 64-bit Windows by MinGW-w64 with posix threads. VELMOR_WINDOWS_SYSROOT names the folder with Qt and OpenSSL for it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# The same sources give the same bytes, whenever they are built.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -Wl,--no-insert-timestamp)
endforeach()

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELMOR_WINDOWS_SYSROOT)
if(NOT VELMOR_WINDOWS_SYSROOT)
    # Kept, for whatever configures anew without the variable.
    set(VELMOR_WINDOWS_SYSROOT "$ENV{VELMOR_WINDOWS_SYSROOT}" CACHE PATH "Folder with Qt and OpenSSL for Windows" FORCE)
endif()
list(APPEND CMAKE_PREFIX_PATH ${VELMOR_WINDOWS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH ${VELMOR_WINDOWS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
