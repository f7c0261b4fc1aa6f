# The EGL context of the program and of the tests: a library of its own, so that a test of GL code needs nothing else of the host.
find_package(PkgConfig REQUIRED)
pkg_check_modules(VELMORA_EGL REQUIRED IMPORTED_TARGET GLOBAL egl)

add_library(velmora-egl STATIC ${CMAKE_CURRENT_LIST_DIR}/EglContext.cpp ${CMAKE_CURRENT_LIST_DIR}/EglContext.h)
velmora_include_root(velmora-egl PUBLIC)
target_link_libraries(velmora-egl PRIVATE velmora-common PkgConfig::VELMORA_EGL)
