# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# vym_add_test_suite(<name> <label> [<library>...])
#
# Builds one program of all *_test.cpp of the current directory, with the support library, and makes each of
# its tests a test of its own with this label. Nothing is built while there is no such file.

include(GoogleTest)

# These listen on a fixed TCP port, so only one of them may run at a time.
set(VYM_FIXED_PORT_TESTS "ExternalParser*.*")

function(vym_add_test_suite name label)
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp")
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE ${ARGN} vym_test_support)
    vym_warnings(${name})
    # Reading these takes longer than compiling a test.
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h> <functional> <memory> <string> <thread> <vector>)

    set(discovery DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
    set(properties TIMEOUT 120 LABELS ${label})
    gtest_discover_tests(${name} ${discovery} TEST_LIST ${name}_tests TEST_FILTER "-${VYM_FIXED_PORT_TESTS}"
        PROPERTIES ${properties})
    gtest_discover_tests(${name} ${discovery} TEST_LIST ${name}_fixed_port_tests
        TEST_FILTER "${VYM_FIXED_PORT_TESTS}" PROPERTIES ${properties} RESOURCE_LOCK fixed_port)
endfunction()
