# The libraries of the Windows build. Debian has no mingw-w64 builds of them,
# so lz4 and lodepng are compiled here from the unmodified sources in
# third_party/ (taken from Debian's source packages of the versions the Linux
# build links), stb is header-only (Debian's headers), and GoogleTest is built
# from Debian's googletest package, which ships its source.

add_library(pellucida_lz4 STATIC ${CMAKE_SOURCE_DIR}/third_party/lz4/lz4.c)
target_include_directories(pellucida_lz4 SYSTEM PUBLIC ${CMAKE_SOURCE_DIR}/third_party/lz4)
set(PELLUCIDA_LZ4 pellucida_lz4)

add_library(pellucida_lodepng STATIC ${CMAKE_SOURCE_DIR}/third_party/lodepng/lodepng.cpp)
target_include_directories(pellucida_lodepng SYSTEM PUBLIC ${CMAKE_SOURCE_DIR}/third_party/lodepng)
set(LODEPNG_INCLUDE_DIR ${CMAKE_SOURCE_DIR}/third_party/lodepng)
set(LODEPNG_LIBRARY pellucida_lodepng)

# Only the stb folder is put on the include path: all of /usr/include would
# let Linux headers into a Windows build.
set(PELLUCIDA_STB_HEADERS /usr/include/stb CACHE PATH "Debian's stb headers (package libstb-dev)")
if(NOT EXISTS ${PELLUCIDA_STB_HEADERS}/stb_image.h)
  message(FATAL_ERROR "stb headers not found in ${PELLUCIDA_STB_HEADERS} (Debian package libstb-dev)")
endif()
set(STB_INCLUDE_DIR ${CMAKE_BINARY_DIR}/stb-include)
file(MAKE_DIRECTORY ${STB_INCLUDE_DIR})
file(CREATE_LINK ${PELLUCIDA_STB_HEADERS} ${STB_INCLUDE_DIR}/stb SYMBOLIC)

if(PELLUCIDA_TESTS)
  set(PELLUCIDA_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH
      "GoogleTest's source (Debian package googletest)")
  if(NOT EXISTS ${PELLUCIDA_GOOGLETEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest source not found in ${PELLUCIDA_GOOGLETEST_SOURCE} (Debian package googletest)")
  endif()
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  # Its targets come with the GTest:: names the tests link.
  add_subdirectory(${PELLUCIDA_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
