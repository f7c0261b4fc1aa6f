# The EGL context of the program and of the tests: a library of its own, so that a test of GL code needs nothing else of the host.
find_path(VELMORA_EGL_INCLUDE NAMES EGL/egl.h REQUIRED)

add_library(velmora-egl STATIC ${CMAKE_CURRENT_LIST_DIR}/EglContext.cpp ${CMAKE_CURRENT_LIST_DIR}/EglContext.h)
velmora_include_root(velmora-egl PUBLIC)
target_link_libraries(velmora-egl PRIVATE velmora-common EGL)
target_include_directories(velmora-egl SYSTEM PRIVATE ${VELMORA_EGL_INCLUDE})
