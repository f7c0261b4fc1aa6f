# The GL implementations that the tests run on, each chosen by the environment of the process alone.
#
#   velmora_add_gl_test(name COMMAND program argument... [WITHOUT_CASES] [PROPERTIES key value...])
#
# registers the command once per implementation, as name/llvmpipe, name/softpipe, name/zink and name/angle. A missing
# implementation fails its tests under VELMORA_REQUIRE_GL=1 and skips them otherwise; a silent fallback to another one
# counts as missing. WITHOUT_CASES: the program has no GoogleTest cases and fails by its exit code alone.
velmora_fetched_folder(VELMORA_ANGLE_DIR angle "Where scripts/fetch-angle unpacked ANGLE")

# lavapipe, Mesa's Vulkan driver on the processor; its description carries the machine's architecture in its name.
set(lavapipe lvp_icd.json)
if(CMAKE_SYSTEM_PROCESSOR)
  list(PREPEND lavapipe lvp_icd.${CMAKE_SYSTEM_PROCESSOR}.json)
endif()
find_file(
  VELMORA_LAVAPIPE_ICD
  NAMES ${lavapipe}
  PATHS /usr/share /usr/local/share /etc
  PATH_SUFFIXES vulkan/icd.d
  DOC "Description of the Vulkan driver lavapipe")
if(NOT VELMORA_LAVAPIPE_ICD)
  # A name that does not exist: zink then finds no Vulkan driver, instead of some other one.
  set(lavapipe_icd lavapipe-not-found.json)
else()
  set(lavapipe_icd ${VELMORA_LAVAPIPE_ICD})
endif()

set(VELMORA_GL_IMPLEMENTATIONS llvmpipe softpipe zink angle)
set(VELMORA_GL_ENVIRONMENT_llvmpipe LIBGL_ALWAYS_SOFTWARE=set:1 GALLIUM_DRIVER=set:llvmpipe VELMORA_EXPECT_RENDERER=set:llvmpipe*)
set(VELMORA_GL_ENVIRONMENT_softpipe LIBGL_ALWAYS_SOFTWARE=set:1 GALLIUM_DRIVER=set:softpipe VELMORA_EXPECT_RENDERER=set:softpipe*)
# lavapipe complains on stderr without XDG_RUNTIME_DIR.
set(VELMORA_GL_ENVIRONMENT_zink LIBGL_ALWAYS_SOFTWARE=set:1 GALLIUM_DRIVER=set:zink VK_ICD_FILENAMES=set:${lavapipe_icd}
                                XDG_RUNTIME_DIR=set:${PROJECT_BINARY_DIR} VELMORA_EXPECT_RENDERER=set:zink*llvmpipe*
                                # lavapipe now and then leaks 48 bytes at exit, and more after 500 draws in a batch.
                                # Leaks of ours show on the other three.
                                ASAN_OPTIONS=string_append::detect_leaks=0)
set(VELMORA_GL_ENVIRONMENT_angle LD_LIBRARY_PATH=path_list_prepend:${VELMORA_ANGLE_DIR} VELMORA_EXPECT_RENDERER=set:ANGLE*SwiftShader*)

# The programs of the test preset release-drawing.
add_custom_target(velmora-drawing-tests)
add_dependencies(velmora-drawing-tests velmora-require-gl)

function(velmora_add_gl_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WITHOUT_CASES" "" "COMMAND;PROPERTIES")
  list(POP_FRONT arg_COMMAND program)
  if(TARGET ${program})
    add_dependencies(velmora-drawing-tests ${program})
    set(program $<TARGET_FILE:${program}>)
  endif()
  foreach(implementation IN LISTS VELMORA_GL_IMPLEMENTATIONS)
    set(test ${name}/${implementation})
    add_test(NAME ${test} COMMAND velmora-require-gl ${program} ${arg_COMMAND})
    set_tests_properties(
      ${test}
      PROPERTIES ENVIRONMENT_MODIFICATION "${VELMORA_GL_ENVIRONMENT_${implementation}}"
                 SKIP_RETURN_CODE 77
                 LABELS "gl;${implementation}")
    if(arg_PROPERTIES)
      set_tests_properties(${test} PROPERTIES ${arg_PROPERTIES})
    endif()
    if(NOT arg_WITHOUT_CASES)
      velmora_keep_results(${test})
    endif()
  endforeach()
endfunction()
