# Toolchain for Windows programs made on Debian with mingw-w64, the static Qt of packaging/qt/build-qt, and the
# libraries of packaging/windows/build-web-libraries.
# HALVEX_WINDOWS selects windows64 or windows32.

set(HALVEX_WINDOWS windows64 CACHE STRING "Width of Windows to build for: windows64 or windows32")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES HALVEX_WINDOWS)

set(CMAKE_SYSTEM_NAME Windows)
if(HALVEX_WINDOWS STREQUAL "windows32")
    set(CMAKE_SYSTEM_PROCESSOR i686)
else()
    set(CMAKE_SYSTEM_PROCESSOR x86_64)
endif()
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

include(${CMAKE_CURRENT_LIST_DIR}/own_libraries.cmake)
halvex_own_libraries(packaging/qt/build-qt ${HALVEX_WINDOWS} qt_prefix)
halvex_own_libraries(packaging/windows/build-web-libraries ${HALVEX_WINDOWS} web_prefix)

set(CMAKE_PREFIX_PATH ${qt_prefix})
set(CMAKE_FIND_ROOT_PATH /usr/${triplet} ${qt_prefix} ${web_prefix})
set(ENV{PKG_CONFIG_LIBDIR} ${web_prefix}/lib/pkgconfig)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The programs use the system's DLLs only.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Tests run under Wine, in a private prefix in the build folder.
set(CMAKE_CROSSCOMPILING_EMULATOR
    env WINEPREFIX=${CMAKE_BINARY_DIR}/wine-prefix ${CMAKE_CURRENT_LIST_DIR}/../tests/windows/wine-run)

# Qt names two of the system's libraries in a case of its own, which a file system that heeds case does not have.
foreach(library Secur32 Crypt32)
    string(TOLOWER ${library} found)
    foreach(configuration RELEASE DEBUG)
        set(_Qt5Network_${configuration}_${library}_PATH ${found} CACHE STRING "" FORCE)
    endforeach()
endforeach()
