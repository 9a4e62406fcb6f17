# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The examples with the installed library: cmake -S . -B /tmp/examples && cmake --build /tmp/examples

cmake_minimum_required(VERSION 3.16)
project(vym_examples C CXX)
set(CMAKE_CXX_STANDARD 17)
find_package(vym 1 REQUIRED)

file(GLOB sources "${CMAKE_CURRENT_SOURCE_DIR}/*.c" "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME_WE)
    add_executable(${name} "${source}")
    target_link_libraries(${name} PRIVATE vym::vym)
    target_link_options(${name} PRIVATE -pthread)
endforeach()
