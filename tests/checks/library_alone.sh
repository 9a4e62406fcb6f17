#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The library alone: it is built for release where no other library's headers can be found, and its sources
# compile with a bare command line.
# usage: library_alone.sh <cmake> <source directory> <cc> <c++> <nm> <readelf>
set -euo pipefail
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
cmake=$1 tree=$2 cc=$3 cxx=$4 nm=$5 readelf=$6

if "$cmake" -S "$tree" -B "$scratch/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DVYM_WERROR=ON \
    "-DCMAKE_C_COMPILER=$cc" "-DCMAKE_CXX_COMPILER=$cxx" \
    '-DCMAKE_IGNORE_PATH=/usr/include;/usr/local/include' > "$scratch/log" 2>&1 &&
    "$cmake" --build "$scratch/build" --target vym > "$scratch/log" 2>&1; then
    grep 'size of' "$scratch/log"
    [[ ! -e $scratch/build/tool-headers ]] || complain "other libraries' headers were found all the same"
    library=$scratch/build/vym/libvym.so
    "$here/needed.sh" "$readelf" "$library" || complain 'the release library needs more than libc'
    "$here/exports.sh" "$nm" "$library" "$tree/packaging/libvym.map" || complain 'the release library exports'
else
    complain "the release build failed: $(tail -20 "$scratch/log")"
fi

(cd "$scratch" && "$cxx" -std=c++17 -pthread "-I$tree/vym" -c "$tree"/vym/*.cpp) > "$scratch/log" 2>&1 ||
    complain "the sources do not compile by themselves: $(head -5 "$scratch/log")"
verdict 'release build and bare compilation'
