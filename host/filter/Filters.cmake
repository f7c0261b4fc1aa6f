# The built-in filters described and run: a library of its own, which needs nothing but the host-neutral model.
set(files
    FilterDescriptions.cpp
    FilterDescriptions.h
    FilterRunner.cpp
    FilterRunner.h
    OwnedFilter.cpp
    OwnedFilter.h
    OwnedTarget.cpp
    OwnedTarget.h
    SampleLayout.cpp
    SampleLayout.h
    ScratchTile.cpp
    ScratchTile.h
    StagedTile.cpp
    StagedTile.h
    TileNumbers.cpp
    TileNumbers.h)
list(TRANSFORM files PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

add_library(velmora-filters STATIC ${files})
velmora_include_root(velmora-filters PUBLIC)
target_link_libraries(
  velmora-filters
  PUBLIC renderbackend
  PRIVATE velmora-common)
