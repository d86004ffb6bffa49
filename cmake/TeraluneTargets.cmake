# What every target of the house has in common: language level, warnings, sanitizer, include root.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(TERALUNE_SANITIZER "" CACHE STRING "Sanitizers for every target, such as address,undefined or thread")

find_program(TERALUNE_CCACHE ccache)
if(TERALUNE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${TERALUNE_CCACHE}")
endif()

add_library(TeraluneOptions INTERFACE)
target_compile_options(TeraluneOptions INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # At -O2 and above GCC 12 sees overlapping copies where a text is put together with + (its bug 105651), and
    # members of an empty std::variant or std::optional that are read before they are set.
    target_compile_options(TeraluneOptions INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(TERALUNE_SANITIZER)
    target_compile_options(TeraluneOptions INTERFACE -fsanitize=${TERALUNE_SANITIZER} -fno-omit-frame-pointer)
    target_link_options(TeraluneOptions INTERFACE -fsanitize=${TERALUNE_SANITIZER})
    if(TERALUNE_SANITIZER MATCHES "undefined")
        target_compile_options(TeraluneOptions INTERFACE -fno-sanitize-recover=all)
    endif()
    if(TERALUNE_SANITIZER MATCHES "thread")
        # GCC warns that the thread sanitizer does not model the fences inside Boost.Asio.
        target_compile_options(TeraluneOptions INTERFACE -Wno-tsan)
    endif()
endif()

find_program(TERALUNE_MOLD mold)
if(TERALUNE_MOLD)
    target_link_options(TeraluneOptions INTERFACE -fuse-ld=mold)
endif()

# Includes are written from the root: #include "Classes/Networking/Networking.h".
function(teralune_target NAME)
    target_link_libraries(${NAME} PRIVATE $<BUILD_INTERFACE:TeraluneOptions>)
    target_compile_features(${NAME} PUBLIC cxx_std_20)
    target_include_directories(${NAME} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/TeraluneSharedLibrary>")
endfunction()

# One test program: teralune_test(NAME SOURCES a.cpp … LIBRARIES Teralune::Platform …)
function(teralune_test NAME)
    cmake_parse_arguments(TEST "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${NAME} ${TEST_SOURCES})
    teralune_target(${NAME})
    target_link_libraries(${NAME} PRIVATE ${TEST_LIBRARIES} GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${NAME} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
