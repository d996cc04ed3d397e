# The settings that every target of the project shares, carried by one interface target.
add_library(vorelle_options INTERFACE)
target_include_directories(vorelle_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(vorelle_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -fno-strict-aliasing
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # false alarms on std::string in g++ 12 (GCC bug 105651)
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)  # not part of g++'s -Wconversion for C++

find_package(Threads REQUIRED)
target_link_libraries(vorelle_options INTERFACE Threads::Threads)

option(VORELLE_SANITIZE "Build with address and undefined-behaviour sanitizers" OFF)
if(VORELLE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

option(VORELLE_FUZZ "Build the fuzzers too; needs clang" OFF)
if(VORELLE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32)
  target_compile_definitions(vorelle_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0A00 _WIN32_WINNT=0x0A00)
  # Wine's debugger reads DWARF 4, not the compiler's default 5.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-gdwarf-4>)
endif()
