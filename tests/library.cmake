# The libraries and their tests, the preset library, configure on a machine that has none of the host's packages.
set(without "")
foreach(package CLI11 JPEG PNG PkgConfig SQLite3 TIFF ZLIB benchmark nlohmann_json)
  list(APPEND without -DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON)
endforeach()
add_test(
  NAME library/configure
  COMMAND ${CMAKE_COMMAND} --fresh -S ${PROJECT_SOURCE_DIR} --preset library -B ${CMAKE_CURRENT_BINARY_DIR}/library
          -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} ${without})
set_tests_properties(library/configure PROPERTIES TIMEOUT 120)
