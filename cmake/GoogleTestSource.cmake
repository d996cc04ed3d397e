# Offers the targets gtest_main and gmock: built from Debian's package of the sources where it is
# installed, so that every toolchain gets its own; elsewhere from an installed GoogleTest, which
# -DGTest_ROOT=FOLDER or CMAKE_PREFIX_PATH may point to.
set(VORELLE_GOOGLETEST /usr/src/googletest CACHE PATH "Sources of GoogleTest")
if(EXISTS ${VORELLE_GOOGLETEST}/CMakeLists.txt)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${VORELLE_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
  add_library(gtest_main ALIAS GTest::gtest_main)
  add_library(gmock ALIAS GTest::gmock)
endif()
