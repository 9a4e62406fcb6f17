#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Every header stands alone: those of the installed kind as pedantic C99, C11, C++11 and C++20, with and without
# exceptions and with times of 64 bits where they have 32, and all of them from the tree, the private C++ ones as
# C++ only.
# usage: headers.sh <cc> <c++> <include directory> <tree's vym/> <private header>...
set -euo pipefail
source "$(dirname "$0")/common.sh"
cc=$1 cxx=$2 include=$3 tree=$4
shift 4
count=0

# compiles <what for> <language> <line> <compiler and options>...
compiles() {
    local title=$1 language=$2 line=$3
    shift 3
    count=$((count + 1))
    printf '%s\nextern int vym_header_check;\n' "$line" > "$scratch/header.$language"
    "$@" -Wall -Wextra -Werror -fsyntax-only "$scratch/header.$language" > "$scratch/log" 2>&1 ||
        complain "$line $title: $(head -3 "$scratch/log")"
}

# Times are 64 bits wide on 64-bit machines and with musl; where they are not, both widths are tried.
times=('')
if printf '#include <time.h>\ntypedef int narrow[sizeof(time_t) == 4 ? 1 : -1];\n' |
    "$cc" -fsyntax-only -x c - 2> /dev/null; then
    times+=('-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64')
fi
for header in "$include"/vym/*.h; do
    line="#include <vym/$(basename "$header")>"
    for time in "${times[@]}"; do
        read -ra options <<< "-pedantic-errors -I$include $time"
        compiles "installed, C99 $time" c "$line" "$cc" -std=c99 "${options[@]}"
        compiles "installed, C11 $time" c "$line" "$cc" -std=c11 "${options[@]}"
        for dialect in c++11 c++20; do
            compiles "installed, $dialect $time" cpp "$line" "$cxx" "-std=$dialect" "${options[@]}"
            compiles "installed, $dialect without exceptions $time" cpp "$line" "$cxx" "-std=$dialect" \
                -fno-exceptions "${options[@]}"
        done
    done
done
for header in "$tree"/*.h; do
    line="#include \"$(basename "$header")\""
    compiles 'in the tree, C++' cpp "$line" "$cxx" -std=c++17 -pedantic-errors "-I$tree"
    # A private header is C when it has a C linkage block.
    if [[ " $* " != *" $(basename "$header") "* ]] || grep -q '^#ifdef __cplusplus' "$header"; then
        compiles 'in the tree, C99' c "$line" "$cc" -std=c99 -D_DEFAULT_SOURCE -pedantic-errors "-I$tree"
    fi
done
verdict "$count compilations"
