# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The host's processor with musl in place of glibc, from Debian's musl-tools. That package has no C++ library,
# but the library uses of it only what stands in headers: those of the host's g++ are taken, with musl's C
# headers after them. C++ programs cannot be linked this way; C programs can.

find_program(VYM_GXX g++ REQUIRED)
execute_process(COMMAND "${VYM_GXX}" -dumpversion OUTPUT_VARIABLE gxx_version
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${VYM_GXX}" -dumpmachine OUTPUT_VARIABLE machine
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "-gnu$" "-musl" musl_machine "${machine}")

set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER "${VYM_GXX}")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(VYM_NO_CXX_PROGRAMS ON)

# The C++ headers are configured for glibc; two of its names are all they ask for.
string(JOIN " " CMAKE_CXX_FLAGS_INIT
    "'-D__GLIBC_PREREQ(major,minor)=0' -D__locale_t=locale_t -nostdinc -nostdinc++"
    "-isystem /usr/include/c++/${gxx_version}"
    "-isystem /usr/include/${machine}/c++/${gxx_version}"
    "-isystem /usr/include/${musl_machine}"
    "-isystem /usr/lib/gcc/${machine}/${gxx_version}/include")
