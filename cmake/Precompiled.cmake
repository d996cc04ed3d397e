# Precompiled headers: what nearly every source includes is parsed once for many targets.
#
#   vorelle_precompile(TARGET CARRIER HEADERS...)
#
# gives TARGET the headers that CARRIER, a target with the same compile options, has precompiled; a
# target that is its own carrier precompiles them.
#
# A source still includes what it uses: the tree windows-x86-check and, for the portable layers,
# native compile the product without precompiled headers.
if(CMAKE_HOST_WIN32)
  set(default OFF)  # the compiler there cannot always load them: their address may be taken
else()
  set(default ON)
endif()
option(VORELLE_PRECOMPILE "Precompile common headers" ${default})

set(VORELLE_WINDOW_HEADERS
  <algorithm> <array> <atomic> <cstddef> <cstdint> <cstring> <functional> <map> <memory> <optional>
  <span> <stdexcept> <string> <string_view> <utility> <vector> <windows.h> <commctrl.h>)
set(VORELLE_TEST_HEADERS <gmock/gmock.h> <gtest/gtest.h>)

function(vorelle_precompile target carrier)
  if(NOT VORELLE_PRECOMPILE)
    return()
  endif()
  if(target STREQUAL carrier)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  else()
    target_precompile_headers(${target} REUSE_FROM ${carrier})
  endif()
  # The first is for compiler caches. The others cannot tell the library's code from ours when it
  # comes precompiled, and report what it does; native and windows-x86-check have them on.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:
    -fpch-preprocess -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread>)
endfunction()
