# Every GLSL stage as drivers get it, through Khronos' reference compiler. Only this test needs the compiler, so a
# missing one does not stop the build.
find_program(VELMORA_GLSLANG glslangValidator)
get_property(stages GLOBAL PROPERTY VELMORA_GLSL_STAGES)
list(TRANSFORM stages PREPEND ${VELMORA_GLSL_DIR}/)

if(VELMORA_GLSLANG)
  add_test(NAME glsl COMMAND ${VELMORA_GLSLANG} ${stages})
else()
  add_test(NAME glsl COMMAND sh -c "echo 'glslangValidator is not installed'; [ \"$VELMORA_REQUIRE_GL\" = 1 ] && exit 1; exit 77")
  set_tests_properties(glsl PROPERTIES SKIP_RETURN_CODE 77)
endif()
set_tests_properties(glsl PROPERTIES TIMEOUT 60)

# The reference compiler does not check the words that keep numbers exact.
get_property(stages GLOBAL PROPERTY VELMORA_GLSL_STAGES)
list(JOIN stages "," stages)
add_test(
  NAME glsl-precision
  COMMAND ${CMAKE_COMMAND} -DFOLDER=${VELMORA_GLSL_DIR} -DSTAGES=${stages}
          -DEMBED=${PROJECT_SOURCE_DIR}/cmake/EmbedGlslStage.cmake -DWORK=${CMAKE_CURRENT_BINARY_DIR}/glslPrecision -P
          ${CMAKE_CURRENT_LIST_DIR}/glslPrecision.cmake)
set_tests_properties(glsl-precision PROPERTIES TIMEOUT 120)
