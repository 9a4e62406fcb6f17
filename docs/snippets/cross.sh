#!/bin/sh
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The library alone, built for a board, installed below a directory; from the top of the sources.
# usage: cross.sh TOOLCHAIN_FILE BUILD_DIRECTORY ROOT
set -e
cmake -S . -B "$2" -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$1" -DCMAKE_INSTALL_PREFIX=/usr \
    -DBUILD_TESTING=OFF -DVYM_BUILD_SIM=OFF -DVYM_BUILD_TOOLS=OFF -DVYM_BUILD_EXAMPLES=OFF
cmake --build "$2" -j 4
DESTDIR=$3 cmake --install "$2"
