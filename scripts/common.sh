# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors
# shellcheck shell=bash

# For the scripts beside this file: headings with a running number, and answers of one line.

# shellcheck disable=SC2034 # for the scripts
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

bold='' red='' green='' plain=''
if [[ -t 1 && -z ${NO_COLOR-} && ${TERM-dumb} != dumb ]]; then
    bold=$'\e[1m' red=$'\e[31m' green=$'\e[32m' plain=$'\e[0m'
fi

steps_done=0
steps_in_all=0

# step <title>: the heading of the next step; set steps_in_all first.
step() {
    steps_done=$((steps_done + 1))
    printf '\n%s==> [%d/%d] %s%s\n' "$bold" "$steps_done" "$steps_in_all" "$1" "$plain"
}

good() {
    printf '%s==> %s%s\n' "$green" "$1" "$plain"
}

bad() {
    printf '%s==> %s%s\n' "$red" "$1" "$plain" >&2
}

# die <message>: what is wrong and how to mend it, in one line.
die() {
    printf '%s: %s\n' "$(basename "$0")" "$1" >&2
    exit 1
}

duration() {
    printf '%dm %02ds' $(($1 / 60)) $(($1 % 60))
}

# need <group of packages>...: installs them. From then on what was compiled before is taken from the
# compiler's cache.
need() {
    "$root/scripts/install-packages" "$@"
    if command -v ccache > /dev/null; then
        export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
        export CCACHE_BASEDIR=$root
        # The building of packages has a home of its own.
        CCACHE_DIR=$(ccache --get-config cache_dir)
        export CCACHE_DIR
        # Precompiled headers ask for these.
        export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    fi
}
