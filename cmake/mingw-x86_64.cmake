# MinGW-w64 for 64-bit Windows, from Linux (Debian's cross compiler) or on Windows itself.
set(VORELLE_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
