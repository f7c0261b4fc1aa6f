# The filters: their classes, their names and their GLSL stages, which are embedded as constant strings.
#
#   velmora_filter(Gles3BlitFilter8 NAMES BlitFilter3x8 BlitFilter4x8)   a class, and the names that make it
#     STAGES copy   uses copy.vert or copy.frag if filters/ has no Gles3BlitFilter8.vert or no .frag
#     TEMPLATE      a class template, which has a header only
#
# A class without a .cpp defines nothing but its constructor, which passes the two stages on: it is generated.
#
#   velmora_add_filters(target)   adds the classes, the stages and the registry of all filters named so far
#
# The global properties VELMORA_FILTER_NAMES and VELMORA_GLSL_STAGES are the names and all embedded stages, for the tests.
#
# Includes of stages are expanded by EmbedGlslStage.cmake. The expanded texts stay in the build folder for glslangValidator
# and for the tests.
set(VELMORA_GLSL_DIR ${PROJECT_BINARY_DIR}/glsl)
set_property(GLOBAL PROPERTY VELMORA_FILTER_SOURCES "")
set_property(GLOBAL PROPERTY VELMORA_FILTER_INCLUDES "")
set_property(GLOBAL PROPERTY VELMORA_FILTER_NAMES "")
set_property(GLOBAL PROPERTY VELMORA_FILTER_REGISTRATIONS "")
set_property(GLOBAL PROPERTY VELMORA_FILTER_STAGES "")
set_property(GLOBAL PROPERTY VELMORA_GLSL_STAGES "")

# The first of the names that has such a stage in filters/.
function(velmora_filter_stage out extension)
  foreach(stem IN LISTS ARGN)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/filters/${stem}.${extension})
      set(${out} ${stem}_${extension} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  list(GET ARGN 0 class)
  message(FATAL_ERROR "filters/${class}.${extension} is not there: add it, or STAGES copy to its velmora_filter line")
endfunction()

function(velmora_filter_constructor class)
  velmora_filter_stage(vertex vert ${class} ${ARGN})
  velmora_filter_stage(fragment frag ${class} ${ARGN})
  set(source ${PROJECT_BINARY_DIR}/gles3renderbackend/filters/${class}.cpp)
  file(
    CONFIGURE
    OUTPUT ${source}
    CONTENT
      "// Written by cmake/Filters.cmake.\n#include \"gles3renderbackend/filters/${class}.h\"\n\n#include \"GlslSources.h\"\n\n${class}::${class}(Filter& filter) : Gles3Shader(glsl::${vertex}, glsl::${fragment}, filter) {}\n"
    @ONLY)
  set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_SOURCES ${source})
endfunction()

function(velmora_filter class)
  cmake_parse_arguments(PARSE_ARGV 1 arg "TEMPLATE" "" "NAMES;STAGES")
  set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_SOURCES filters/${class}.h)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/filters/${class}.cpp)
    set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_SOURCES filters/${class}.cpp)
  elseif(NOT arg_TEMPLATE)
    velmora_filter_constructor(${class} ${arg_STAGES})
  endif()
  if(arg_NAMES)
    set_property(GLOBAL APPEND_STRING PROPERTY VELMORA_FILTER_INCLUDES "#include \"gles3renderbackend/filters/${class}.h\"\n")
  endif()
  foreach(name IN LISTS arg_NAMES)
    set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_NAMES ${name})
    set_property(GLOBAL APPEND_STRING PROPERTY VELMORA_FILTER_REGISTRATIONS
                        "    add<${class}>(registry, \"${name}\");\n")
  endforeach()
  foreach(stem IN LISTS class arg_STAGES)
    foreach(stage ${stem}.vert ${stem}.frag)
      if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/filters/${stage})
        set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_STAGES ${stage})
      endif()
    endforeach()
  endforeach()
endfunction()

# Every file that SOURCE includes, directly or indirectly.
function(velmora_glsl_includes source root out)
  set(found "")
  file(STRINGS ${source} lines REGEX "^#include ")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^#include \"(.*)\"$" "${root}/\\1" file ${line})
    velmora_glsl_includes(${file} ${root} deeper)
    list(APPEND found ${file} ${deeper})
  endforeach()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# velmora_embed_stages(TARGET HEADER FILE...): GLSL stages as constant texts of a target, whose sources include HEADER for
# them: FOLDER/x.vert is glsl::x_vert. What they include lies in gles3renderbackend/filters.
function(velmora_embed_stages target header)
  set(root ${PROJECT_SOURCE_DIR}/gles3renderbackend/filters)
  set(declarations "")
  foreach(source IN LISTS ARGN)
    cmake_path(GET source FILENAME stage)
    string(REPLACE "." "_" name ${stage})
    velmora_glsl_includes(${source} ${root} snippets)
    add_custom_command(
      OUTPUT ${VELMORA_GLSL_DIR}/${stage}.cpp ${VELMORA_GLSL_DIR}/${stage}
      COMMAND ${CMAKE_COMMAND} -DSOURCE=${source} -DROOT=${root} -DNAME=${name} -DHEADER=${header}
              -DEXPANDED=${VELMORA_GLSL_DIR}/${stage} -DOUTPUT=${VELMORA_GLSL_DIR}/${stage}.cpp -P
              ${PROJECT_SOURCE_DIR}/cmake/EmbedGlslStage.cmake
      DEPENDS ${source} ${snippets} ${PROJECT_SOURCE_DIR}/cmake/EmbedGlslStage.cmake
              ${PROJECT_SOURCE_DIR}/cmake/GlslPrecision.cmake
      VERBATIM)
    target_sources(${target} PRIVATE ${VELMORA_GLSL_DIR}/${stage}.cpp)
    string(APPEND declarations "extern std::string const ${name};\n")
    set_property(GLOBAL APPEND PROPERTY VELMORA_GLSL_STAGES ${stage})
  endforeach()

  file(
    CONFIGURE
    OUTPUT ${VELMORA_GLSL_DIR}/${header}
    CONTENT
      "#pragma once\n// Written by cmake/Filters.cmake: one constant text per GLSL stage, FILE.vert as FILE_vert.\n#include <string>\n\nnamespace glsl {\n${declarations}}\n"
    @ONLY)
  target_include_directories(${target} PRIVATE ${VELMORA_GLSL_DIR})
endfunction()

function(velmora_add_filters target)
  get_property(sources GLOBAL PROPERTY VELMORA_FILTER_SOURCES)
  get_property(stages GLOBAL PROPERTY VELMORA_FILTER_STAGES)
  list(REMOVE_DUPLICATES stages)
  list(TRANSFORM stages PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/filters/)
  target_sources(${target} PRIVATE ${sources})
  velmora_embed_stages(${target} GlslSources.h ${stages})

  get_property(VELMORA_FILTER_INCLUDES GLOBAL PROPERTY VELMORA_FILTER_INCLUDES)
  get_property(VELMORA_FILTER_REGISTRATIONS GLOBAL PROPERTY VELMORA_FILTER_REGISTRATIONS)
  set(registry ${PROJECT_BINARY_DIR}/gles3renderbackend/FilterRegistry.cpp)
  configure_file(FilterRegistry.cpp.in ${registry} @ONLY)
  target_sources(${target} PRIVATE ${registry})
endfunction()
