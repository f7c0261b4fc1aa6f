# velmora_keep_results(TEST...): the results of the GoogleTest cases that a test's program runs go into a file of the test's
# own, results/TEST.xml in the build folder. scripts/run-tests counts them, and fails a program that leaves none.
function(velmora_keep_results)
  foreach(test IN LISTS ARGN)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT_MODIFICATION
                                              "GTEST_OUTPUT=set:xml:${PROJECT_BINARY_DIR}/results/${test}.xml")
  endforeach()
endfunction()
