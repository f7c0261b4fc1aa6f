# Embeds the GLSL stages of the filters as constant strings.
#
#   velmora_filter(Gles3BlitFilter8 VERTEX common FRAGMENT Gles3BlitFilter8)   names a filter class and its two stages
#   (TEMPLATE: a class template, which has a header only)
#   velmora_embed_glsl(target)                                                 embeds every stage named so far, once
#
# A stage STEM is filters/vertex/STEM.vert or filters/STEM.vert, and filters/STEM.frag. Includes are expanded by
# EmbedGlslStage.cmake. The expanded texts stay in the build folder for glslangValidator and for the tests.
set(VELMORA_GLSL_DIR ${PROJECT_BINARY_DIR}/glsl)
set_property(GLOBAL PROPERTY VELMORA_FILTER_SOURCES "")
set_property(GLOBAL PROPERTY VELMORA_GLSL_STAGES "")

function(velmora_filter class)
  cmake_parse_arguments(PARSE_ARGV 1 arg "TEMPLATE" "" "VERTEX;FRAGMENT")
  set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_SOURCES filters/${class}.h)
  if(NOT arg_TEMPLATE)
    set_property(GLOBAL APPEND PROPERTY VELMORA_FILTER_SOURCES filters/${class}.cpp)
  endif()
  foreach(stem IN LISTS arg_VERTEX)
    set_property(GLOBAL APPEND PROPERTY VELMORA_GLSL_STAGES ${stem}.vert)
  endforeach()
  foreach(stem IN LISTS arg_FRAGMENT)
    set_property(GLOBAL APPEND PROPERTY VELMORA_GLSL_STAGES ${stem}.frag)
  endforeach()
endfunction()

# Every file that SOURCE includes, directly or not.
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

function(velmora_embed_glsl target)
  get_property(sources GLOBAL PROPERTY VELMORA_FILTER_SOURCES)
  get_property(stages GLOBAL PROPERTY VELMORA_GLSL_STAGES)
  list(REMOVE_DUPLICATES stages)
  set_property(GLOBAL PROPERTY VELMORA_GLSL_STAGES ${stages})
  target_sources(${target} PRIVATE ${sources})

  set(folder ${CMAKE_CURRENT_SOURCE_DIR}/filters)
  set(declarations "")
  foreach(stage IN LISTS stages)
    if(EXISTS ${folder}/vertex/${stage})
      set(source ${folder}/vertex/${stage})
    else()
      set(source ${folder}/${stage})
    endif()
    string(REPLACE "." "_" name ${stage})
    velmora_glsl_includes(${source} ${folder} snippets)
    add_custom_command(
      OUTPUT ${VELMORA_GLSL_DIR}/${stage}.cpp ${VELMORA_GLSL_DIR}/${stage}
      COMMAND ${CMAKE_COMMAND} -DSOURCE=${source} -DROOT=${folder} -DNAME=${name} -DEXPANDED=${VELMORA_GLSL_DIR}/${stage}
              -DOUTPUT=${VELMORA_GLSL_DIR}/${stage}.cpp -P ${PROJECT_SOURCE_DIR}/cmake/EmbedGlslStage.cmake
      DEPENDS ${source} ${snippets} ${PROJECT_SOURCE_DIR}/cmake/EmbedGlslStage.cmake
              ${PROJECT_SOURCE_DIR}/cmake/GlslPrecision.cmake
      VERBATIM)
    target_sources(${target} PRIVATE ${VELMORA_GLSL_DIR}/${stage}.cpp)
    string(APPEND declarations "extern std::string const ${name};\n")
  endforeach()

  file(
    CONFIGURE
    OUTPUT ${VELMORA_GLSL_DIR}/GlslSources.h
    CONTENT
      "#pragma once\n// Written by cmake/EmbedGlsl.cmake: one constant text a GLSL stage, FILE.vert as FILE_vert.\n#include <string>\n\nnamespace glsl {\n${declarations}}\n"
    @ONLY)
  target_include_directories(${target} PRIVATE ${VELMORA_GLSL_DIR})
endfunction()
