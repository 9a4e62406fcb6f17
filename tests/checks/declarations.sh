#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# What the headers declare and what the libraries define is the same:
# - the functions and variables of the installed headers are the exported ones;
# - every function that a C header of the tree declares is in libvym.a, with C linkage;
# - no object of the library has static constructors.
# usage: declarations.sh <cc> <nm> <readelf> <include directory> <tree's vym/> <libvym.map> <libvym.a>
set -euo pipefail
source "$(dirname "$0")/common.sh"
cc=$1 nm=$2 readelf=$3 include=$4 tree=$5 map=$6 archive=$7

# declared_in <directory> <include line>...: the names that headers of this directory declare.
declared_in() {
    local dir=$1
    shift
    printf '%s\n' "$@" > "$scratch/all.c"
    "$cc" -std=c99 -D_DEFAULT_SOURCE "-I$include" "-I$tree" -fsyntax-only -aux-info "$scratch/prototypes" \
        "$scratch/all.c"
    grep -F "/* $dir/" "$scratch/prototypes" | grep -v ' static ' |
        sed -n 's/^\/\*[^*]*\*\/ *extern [^(]*[ *]\([A-Za-z_][A-Za-z0-9_]*\) (.*$/\1/p' | sort -u
    # Prototypes alone are listed above; variables are few and plain.
    "$cc" -std=c99 -D_DEFAULT_SOURCE "-I$include" "-I$tree" -E "$scratch/all.c" |
        awk -v dir="$dir/" '/^# [0-9]+ "/ { inside = index($3, "\"" dir) == 1; next } inside' |
        sed -n 's/^extern [a-z][A-Za-z0-9_ ]* \**\([A-Za-z_][A-Za-z0-9_]*\);$/\1/p'
}

installed=() in_tree=()
for header in "$include"/vym/*.h; do
    installed+=("#include <vym/$(basename "$header")>")
done
for header in "$tree"/*.h; do
    if grep -q '^#ifdef __cplusplus' "$header"; then
        in_tree+=("#include \"$(basename "$header")\"")
    fi
done

sed -n 's/^ *\([A-Za-z_][A-Za-z0-9_]*\);.*$/\1/p' "$map" > "$scratch/exported"
declared_in "$include/vym" "${installed[@]}" > "$scratch/public"
expect_same 'declared in the installed headers, against the symbol map' "$scratch/exported" "$scratch/public"

"$nm" --defined-only --extern-only "$archive" 2> /dev/null | awk 'NF == 3 { print $3 }' | sort -u > "$scratch/defined"
declared_in "$tree" "${in_tree[@]}" | sort -u > "$scratch/declared"
undefined=$(comm -23 "$scratch/declared" "$scratch/defined" | paste -sd ' ')
[[ -z $undefined ]] || complain "declared in a header of the tree, but not in libvym.a with C linkage: $undefined"
[[ -s $scratch/declared ]] || complain 'no declaration was found in the tree'

if "$readelf" -S --wide "$archive" | grep -qE ' \.(init_array|ctors)'; then
    complain 'libvym.a has static constructors'
fi
verdict "$(wc -l < "$scratch/public") public and $(wc -l < "$scratch/declared") declarations in all"
