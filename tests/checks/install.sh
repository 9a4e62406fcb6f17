#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# An installed tree is complete, can be moved, and serves C and C++ applications, through pkg-config and
# through CMake.
# usage: install.sh <cmake> <build directory> <cc> <c++>
# For a cross build: VYM_TOOLCHAIN, VYM_EMULATOR, and VYM_NO_CXX_PROGRAMS where only C programs can be linked.
set -euo pipefail
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
cmake=$1 build=$2 cc=$3 cxx=$4 toolchain=${VYM_TOOLCHAIN-}
read -ra emulator <<< "${VYM_EMULATOR-}"

"$cmake" --install "$build" --prefix "$scratch/first" > "$scratch/log"
mv "$scratch/first" "$scratch/moved"
prefix=$scratch/moved
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name vym.pc)")
export PKG_CONFIG_PATH
! grep -r VYM_API_ONLY "$prefix/include" || complain 'an installed header has an internal section'

# builds <title> <source> <compiler and options>...: builds with pkg-config's flags, and runs the program.
builds() {
    local title=$1 source=$2 libdir flags
    shift 2
    libdir=$(pkg-config --variable=libdir vym)
    read -ra flags <<< "$(pkg-config --cflags --libs vym)"
    "$@" -Wall -Wextra -Werror -o "$scratch/program" "$source" "${flags[@]}" "-Wl,-rpath,$libdir" ||
        { complain "$title does not build"; return; }
    "${emulator[@]}" "$scratch/program" "$scratch/no server" > /dev/null || complain "$title failed"
}

cp "$here/consumer/consumer.c" "$scratch/consumer.cpp"
builds 'C99 application' "$here/consumer/consumer.c" "$cc" -std=c99 -pedantic-errors
[[ -n ${VYM_NO_CXX_PROGRAMS-} ]] ||
    builds 'C++ application' "$scratch/consumer.cpp" "$cxx" -std=c++17 -pedantic-errors

toolchain_option=()
[[ -z $toolchain ]] || toolchain_option=("-DCMAKE_TOOLCHAIN_FILE=$toolchain")
if "$cmake" -S "$here/consumer" -B "$scratch/consumer" "-DCMAKE_C_COMPILER=$cc" "${toolchain_option[@]}" \
    "-Dvym_DIR=$(dirname "$(find "$prefix" -name vymConfig.cmake)")" > "$scratch/log" 2>&1 &&
    "$cmake" --build "$scratch/consumer" > "$scratch/log" 2>&1; then
    "${emulator[@]}" "$scratch/consumer/consumer" "$scratch/no server" > /dev/null ||
        complain 'the application built with CMake failed'
else
    complain "the application does not build with CMake: $(cat "$scratch/log")"
fi
verdict "$(find "$prefix" -type f | wc -l) files installed"
