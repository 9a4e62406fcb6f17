#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Every structure and enumeration of the installed headers has its layout pinned for 32-bit ARM, with every
# member; the compiler of that platform compares them.
# usage: layouts.sh <include directory> <table of layouts>
set -euo pipefail
source "$(dirname "$0")/common.sh"
include=$1 table=$2

# The types by the names that applications use, and the members of each: "type member" a line.
awk '
    /^(typedef )?struct .*\{$/ { members = ""; inside = 1; name = $2 }
    /^typedef VYM_ENUM.*\{/ { members = ""; inside = 2 }
    inside == 1 && match($0, /\(\*[a-z_0-9A-Z]+\)\(/) { members = members " " substr($0, RSTART + 2, RLENGTH - 4); next }
    inside == 1 && /^    [a-zA-Z}].*;$/ && !/\(/ {
        sub(/(\[.*)?;$/, "")
        sub(/.*[ *]/, "")
        members = members " " $0
    }
    /^typedef struct [a-zA-Z_0-9]+ [a-zA-Z_0-9]+;$/ { sub(/;/, "", $4); alias[$3] = $4 }
    inside && /^\}/ {
        type = $2
        sub(/;/, "", type)
        if (type == "") type = name in alias ? alias[name] : "struct " name
        print type ":"
        count = split(members, list, " ")
        for (i = 1; i <= count; ++i) print type ":" list[i]
        inside = 0
    }' "$include"/vym/*.h > "$scratch/declared"
sed -nE 's/^SIZE\(([^,]+), [0-9]+\);$/\1:/p; s/^(AT|OPEN)\(([^,]+), ([^,]+), .*/\2:\3/p' "$table" > "$scratch/pinned"
expect_same 'pinned layouts' "$scratch/declared" "$scratch/pinned"
verdict "$(wc -l < "$scratch/pinned") types and members"
