#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The exported symbols are exactly those of the map: a new one and a lost one are both errors.
# usage: exports.sh <nm> <libvym.so> <libvym.map>
set -euo pipefail
source "$(dirname "$0")/common.sh"
nm=$1 library=$2 map=$3

"$nm" -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' > "$scratch/exported"
sed -n 's/^ *\([A-Za-z_][A-Za-z0-9_]*\);.*$/\1/p' "$map" > "$scratch/named"
expect_same "exports of $(basename "$library") against $(basename "$map")" "$scratch/named" "$scratch/exported"
! "$nm" -D --defined-only "$library" | awk '$2 != "A"' | grep -v '@@VYM_1$' ||
    complain 'a symbol lacks the version VYM_1'
if grep -q '[*?]' <(sed 's/#.*//; /local:/,$d' "$map"); then
    complain "$(basename "$map") has a wildcard among the exported names"
fi
if duplicates=$(sort "$scratch/named" | uniq -d) && [[ -n $duplicates ]]; then
    complain "$(basename "$map") names twice: $duplicates"
fi
verdict "$(wc -l < "$scratch/named") symbols"
