# What counts the pixels of private windows in captured pictures; for the tests and for the benchmarks.
if(NOT TARGET LeakMeter)
    pkg_check_modules(XCB_SHM REQUIRED IMPORTED_TARGET xcb-shm)
    add_executable(LeakMeter ${PROJECT_SOURCE_DIR}/tests/support/LeakMeter.cpp)
    target_link_libraries(LeakMeter PRIVATE CurtainPlatform PkgConfig::XCB PkgConfig::XCB_SHM CurtainWarnings)
    # It has a sixtieth of a second for each picture.
    target_compile_options(LeakMeter PRIVATE -O2)
    add_executable(PaintedProgram ${PROJECT_SOURCE_DIR}/tests/support/PaintedProgram.cpp)
    target_link_libraries(PaintedProgram PRIVATE CurtainPlatform PkgConfig::XCB CurtainWarnings)
    set_target_properties(LeakMeter PaintedProgram PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/support)
endif()
