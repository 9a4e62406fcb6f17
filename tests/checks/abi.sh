#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# What applications have compiled in still fits: the library is compared with the last release's, whose interface
# is in packaging/abi. Functions may be added, nothing else may change.
# usage: abi.sh <libvym.so with debug information> <include directory> <the last release's .abi>
set -euo pipefail
source "$(dirname "$0")/common.sh"
library=$1 include=$2 last=$3

command -v abidiff > /dev/null || { complain 'there is no abidiff: scripts/install-packages abi'; verdict ''; }
[[ -e $last ]] || { complain "there is no interface $last: scripts/abi --release"; verdict ''; }
# Without types abidiff sees no change in them.
readelf -SW "$library" | grep ' \.debug_info ' > /dev/null ||
    complain "$(basename "$library") has no debug information: build with -g, and do not strip"
# The result is a set of bits: 1 and 2 an error, 4 a change, 8 a change that breaks applications.
status=0
abidiff --no-added-syms --headers-dir2 "$include/vym" "$last" "$library" \
    > "$scratch/changes" 2>&1 || status=$?
((status == 0)) || complain "the interface is not that of $(basename "$last") ($status): $(cat "$scratch/changes")"
verdict "compared with $(basename "$last")"
