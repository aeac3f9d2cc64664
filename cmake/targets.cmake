# merix_floor(<name> [LINK <libs>]): one floor of the host, all sources of the calling folder, as an object library
# `merix_<name>`. A floor sees what lies below it; nothing is linked until libmerix or a test gathers the objects.
function(merix_floor name)
    cmake_parse_arguments(ARG "" "" "LINK;PCH" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    add_library(merix_${name} OBJECT ${sources})
    target_link_libraries(merix_${name} PUBLIC merix_flags ${ARG_LINK})
    if(ARG_PCH)
        target_precompile_headers(merix_${name} PRIVATE ${ARG_PCH})
    endif()
endfunction()

# merix_test(<name> SOURCES <files> [LIBS <libs>] [ENV <VAR=value>] [SERIAL]): a GoogleTest program; every test in it is
# its own ctest test. Windows go to the offscreen platform. SERIAL tests run with no other beside them: sound is made
# in real time.
function(merix_test name)
    cmake_parse_arguments(ARG "SERIAL" "ENV" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE merix_flags ${ARG_LIBS} GTest::gmock GTest::gtest)
    if(NOT ARG_LIBS MATCHES "merix_testmain")
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
    endif()
    target_compile_definitions(${name} PRIVATE MERIX_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
                               MERIX_BINARY_DIR="${CMAKE_BINARY_DIR}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    # Values of test properties cannot be lists here, so that the second variable goes the other way.
    set(properties ENVIRONMENT QT_QPA_PLATFORM=offscreen)
    if(ARG_ENV)
        string(REPLACE "=" "=set:" modification "${ARG_ENV}")
        list(APPEND properties ENVIRONMENT_MODIFICATION ${modification})
    endif()
    if(ARG_SERIAL)
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
function(phonomark_test)
    merix_test(${ARGV})
endfunction()
