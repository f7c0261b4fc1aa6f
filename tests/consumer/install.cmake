# cmake -DSOURCE=... -DBUILD=... -DSTAGING=... -DPREFIX=... -P install.cmake: installs to STAGING, then moves the tree to
# PREFIX. No package file may name the places that it came from.
file(REMOVE_RECURSE ${STAGING} ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGING} COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${STAGING} ${PREFIX})

file(GLOB_RECURSE texts ${PREFIX}/*.cmake ${PREFIX}/*.pc)
foreach(text IN LISTS texts)
  file(READ ${text} content)
  foreach(place ${SOURCE} ${BUILD} ${STAGING})
    string(FIND "${content}" ${place} at)
    if(NOT at EQUAL -1)
      message(FATAL_ERROR "${text} names ${place}: the tree cannot be moved")
    endif()
  endforeach()
endforeach()
