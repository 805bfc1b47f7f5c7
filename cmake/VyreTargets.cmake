# SPDX-License-Identifier: GPL-2.0-or-later
# The flags with which all of our code is compiled, and functions that add libraries, test programs and fuzzers. Every
# folder uses this file.

add_library(vyre_flags INTERFACE)
# Qt's keywords are switched off, because CPython's headers use "slots" as an ordinary identifier.
target_compile_definitions(vyre_flags INTERFACE QT_NO_KEYWORDS QT_NO_FOREACH _FILE_OFFSET_BITS=64
    VYRE_VERSION="${PROJECT_VERSION}")
target_compile_options(vyre_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual)
target_include_directories(vyre_flags INTERFACE ${CMAKE_SOURCE_DIR})
# New versions of RE2 name fifty other libraries, but our code uses none of them itself.
target_link_options(vyre_flags INTERFACE -Wl,--as-needed)
if(VYRE_WERROR)
    target_compile_options(vyre_flags INTERFACE -Werror)
endif()
if(VYRE_SANITIZE)
    # Each fault that a sanitizer finds ends the program.
    target_compile_options(vyre_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    target_link_options(vyre_flags INTERFACE -fsanitize=address,undefined)
endif()

# vyre_library(<name> SOURCES <files...> LINKS <targets...>)
function(vyre_library name)
    cmake_parse_arguments(LIB "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${LIB_SOURCES})
    target_link_libraries(${name} PUBLIC vyre_flags ${LIB_LINKS})
endfunction()

# The common settings of the tests of classes.
set(VYRE_TEST_TIMEOUT 300)
set(VYRE_TEST_ENVIRONMENT "VYRESHARE=${CMAKE_SOURCE_DIR}/share" LC_ALL=C.UTF-8 LANGUAGE= TZ=UTC)
if(VYRE_SANITIZE)
    # Instrumented code is several times slower. By default, Qt Test ends a function after five minutes.
    set(VYRE_TEST_TIMEOUT 1800)
    list(APPEND VYRE_TEST_ENVIRONMENT QTEST_FUNCTION_TIMEOUT=1500000 UBSAN_OPTIONS=print_stacktrace=1
        LSAN_OPTIONS=print_suppressions=0:suppressions=${CMAKE_SOURCE_DIR}/tests/support/leaks.supp
        # libdnf deletes memory that libsolv has allocated with malloc(). The sanitizer cannot distinguish this error
        # of a library from our own errors, so this check is off.
        ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:alloc_dealloc_mismatch=0)
endif()

# The tested classes are optimized as in the installed program. The code of the tests is not optimized, because this
# halves the time of its compilation.
set(VYRE_TEST_OPTIONS -O0 -g1)

# vyre_test_headers(<target> SOURCES <files...> LINKS <targets...>)
#
# Compiles Qt's headers once, for the tests of classes. Otherwise, the compiler would spend three quarters of its time on
# these headers, in each test again.
function(vyre_test_headers target)
    cmake_parse_arguments(HEADERS "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${target} OBJECT ${HEADERS_SOURCES})
    target_link_libraries(${target} PRIVATE vyre_flags ${HEADERS_LINKS})
    target_compile_options(${target} PRIVATE ${VYRE_TEST_OPTIONS})
    target_precompile_headers(${target} PRIVATE <QtTest> <QtWidgets>)
endfunction()

# vyre_test(<Class> LINKS <targets...> [SOURCES <more files...>] [DISPLAY] [SCREEN <width>x<height>] [SANDBOX]
#           [OWN_HEADERS])
#
# Builds <Class>Test from <Class>Test.cpp in the calling folder, and registers it with the label "class". With DISPLAY
# the test gets its own X server and window manager; SCREEN sets the size of its screen. With SANDBOX the environment
# variable VYRE_SANDBOX names a sandbox. The test copies this sandbox, and never changes it. The macro SANDBOX_TOOL
# names the tool that makes the copy. OWN_HEADERS is for a test that does not link Qt Widgets, because such a test cannot
# use the headers that vyre_test_headers() has compiled.
function(vyre_test class)
    cmake_parse_arguments(TEST "DISPLAY;SANDBOX;OWN_HEADERS" "SCREEN" "SOURCES;LINKS" ${ARGN})
    set(target ${class}Test)
    add_executable(${target} ${target}.cpp ${TEST_SOURCES})
    target_link_libraries(${target} PRIVATE vyre_flags ${TEST_LINKS} Qt5::Test)
    target_compile_options(${target} PRIVATE ${VYRE_TEST_OPTIONS})
    if(NOT TEST_OWN_HEADERS)
        target_precompile_headers(${target} REUSE_FROM test_headers)
        # This generated file is almost empty.
        set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/mocs_compilation.cpp PROPERTIES
            SKIP_PRECOMPILE_HEADERS ON)
    endif()
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    if(TEST_DISPLAY)
        set(screen)
        if(TEST_SCREEN)
            set(screen --size ${TEST_SCREEN})
        endif()
        add_test(NAME ${target} COMMAND ${CMAKE_SOURCE_DIR}/tests/support/with-display ${screen}
            $<TARGET_FILE:${target}>)
    else()
        add_test(NAME ${target} COMMAND ${target})
    endif()
    set_tests_properties(${target} PROPERTIES TIMEOUT ${VYRE_TEST_TIMEOUT} LABELS class
        ENVIRONMENT "${VYRE_TEST_ENVIRONMENT};QT_QPA_PLATFORM=$<IF:$<BOOL:${TEST_DISPLAY}>,xcb,offscreen>")
    if(TEST_SANDBOX)
        target_compile_definitions(${target} PRIVATE SANDBOX_TOOL="${CMAKE_SOURCE_DIR}/tools/sandbox/sandbox")
        set_property(TEST ${target} APPEND PROPERTY ENVIRONMENT "VYRE_SANDBOX=${CMAKE_BINARY_DIR}/tests/sandbox")
        set_tests_properties(${target} PROPERTIES FIXTURES_REQUIRED sandbox)
    endif()
endfunction()

# vyre_fuzzer(<Class> SOURCES <files under test...> LINKS <targets...>)
#
# Builds <Class>Fuzzer from <Class>Fuzzer.cpp in the calling folder, and from the sources under test. The paths of these
# sources begin at the root of the project. The sources are compiled a second time for the fuzzer, with the
# instrumentation of the fuzzer and of the sanitizers. A fuzzer is not a test of ctest: it runs until it is stopped.
function(vyre_fuzzer class)
    cmake_parse_arguments(FUZZER "" "" "SOURCES;LINKS" ${ARGN})
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "VYRE_FUZZERS needs -DCMAKE_CXX_COMPILER=clang++")
    endif()
    set(target ${class}Fuzzer)
    list(TRANSFORM FUZZER_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)
    add_executable(${target} ${target}.cpp ${FUZZER_SOURCES})
    target_link_libraries(${target} PRIVATE vyre_flags ${FUZZER_LINKS})
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer,address,undefined)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
        EXCLUDE_FROM_ALL ON)
endfunction()
