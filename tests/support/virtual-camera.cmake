# The camera of the tour, the tests and the benchmarks; built where it is asked for.
add_executable(VirtualCamera EXCLUDE_FROM_ALL ${PROJECT_SOURCE_DIR}/tests/support/VirtualCamera.cpp)
target_link_libraries(VirtualCamera PRIVATE PkgConfig::PIPEWIRE PkgConfig::TURBOJPEG CurtainWarnings)
# It draws its frames when a program begins to use it, which must not take long.
target_compile_options(VirtualCamera PRIVATE -O2)
set_target_properties(VirtualCamera PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/support)
