# pellucida_layer(<target> FOLDERS <folder>... SOURCES <file>... [LINKS <target>...])
#
# Makes the static library of one layer. Its include root is a folder of the
# build tree holding one link per folder the layer may include from (its own
# and those below it), so `#include "app/X.h"` in formats/ fails to compile
# instead of working by accident. The root is public: whoever links the layer
# may include what the layer may. The links are made when the project is
# configured, which for the Windows build happens on Linux as well.
function(pellucida_layer target)
  cmake_parse_arguments(PARSE_ARGV 1 LAYER "" "" "FOLDERS;SOURCES;LINKS")
  set(root ${CMAKE_BINARY_DIR}/layers/${target})
  # Links left from an earlier configure with other folders go first.
  file(GLOB stale LIST_DIRECTORIES true ${root}/*)
  foreach(link ${stale})
    file(REMOVE ${link})
  endforeach()
  file(MAKE_DIRECTORY ${root})
  foreach(folder ${LAYER_FOLDERS})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} SYMBOLIC)
  endforeach()

  add_library(${target} STATIC ${LAYER_SOURCES})
  target_include_directories(${target} PUBLIC ${root})
  if(LAYER_LINKS)
    target_link_libraries(${target} PUBLIC ${LAYER_LINKS})
  endif()
endfunction()
