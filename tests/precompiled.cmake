# The command line's header, of which each command needs the whole.
if(TARGET velmora-commands)
  target_precompile_headers(velmora-commands PRIVATE <CLI/CLI.hpp>)
endif()

# One precompiled header for the programs of the tests: what nearly every case includes, GoogleTest's header first, takes longer
# to compile than the case. It is compiled for the program with the fewest macros: gcc lets others have more. Without the option
# VELMORA_PRECOMPILED an include that is missing shows.
target_precompile_headers(
  velmora-reference-tests
  PRIVATE
  <gtest/gtest.h>
  <algorithm>
  <chrono>
  <cmath>
  <filesystem>
  <fstream>
  <functional>
  <map>
  <memory>
  <optional>
  <random>
  <set>
  <sstream>
  <string>
  <thread>
  <vector>)

function(velmora_precompile folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    # Fuzz targets are compiled with libFuzzer's counters.
    if(type STREQUAL "EXECUTABLE" AND libraries MATCHES "GTest::" AND NOT target MATCHES "^velmora-fuzz-")
      # Some libraries ask for it, and one header serves only what is compiled alike.
      target_compile_options(${target} PRIVATE -pthread)
      if(NOT target STREQUAL "velmora-reference-tests")
        target_precompile_headers(${target} REUSE_FROM velmora-reference-tests)
      endif()
    endif()
  endforeach()
  get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder IN LISTS subfolders)
    velmora_precompile(${subfolder})
  endforeach()
endfunction()
velmora_precompile(${CMAKE_CURRENT_SOURCE_DIR})
