# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# What every target of the tree is built with.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Optimised builds are the same bytes wherever the tree is. Debuggers and the coverage report want its real place.
if(NOT VYM_COVERAGE)
    foreach(dir IN ITEMS "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}")
        add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${dir}=.>")
    endforeach()
endif()

# A part of the tree that a source package may leave out.
function(vym_add_subdirectory_if_present dir)
    if(EXISTS "${PROJECT_SOURCE_DIR}/${dir}/CMakeLists.txt")
        add_subdirectory("${PROJECT_SOURCE_DIR}/${dir}" "${PROJECT_BINARY_DIR}/${dir}")
    endif()
endfunction()
