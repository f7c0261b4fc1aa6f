# velmora_keep_results(TEST...): writes the results of the GoogleTest cases of a test's program into a file of the
# test's own, results/TEST.xml in the build folder. scripts/run-tests counts them, and fails a program without such a
# file.
function(velmora_keep_results)
  foreach(test IN LISTS ARGN)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT_MODIFICATION
                                              "GTEST_OUTPUT=set:xml:${PROJECT_BINARY_DIR}/results/${test}.xml")
  endforeach()
endfunction()
