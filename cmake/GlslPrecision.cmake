# velmora_glsl_without_highp(text out)
#
# The first line of a stage's text, includes expanded, that declares a number, a vector, a matrix or a sampler without
# the word highp: variables of every kind, parameters and results. Empty if there is none.
#
# The defaults without it, the fragment stage's stated precision and lowp for samplers, may be 16-bit floats. Few
# drivers use these, so no test of results would find a missing word.
set(velmora_glsl_types "float|int|ivec[234]|vec[234]|mat[234]|sampler2D|samplerCube")

function(velmora_glsl_without_highp text out)
  set(${out} "" PARENT_SCOPE)
  # The stage's precision is stated once, in its second line.
  string(REGEX REPLACE "^(#version 100\n)precision (lowp|mediump|highp) float;\n" "\\1" rest "${text}")
  # Square brackets and semicolons have a meaning in CMake lists: line by line in one string.
  while(NOT rest STREQUAL "")
    string(FIND "${rest}" "\n" end)
    math(EXPR next "${end} + 1")
    string(SUBSTRING "${rest}" 0 ${end} line)
    string(SUBSTRING "${rest}" ${next} -1 rest)
    string(REGEX REPLACE "//.*" "" code " ${line} ")
    string(REGEX REPLACE "[^A-Za-z0-9_]highp +(${velmora_glsl_types})([^A-Za-z0-9_])" " \\2" code "${code} ")
    # A type before a bracket is a constructor: its result is as precise as its arguments.
    string(REGEX REPLACE "[^A-Za-z0-9_](${velmora_glsl_types}) *\\(" " (" code "${code}")
    if(code MATCHES "[^A-Za-z0-9_](${velmora_glsl_types}|precision)[^A-Za-z0-9_]" OR code MATCHES "/\\*")
      set(${out} "${line}" PARENT_SCOPE)
      return()
    endif()
  endwhile()
endfunction()
