#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Every header stands alone: those of the installed kind as pedantic C99 and as C++, and all of them from the
# tree, the private C++ ones as C++ only.
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

for header in "$include"/vym/*.h; do
    line="#include <vym/$(basename "$header")>"
    compiles 'installed, C99' c "$line" "$cc" -std=c99 -pedantic-errors "-I$include"
    compiles 'installed, C++' cpp "$line" "$cxx" -std=c++17 -pedantic-errors "-I$include"
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
