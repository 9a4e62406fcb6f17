#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The library alone: built for release without tests it wants no other package, and its sources compile with a
# bare command line.
# usage: library_alone.sh <cmake> <source directory> <cc> <c++> <nm> <readelf>; VYM_TOOLCHAIN for a cross build
set -euo pipefail
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
cmake=$1 tree=$2 cc=$3 cxx=$4 nm=$5 readelf=$6 toolchain=${VYM_TOOLCHAIN-}

toolchain_option=()
[[ -z $toolchain ]] || toolchain_option=("-DCMAKE_TOOLCHAIN_FILE=$toolchain")
if "$cmake" -S "$tree" -B "$scratch/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DVYM_WERROR=ON \
    "-DCMAKE_C_COMPILER=$cc" "-DCMAKE_CXX_COMPILER=$cxx" "${toolchain_option[@]}" > "$scratch/log" 2>&1 &&
    "$cmake" --build "$scratch/build" --target vym > "$scratch/log" 2>&1; then
    grep 'size of' "$scratch/log"
    library=$scratch/build/vym/libvym.so
    "$here/needed.sh" "$readelf" "$library" || complain 'the release library needs more than libc'
    "$here/exports.sh" "$nm" "$library" "$tree/packaging/libvym.map" || complain 'the release library exports'
else
    complain "the release build failed: $(tail -20 "$scratch/log")"
fi

for source in "$tree"/vym/*.cpp; do
    "$cxx" -std=c++17 -pthread "-I$tree/vym" -c "$source" -o "$scratch/object.o" > "$scratch/log" 2>&1 ||
        complain "$(basename "$source") does not compile by itself: $(head -5 "$scratch/log")"
done
verdict 'release build and bare compilation'
