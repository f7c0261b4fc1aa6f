# For the test's own context.
find_package(PkgConfig REQUIRED)
pkg_check_modules(EGL REQUIRED IMPORTED_TARGET egl)
target_include_directories(viewer PRIVATE ${PROJECT})
target_link_libraries(viewer PRIVATE PkgConfig::EGL)
