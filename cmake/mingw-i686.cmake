# MinGW-w64 for 32-bit Windows, from Linux (Debian's cross compiler) or on Windows itself.
set(VORELLE_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
