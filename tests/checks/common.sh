# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors
# shellcheck shell=bash

# For the checks beside this file: temporary directory, comparison of lists, verdict.

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0

complain() {
    printf 'FAIL: %s\n' "$1"
    failures=$((failures + 1))
}

# expect_same <title> <file with expected lines> <file with actual lines>: both ways, any order.
expect_same() {
    local missing surplus
    missing=$(comm -23 <(sort -u "$2") <(sort -u "$3") | paste -sd ' ')
    surplus=$(comm -13 <(sort -u "$2") <(sort -u "$3") | paste -sd ' ')
    [[ -s $2 ]] || complain "$1: nothing is expected, so nothing was checked"
    [[ -z $missing ]] || complain "$1: missing: $missing"
    [[ -z $surplus ]] || complain "$1: not expected: $surplus"
}

verdict() {
    if ((failures > 0)); then
        printf '%s: %d failed\n' "$(basename "$0")" "$failures"
        exit 1
    fi
    printf '%s: ok, %s\n' "$(basename "$0")" "$1"
}
