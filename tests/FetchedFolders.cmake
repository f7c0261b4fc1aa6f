# velmora_fetched_folder(VARIABLE NAME DOC): the cache variable for a folder that a script of scripts/ fills. Its
# default is the environment variable of the same name at the first configuration, as for the script, or build/NAME.
function(velmora_fetched_folder variable name doc)
  set(folder $ENV{${variable}})
  if(NOT folder)
    set(folder ${PROJECT_BINARY_DIR}/../${name})
  endif()
  cmake_path(ABSOLUTE_PATH folder NORMALIZE)
  set(${variable}
      ${folder}
      CACHE PATH ${doc})
endfunction()
