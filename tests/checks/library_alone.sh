#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The library alone: it is built for release where no other library's headers can be found, to the same bytes
# wherever its tree is; as an archive only, where that is wanted; and its sources compile with a bare command line.
# usage: library_alone.sh <cmake> <source directory> <cc> <c++> <nm> <readelf>
set -euo pipefail
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
# A cache could hand out an object that names the files of another directory.
export CCACHE_DISABLE=1
cmake=$1 tree=$2 cc=$3 cxx=$4 nm=$5 readelf=$6

# configure <tree> <build directory> <option>...: with what a debugger reads, which names files.
configure() {
    "$cmake" -S "$1" -B "$2" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DVYM_WERROR=ON \
        "-DCMAKE_C_COMPILER=$cc" "-DCMAKE_CXX_COMPILER=$cxx" -DCMAKE_CXX_FLAGS=-g1 "${@:3}" \
        '-DCMAKE_IGNORE_PATH=/usr/include;/usr/local/include' > "$scratch/log" 2>&1
}

# build <build directory> <target>...
build() {
    "$cmake" --build "$1" --parallel "$(nproc)" --target "${@:2}" > "$scratch/log" 2>&1
}

if configure "$tree" "$scratch/build" && build "$scratch/build" vym vym_static; then
    grep 'size of' "$scratch/log"
    [[ ! -e $scratch/build/tool-headers ]] || complain "other libraries' headers were found all the same"
    library=$scratch/build/vym/libvym.so
    "$here/needed.sh" "$readelf" "$library" || complain 'the release library needs more than libc'
    "$here/exports.sh" "$nm" "$library" "$tree/packaging/libvym.map" || complain 'the release library exports'
else
    complain "the release build failed: $(tail -20 "$scratch/log")"
fi

# What a source package of the library alone would hold, somewhere else.
other=$scratch/a/longer/path/of/the/tree
mkdir -p "$other"
cp -r "$tree"/{CMakeLists.txt,cmake,packaging,vym} "$other"
if configure "$other" "$scratch/build in it" && build "$scratch/build in it" vym vym_static; then
    for name in libvym.so libvym.a; do
        cmp "$scratch/build/vym/$name" "$scratch/build in it/vym/$name" || complain "two builds of $name differ"
    done
else
    complain "the library does not build from its own directories: $(tail -20 "$scratch/log")"
fi

if configure "$other" "$scratch/build in it" -DBUILD_SHARED_LIBS=OFF && build "$scratch/build in it" all &&
    "$cmake" --install "$scratch/build in it" --prefix "$scratch/static" > "$scratch/log" 2>&1; then
    [[ -z $(find "$scratch/static" -name '*.so*') ]] || complain 'BUILD_SHARED_LIBS=OFF installs a shared library'
    if "$cmake" -S "$here/consumer" -B "$scratch/consumer" "-DCMAKE_C_COMPILER=$cc" \
        "-Dvym_DIR=$(dirname "$(find "$scratch/static" -name vymConfig.cmake)")" > "$scratch/log" 2>&1 &&
        "$cmake" --build "$scratch/consumer" > "$scratch/log" 2>&1; then
        "$scratch/consumer/consumer" "$scratch/no server" > /dev/null || complain 'the static application failed'
        ! "$readelf" -d "$scratch/consumer/consumer" | grep -E 'NEEDED.*(libvym|libstdc)' ||
            complain 'the static application needs these'
    else
        complain "no C application links libvym.a: $(cat "$scratch/log")"
    fi
else
    complain "BUILD_SHARED_LIBS=OFF does not build: $(tail -20 "$scratch/log")"
fi

find "$tree/vym" -name '*.cpp' -print0 |
    xargs -0 -n 8 -P "$(nproc)" "$cxx" -std=c++17 -fsyntax-only "-I$tree/vym" > "$scratch/log" 2>&1 ||
    complain "the sources do not compile by themselves: $(head -5 "$scratch/log")"
verdict 'release builds and bare compilation'
