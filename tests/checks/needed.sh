#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The library depends on libc (and the dynamic loader) alone, in one known version.
# usage: needed.sh <readelf> <libvym.so>
set -euo pipefail
source "$(dirname "$0")/common.sh"
readelf=$1 library=$2

"$readelf" -d "$library" > "$scratch/dynamic"
sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' "$scratch/dynamic" > "$scratch/needed"
soname=$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' "$scratch/dynamic")

grep -q '^libc\.so' "$scratch/needed" || complain 'libc is not among the needed libraries'
while read -r name; do
    case $name in
    libc.so | libc.so.* | ld-linux*.so.* | ld-musl-*.so.*) ;;
    *) complain "needs $name" ;;
    esac
done < "$scratch/needed"
[[ $soname == libvym.so.1 ]] || complain "SONAME is '$soname', not libvym.so.1"
! grep -q TEXTREL "$scratch/dynamic" || complain 'has text relocations'
verdict "needs $(paste -sd ' ' "$scratch/needed")"
