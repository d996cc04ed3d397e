set(CMAKE_SYSTEM_NAME Windows)
if(VORELLE_MINGW_TRIPLE MATCHES "^i686")
  set(CMAKE_SYSTEM_PROCESSOR x86)
else()
  set(CMAKE_SYSTEM_PROCESSOR x86_64)
endif()

if(CMAKE_HOST_WIN32)
  set(CMAKE_C_COMPILER gcc)
  set(CMAKE_CXX_COMPILER g++)
  set(CMAKE_RC_COMPILER windres)
else()
  # The -posix variants carry std::thread.
  set(CMAKE_C_COMPILER ${VORELLE_MINGW_TRIPLE}-gcc-posix)
  set(CMAKE_CXX_COMPILER ${VORELLE_MINGW_TRIPLE}-g++-posix)
  set(CMAKE_RC_COMPILER ${VORELLE_MINGW_TRIPLE}-windres)
  set(CMAKE_FIND_ROOT_PATH /usr/${VORELLE_MINGW_TRIPLE})
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
  # Every program of the build is started with a time limit: a message box that nobody sees
  # would otherwise wait for ever.
  set(CMAKE_CROSSCOMPILING_EMULATOR "/usr/bin/timeout;-k;5;300;/usr/bin/wine" CACHE STRING "")
endif()

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
