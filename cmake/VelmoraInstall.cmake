# The files of `cmake --install`, and how a host finds them: find_package(velmora) and pkg-config, from the install tree
# and from the build tree. Every path is relative to the package files, so the tree can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(VELMORA_LIBRARIES renderbackend gles3renderbackend gles3renderbackend-internal)

# The public headers. Those of the filter classes come from the list of filters.
set(VELMORA_HEADERS
    renderbackend/Canvas.h
    renderbackend/ConcurrentStagingBuffer.h
    renderbackend/DataEnvelopes.h
    renderbackend/Export.h
    renderbackend/Filter.h
    renderbackend/FilterParameters.h
    renderbackend/FilterSource.h
    renderbackend/GenericMultiFactory.h
    renderbackend/RenderBackend.h
    renderbackend/RenderBackendInstance.h
    renderbackend/RenderContext.h
    renderbackend/SingleFilterParameters.h
    renderbackend/VelmoraException.h
    gles3renderbackend/Gl.h
    gles3renderbackend/Gles3ConcurrentStagingBuffer.h
    gles3renderbackend/Gles3DataEnvelopes.h
    gles3renderbackend/Gles3RenderBackend.h
    gles3renderbackend/Gles3RenderBackendInstance.h
    gles3renderbackend/Gles3SharedResources.h
    gles3renderbackend/LruMap.h
    gles3renderbackend/filters/LookupTexture.h
    gles3renderbackend/resources/GlName.h
    gles3renderbackend/resources/Gles3Buffer.h
    gles3renderbackend/resources/Gles3Pbo.h
    gles3renderbackend/resources/Gles3Shader.h
    gles3renderbackend/resources/Gles3Target.h
    gles3renderbackend/resources/Gles3Texture.h)
get_property(filterSources GLOBAL PROPERTY VELMORA_FILTER_SOURCES)
list(FILTER filterSources INCLUDE REGEX "\\.h$")
list(TRANSFORM filterSources PREPEND gles3renderbackend/)
list(APPEND VELMORA_HEADERS ${filterSources})

foreach(header IN LISTS VELMORA_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

# Installed files find one another wherever the prefix is moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE libFromBin)
set_target_properties(gles3renderbackend PROPERTIES INSTALL_RPATH "$ORIGIN")
install(
  TARGETS ${VELMORA_LIBRARIES}
  EXPORT velmora
  INCLUDES
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET velmora)
  set_target_properties(velmora PROPERTIES INSTALL_RPATH "$ORIGIN/${libFromBin}")
  install(TARGETS velmora)
endif()

# find_package
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/velmora)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/velmora-config.cmake.in ${PROJECT_BINARY_DIR}/velmora-config.cmake
  INSTALL_DESTINATION ${packageDir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velmora-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velmora-config.cmake ${PROJECT_BINARY_DIR}/velmora-config-version.cmake
        DESTINATION ${packageDir})
install(
  EXPORT velmora
  NAMESPACE velmora::
  FILE velmora-targets.cmake
  DESTINATION ${packageDir})
# Without the static library, whose build depends on targets of this project.
export(
  TARGETS renderbackend gles3renderbackend
  NAMESPACE velmora::
  FILE ${PROJECT_BINARY_DIR}/velmora-targets.cmake)

# pkg-config. In the build tree the files have the suffix that makes pkg-config prefer them:
# PKG_CONFIG_PATH=build/pkgconfig
set(pcDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE
           prefixFromPc)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE libFromPrefix)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE
           includeFromPrefix)
# A blank would end a flag; ${pcfiledir} is escaped by pkg-config.
string(REPLACE " " "\\ " pcSource ${PROJECT_SOURCE_DIR})
string(REPLACE " " "\\ " pcBuild ${PROJECT_BINARY_DIR})
foreach(package velmora velmora-renderbackend)
  set(PC_PREFIX "\${pcfiledir}/${prefixFromPc}")
  set(PC_INCLUDE "\${prefix}/${includeFromPrefix}")
  set(PC_GLES3RENDERBACKEND "\${prefix}/${libFromPrefix}")
  set(PC_RENDERBACKEND "\${prefix}/${libFromPrefix}")
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${pcDir})

  set(PC_PREFIX ${pcSource})
  set(PC_INCLUDE ${pcSource})
  set(PC_GLES3RENDERBACKEND ${pcBuild}/gles3renderbackend)
  set(PC_RENDERBACKEND ${pcBuild}/renderbackend)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${package}-uninstalled.pc @ONLY)
endforeach()
