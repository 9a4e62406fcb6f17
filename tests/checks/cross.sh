#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The commands that the guide to porting shows build and install the library for another machine.
# usage: cross.sh <sources> <toolchain file>
set -euo pipefail
source "$(dirname "$0")/common.sh"

cd "$1"
docs/snippets/cross.sh "$2" "$scratch/build" "$scratch/root" > "$scratch/log" 2>&1 || cat "$scratch/log"
[[ -n $(find "$scratch/root/usr" -name libvym.so) ]] || complain 'there is no libvym.so below the root'
[[ -f $scratch/root/usr/include/vym/vym_sdk.h ]] || complain 'there are no headers below the root'
verdict 'the library is built and installed for a board'
