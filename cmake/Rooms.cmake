# Two ways to a short clean build, which g++ takes. Clang's build (make analyze) compiles each file by
# itself and so finds one that leans on another's includes or names; only clang-tidy, which spends
# its time on headers, sees files joined too.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    option(TANDREL_PRECOMPILE "Parse the commonest headers once" ON)
    option(TANDREL_JOIN "Compile the files of a room a few at a time" ON)
endif()
set(TANDREL_SOURCES_TOGETHER 8 CACHE STRING "How many files of a room are compiled at a time")
set(TANDREL_TESTS_TOGETHER 6)

# What nearly every file reads.
set(TANDREL_COMMON_HEADERS
    <algorithm> <array> <atomic> <chrono> <cmath> <condition_variable> <cstdint> <filesystem>
    <functional> <map> <memory> <mutex> <optional> <span> <stop_token> <string> <string_view>
    <thread> <utility> <vector> <fmt/format.h> <nlohmann/json.hpp>)
set(TANDREL_TEST_HEADERS <gmock/gmock.h> <gtest/gtest.h>)

# Gives `target` the precompiled headers of `owner`, which is compiled with the same options, or its
# own if it is the owner.
function(tandrel_precompiled target owner)
    if(NOT TANDREL_PRECOMPILE)
        return()
    endif()
    target_compile_options(${target} PRIVATE -fpch-preprocess)  # for ccache
    if(target STREQUAL owner)
        target_precompile_headers(${target} PRIVATE ${TANDREL_COMMON_HEADERS} ${ARGN})
    else()
        target_precompile_headers(${target} REUSE_FROM ${owner})
    endif()
endfunction()

# Compiles `target` so many files at a time. A local name may then be another file's, which each
# file by itself, as clang compiles it, shows.
function(tandrel_joined target together)
    if(NOT TANDREL_JOIN)
        return()
    endif()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${together})
    target_compile_options(${target} PRIVATE -Wno-shadow)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
endfunction()

# A room is one folder of src/ and one static library; it links only rooms on lower floors.
#   tandrel_room(hid DEPS base platform)
# The folder's *.cpp files are its sources. A room without sources yet is header-only.
function(tandrel_room name)
    cmake_parse_arguments(ROOM "" "" "DEPS;LIBS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    list(TRANSFORM ROOM_DEPS PREPEND tandrel_)
    if(sources)
        add_library(tandrel_${name} STATIC ${sources})
        set(scope PUBLIC)
    else()
        add_library(tandrel_${name} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_include_directories(tandrel_${name} ${scope} ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(tandrel_${name} ${scope} ${ROOM_DEPS} ${ROOM_LIBS})
    if(NOT sources)
        return()
    endif()
    tandrel_joined(tandrel_${name} ${TANDREL_SOURCES_TOGETHER})
    # Qt wants position-independent code, which other options' precompiled headers do not fit.
    if(ROOM_LIBS MATCHES "Qt6")
        tandrel_precompiled(tandrel_${name} tandrel_${name})
    else()
        tandrel_precompiled(tandrel_${name} tandrel_base)
    endif()
endfunction()

# One test program a room, made of tests/<folder>/*_test.cpp.
#   tandrel_tests(hid DEPS hid virtual)
# SHARDS runs it as so many processes side by side: for tests that mostly wait for a phone.
function(tandrel_tests name)
    cmake_parse_arguments(ROOM "" "SHARDS" "DEPS;LIBS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(NOT sources)
        return()
    endif()
    list(TRANSFORM ROOM_DEPS PREPEND tandrel_)
    add_executable(test_${name} ${sources})
    target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(test_${name} PRIVATE ${ROOM_DEPS} ${ROOM_LIBS} tandrel_test_support)
    target_compile_definitions(test_${name} PRIVATE
        TANDREL_SOURCE_DIR="${CMAKE_SOURCE_DIR}" TANDREL_BIN_DIR="${CMAKE_BINARY_DIR}/bin")
    # What a test itself computes is little; most of a test build's time would go into optimising it.
    target_compile_options(test_${name} PRIVATE -O0)
    if(ROOM_DEPS MATCHES "tandrel_app")
        tandrel_precompiled(test_${name} test_${name} ${TANDREL_TEST_HEADERS})
    else()
        tandrel_precompiled(test_${name} tandrel_test_support)
    endif()
    tandrel_joined(test_${name} ${TANDREL_TESTS_TOGETHER})
    if(NOT ROOM_SHARDS)
        set(ROOM_SHARDS 1)
    endif()
    set(seconds 300)
    if(TANDREL_SANITIZE)
        set(seconds 1500)
    endif()
    foreach(shard RANGE 1 ${ROOM_SHARDS})
        set(test ${name})
        if(ROOM_SHARDS GREATER 1)
            set(test ${name}_${shard})
        endif()
        math(EXPR index "${shard} - 1")
        add_test(NAME ${test} COMMAND test_${name} --gtest_brief=1)
        set_tests_properties(${test} PROPERTIES TIMEOUT ${seconds} ENVIRONMENT
            "GTEST_TOTAL_SHARDS=${ROOM_SHARDS};GTEST_SHARD_INDEX=${index}")
    endforeach()
endfunction()

# One benchmark program a room, made of bench/<room>/*.cpp (Google Benchmark; it has its own main).
function(tandrel_bench name)
    cmake_parse_arguments(ROOM "" "" "DEPS;LIBS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    list(TRANSFORM ROOM_DEPS PREPEND tandrel_)
    add_executable(bench_${name} ${sources})
    target_link_libraries(bench_${name} PRIVATE ${ROOM_DEPS} ${ROOM_LIBS} benchmark::benchmark_main)
endfunction()

# One libFuzzer program for each fuzz/<room>/*_fuzz.cpp; its corpus is fuzz/<room>/corpus/<name>/.
function(tandrel_fuzz)
    cmake_parse_arguments(ROOM "" "" "DEPS;LIBS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_fuzz.cpp)
    list(TRANSFORM ROOM_DEPS PREPEND tandrel_)
    foreach(source ${sources})
        get_filename_component(name ${source} NAME_WE)
        add_executable(${name} ${source})
        target_link_libraries(${name} PRIVATE ${ROOM_DEPS} ${ROOM_LIBS})
        target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        add_dependencies(fuzz_targets ${name})
    endforeach()
endfunction()
