# Properties of every target of this repository: language level, warnings, hidden symbols, include root.
add_library(velmora-common INTERFACE)
target_compile_features(velmora-common INTERFACE cxx_std_17)
target_compile_options(
  velmora-common
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wold-style-cast
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wundef
            -Wformat=2
            # Part of -Wall with clang, and not with gcc, in C++.
            $<$<CXX_COMPILER_ID:Clang>:-Wno-missing-braces>
            $<$<BOOL:${VELMORA_WERROR}>:-Werror>)
target_compile_definitions(velmora-common INTERFACE $<$<BOOL:${VELMORA_CHECKED}>:VELMORA_CHECKED=1>)

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Of shared libraries. Those of the fuzz targets find clang's sanitizers in the program that loads them.
set(VELMORA_NO_UNDEFINED LINKER:--no-undefined)
if(VELMORA_BUILD_FUZZ)
  set(VELMORA_NO_UNDEFINED "")
endif()

# Paths in includes start at the repository root, or at include/ once installed.
function(velmora_include_root target scope)
  target_include_directories(${target} ${scope} $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:include>)
endfunction()
