# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Prints the size of a library: cmake -D FILE=<path> -D SIZE_TOOL=<size program or empty> -P print_size.cmake

file(SIZE "${FILE}" bytes)
get_filename_component(name "${FILE}" NAME)
set(sections "")
if(SIZE_TOOL)
    execute_process(COMMAND "${SIZE_TOOL}" "${FILE}" OUTPUT_VARIABLE table RESULT_VARIABLE failed ERROR_QUIET)
    if(NOT failed AND table MATCHES "\n *([0-9]+)[ \t]+([0-9]+)[ \t]+([0-9]+)")
        set(sections " (text ${CMAKE_MATCH_1}, data ${CMAKE_MATCH_2}, bss ${CMAKE_MATCH_3})")
    endif()
endif()
message(STATUS "size of ${name}: ${bytes} bytes${sections}")
