# The canonical descriptions of the built-in filters: a library of its own, which needs nothing but the host-neutral model.
add_library(velmora-filter-descriptions STATIC ${CMAKE_CURRENT_LIST_DIR}/FilterDescriptions.cpp ${CMAKE_CURRENT_LIST_DIR}/FilterDescriptions.h)
velmora_include_root(velmora-filter-descriptions PUBLIC)
target_link_libraries(
  velmora-filter-descriptions
  PUBLIC renderbackend
  PRIVATE velmora-common)
