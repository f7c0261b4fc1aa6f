# Dear ImGui, and its drawing on OpenGL ES 3. The package's library draws on desktop OpenGL only; the source of its backend
# comes with the package's examples. Built without our warnings: it is not ours.
find_package(PkgConfig REQUIRED)
pkg_check_modules(VELMORA_IMGUI REQUIRED IMPORTED_TARGET imgui)

find_path(
  VELMORA_IMGUI_BACKENDS
  NAMES imgui_impl_opengl3.cpp
  PATHS /usr/share/doc/libimgui-dev/examples /usr/share/imgui
  PATH_SUFFIXES backends
  DOC "Sources of Dear ImGui's backends")
if(NOT VELMORA_IMGUI_BACKENDS)
  message(
    FATAL_ERROR
      "imgui_impl_opengl3.cpp is missing: this system leaves out what packages bring as documentation. "
      "apt-get install --reinstall -o Dpkg::Options::=--path-include='/usr/share/doc/libimgui-dev/*' libimgui-dev")
endif()

add_library(velmora-imgui STATIC ${VELMORA_IMGUI_BACKENDS}/imgui_impl_opengl3.cpp)
target_compile_definitions(velmora-imgui PRIVATE IMGUI_IMPL_OPENGL_ES3)
target_include_directories(velmora-imgui SYSTEM PRIVATE ${VELMORA_GLES3_INCLUDE})
pkg_get_variable(VELMORA_IMGUI_HEADERS imgui includedir)
target_include_directories(velmora-imgui SYSTEM PRIVATE ${VELMORA_IMGUI_HEADERS}/backends)
target_link_libraries(velmora-imgui PUBLIC PkgConfig::VELMORA_IMGUI PRIVATE GLESv2)
