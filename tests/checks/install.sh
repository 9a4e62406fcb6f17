#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# An installed tree is complete, can be moved, and serves C and C++ applications, through pkg-config and
# through CMake.
# usage: install.sh <cmake> <build directory> <cc> <c++> <simulator's command>...
# For a cross build: VYM_TOOLCHAIN, VYM_EMULATOR, and VYM_NO_CXX_PROGRAMS where only C programs can be linked.
set -euo pipefail
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
cmake=$1 build=$2 cc=$3 cxx=$4 toolchain=${VYM_TOOLCHAIN-}
shift 4
simulator=("$@")
read -ra emulator <<< "${VYM_EMULATOR-}"

DESTDIR=$scratch/sysroot "$cmake" --install "$build" --prefix /opt/vym > "$scratch/log"
prefix=$scratch/sysroot/opt/vym
export PKG_CONFIG_SYSROOT_DIR=$scratch/sysroot
PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name vym.pc)")
export PKG_CONFIG_LIBDIR
libdir=$(dirname "$PKG_CONFIG_LIBDIR")

# A prefix that is given when it is installed, in a sysroot; pkg-config puts that before both paths.
[[ $(pkg-config --cflags --libs vym) == "-I$prefix/include -L$libdir -lvym"* ]] ||
    complain "in a sysroot, pkg-config says $(pkg-config --cflags --libs vym)"
[[ $(pkg-config --libs --static vym) == *-pthread* ]] || complain 'pkg-config --static forgets the threads'
[[ $(pkg-config --modversion vym) == 1.*.* ]] || complain "the version is $(pkg-config --modversion vym)"
! grep -rlF "$(dirname "$build")" "$prefix" --include='*.cmake' --include='*.pc' --include='*.h' ||
    complain 'these name the place where they were built'

# What people look for; the names of the library's files and headers.
expected=(include/vym/vym_sdk.h include/vym/vym_bluetooth.h "${libdir#"$prefix"/}"/{libvym.so,libvym.so.1,libvym.a}
    "${libdir#"$prefix"/}/cmake/vym"/{vymConfig.cmake,vymConfigVersion.cmake,vymTargets.cmake})
# Where programs are built, and can be asked.
[[ ! -e $prefix/share/man ]] || expected+=(share/man/man1/vymctl.1 share/vym/vym.lua bin/{vymctl,vymtrace}
    share/bash-completion/completions/vymctl share/zsh/vendor-completions/_vymctl)
for file in "${expected[@]}"; do
    [[ -e $prefix/$file ]] || complain "$file is not installed"
done
! grep -r VYM_API_ONLY "$prefix/include" || complain 'an installed header has an internal section'

# builds <title> <source> <compiler and options>...: with the flags that pkg-config gives.
builds() {
    local title=$1 source=$2 flags
    shift 2
    read -ra flags <<< "$(pkg-config --cflags --libs vym)"
    "$@" -Wall -Wextra -Werror -o "$scratch/program" "$source" "${flags[@]}" "-Wl,-rpath,$libdir" ||
        { complain "$title does not build"; return 1; }
}

# runs <title> <program>: the consumer ends with 0 when it is told that there is no server.
runs() {
    "${emulator[@]}" "$2" "$scratch/no server" > /dev/null || complain "$1 failed"
}

if builds 'the C99 application' "$here/consumer/consumer.c" "$cc" -std=c99 -pedantic-errors; then
    runs 'the C99 application' "$scratch/program"
fi
cp "$here/consumer/consumer.c" "$scratch/consumer.cpp"
if [[ -z ${VYM_NO_CXX_PROGRAMS-} ]] &&
    builds 'the C++ application' "$scratch/consumer.cpp" "$cxx" -std=c++17 -pedantic-errors; then
    runs 'the C++ application' "$scratch/program"
fi

# shellcheck disable=SC2016 # backquotes of the text, not of the shell
sed -n '/^```c$/,/^```$/{/^```/!p}' "$here/../../README.md" > "$scratch/readme.c"
grep -q 'int main' "$scratch/readme.c" || complain 'README.md shows no C program'
builds "README.md's program" "$scratch/readme.c" "$cc" -std=c99 -pthread || true

# talks <title> <program>: it switches the simulated adapter on and asks for its name.
talks() {
    local dir=$scratch/server
    mkdir "$dir"
    if [[ ! -x ${simulator[-1]} ]]; then
        complain "there is no simulator ${simulator[-1]}: cmake --preset dev && cmake --build build/dev --target vym-sim"
        return
    fi
    "${simulator[@]}" --dir "$dir" > "$dir/out" 2> "$dir/err" &
    local server=$!
    for ((i = 0; i < 300; ++i)); do
        ! grep -q 'listening on' "$dir/out" || break
        sleep 0.1
    done
    timeout 60 "${emulator[@]}" "$2" "$dir" > "$scratch/talk" || complain "$1 failed"
    kill "$server"
    wait "$server" || true
    grep -E '^(The adapter|It) is ' "$scratch/talk" > "$scratch/said" || true # the library prints too
    printf 'The adapter is on.\nIt is called vym-sim.\n' | cmp -s - "$scratch/said" ||
        complain "$1 says: $(cat "$scratch/talk")"
}

if builds 'the smallest example' "$here/../../examples/smallest.c" "$cc" -std=gnu99 -pthread; then
    talks 'the smallest example' "$scratch/program"
fi

# From here on the tree is elsewhere, which CMake need not be told.
mv "$prefix" "$scratch/moved"
prefix=$scratch/moved
toolchain_option=()
[[ -z $toolchain ]] || toolchain_option=("-DCMAKE_TOOLCHAIN_FILE=$toolchain")
if "$cmake" -S "$here/consumer" -B "$scratch/consumer" "-DCMAKE_C_COMPILER=$cc" "${toolchain_option[@]}" \
    "-Dvym_DIR=$(dirname "$(find "$prefix" -name vymConfig.cmake)")" > "$scratch/log" 2>&1 &&
    "$cmake" --build "$scratch/consumer" > "$scratch/log" 2>&1; then
    runs 'the application built with CMake' "$scratch/consumer/consumer"
else
    complain "the application does not build with CMake: $(cat "$scratch/log")"
fi

examples=$(find "$prefix" -type d -name examples)
if [[ -n $examples && -z ${VYM_NO_CXX_PROGRAMS-} ]]; then
    if ! { "$cmake" -S "$examples" -B "$scratch/examples" "-DCMAKE_C_COMPILER=$cc" "-DCMAKE_CXX_COMPILER=$cxx" \
        "${toolchain_option[@]}" "-Dvym_DIR=$(dirname "$(find "$prefix" -name vymConfig.cmake)")" &&
        "$cmake" --build "$scratch/examples"; } > "$scratch/log" 2>&1; then
        complain "the installed examples do not build: $(tail -5 "$scratch/log")"
    fi
fi
verdict "$(find "$prefix" -type f | wc -l) files installed"
