# Language level, warnings and where things are put; the same for every target.
option(BUILD_TESTING "Build the tests" ON)
option(MERIX_BENCH "Build the benchmarks" OFF)
set(MERIX_SANITIZE "" CACHE STRING "Sanitizers, comma-separated (address,undefined or thread)")
option(MERIX_COVERAGE "Instrument for coverage" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# Everything that runs lies in one folder, as it does when installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Paths below the tree count as relative, so that another checkout of it finds what this one compiled.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                    ${CCACHE})
endif()

add_library(merix_flags INTERFACE)
target_include_directories(merix_flags INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(merix_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
                       -Woverloaded-virtual -Werror -fno-math-errno)
target_compile_definitions(merix_flags INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_FOREACH
                           MERIX_VERSION="${PROJECT_VERSION}")
if(MERIX_SANITIZE)
    add_compile_options(-fsanitize=${MERIX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${MERIX_SANITIZE})
endif()
if(MERIX_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()
