#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The Debian packages are installed in a directory of their own, used, and removed without a trace: a C program
# through pkg-config and C++ programs through CMake, both against the simulator; the tools; the documents.
# usage: installed.sh <directory of the packages> <architecture> <directory of the packages for all architectures>
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/../checks/common.sh"
packages=$1 architecture=$2 common=$3
root=$scratch/root
native=$(dpkg --print-architecture)
names=(libvym1 libvym-dev vym-tools vym-doc)

if [[ $architecture == "$native" ]]; then
    triplet=$(gcc -print-multiarch)
    compiler='' emulator=() force=() toolchain=()
else
    # The target's C and C++ libraries are those of the cross compiler, which dpkg does not count.
    triplet=arm-linux-gnueabihf
    compiler=$triplet- force=(--force-depends)
    emulator=(qemu-arm -L "/usr/$triplet" -E "LD_LIBRARY_PATH=$root/usr/lib/$triplet")
    toolchain=("-DCMAKE_TOOLCHAIN_FILE=$here/../../packaging/arm-linux-gnueabihf.cmake")
fi
libdir=$root/usr/lib/$triplet

# What dpkg says goes into the log; the machine's own packages count, and are not touched.
dpkg_in_root() {
    dpkg --root="$root" --force-not-root --force-script-chrootless "${force[@]}" --no-triggers "$@" >> "$scratch/log" 2>&1 ||
        { cat "$scratch/log"; complain "dpkg $1 failed"; }
}

# files: what is installed, without dpkg's own.
files() {
    find "$root" -path "$root/var/lib/dpkg" -prune -o ! -type d -printf '/%P\n' | sort
}

# runs <program and arguments>...: as it would be run where it is installed.
runs() {
    if ((${#emulator[@]} > 0)); then
        timeout 300 "${emulator[@]}" "$@"
    else
        LD_LIBRARY_PATH=$libdir timeout 300 "$@"
    fi
}

debs=()
for name in "${names[@]}"; do
    found=("$packages/$name"_*.deb)
    [[ -e ${found[0]} ]] || found=("$common/$name"_*_all.deb)
    [[ -e ${found[0]} ]] || complain "there is no package $name"
    debs+=("${found[0]}")
done
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
cp /var/lib/dpkg/status "$root/var/lib/dpkg/status"
echo 1 > "$root/var/lib/dpkg/info/format"
while read -r name; do
    : > "$root/var/lib/dpkg/info/$name.list"
done < <(dpkg-query -W -f '${binary:Package}\n')
[[ $architecture == "$native" ]] || dpkg_in_root --add-architecture "$architecture"
dpkg_in_root --install "${debs[@]}"

cat > "$scratch/expected" <<FILES
/usr/bin/vym-sim
/usr/bin/vymctl
/usr/bin/vymtrace
/usr/include/vym/vym_bluetooth.h
/usr/include/vym/vym_sdk.h
/usr/lib/$triplet/cmake/vym/vymConfig.cmake
/usr/lib/$triplet/libvym.a
/usr/lib/$triplet/libvym.so
/usr/lib/$triplet/libvym.so.1
/usr/lib/$triplet/pkgconfig/vym.pc
/usr/share/bash-completion/completions/vymctl
/usr/share/doc/libvym1/copyright
/usr/share/doc/vym-doc/README.md
/usr/share/doc/vym-doc/docs/architecture.md
/usr/share/man/man1/vym-sim.1.gz
/usr/share/man/man1/vymctl.1.gz
/usr/share/man/man1/vymtrace.1.gz
/usr/share/vym/vym.lua
/usr/share/zsh/vendor-completions/_vymctl
FILES
files > "$scratch/files"
missing=$(comm -23 "$scratch/expected" "$scratch/files" | paste -sd ' ')
[[ -z $missing ]] || complain "not installed: $missing"
for foreign in $(dpkg-deb -f "${debs[0]}" Depends | tr ',' '\n' | sed 's/ *(.*//; s/ //g'); do
    [[ $foreign == libc6 ]] || complain "libvym1 depends on $foreign"
done

examples=$scratch/examples
cp -rL "$root/usr/share/doc/vym-doc/examples" "$examples"
export PKG_CONFIG_LIBDIR=$libdir/pkgconfig PKG_CONFIG_SYSROOT_DIR=$root
export PKG_CONFIG_ALLOW_SYSTEM_CFLAGS=1 PKG_CONFIG_ALLOW_SYSTEM_LIBS=1
read -ra flags <<< "$(pkg-config --cflags --libs vym)"
"${compiler}gcc" -pthread -o "$scratch/smallest" "$examples/smallest.c" "${flags[@]}" ||
    complain 'the C program does not build with pkg-config'
if ! { cmake -S "$examples" -B "$scratch/build" "${toolchain[@]}" "-Dvym_DIR=$libdir/cmake/vym" &&
    cmake --build "$scratch/build" --target scanner; } > "$scratch/log" 2>&1; then
    complain "the C++ program does not build with CMake: $(tail -5 "$scratch/log")"
fi

server=$scratch/server
mkdir "$server"
runs "$root/usr/bin/vym-sim" --dir "$server" > "$server/out" 2> "$server/err" &
simulator=$!
for ((i = 0; i < 300; ++i)); do
    ! grep -q 'listening on' "$server/out" || break
    sleep 0.1
done

# says <text> <program and arguments>...
says() {
    local text=$1
    shift
    runs "$@" < /dev/null > "$scratch/said" 2> "$scratch/errors" ||
        complain "$(basename "$1") ended with an error: $(tail -3 "$scratch/errors")"
    grep -q -- "$text" "$scratch/said" || complain "$(basename "$1") does not say '$text' but: $(tail -5 "$scratch/said")"
}
says 'It is called vym-sim\.' "$scratch/smallest" "$server"
says 'Heart' "$scratch/build/scanner" "$server" name=Heart
says 'bluetooth *onAdapterState\|bluetooth *enable' "$root/usr/bin/vymtrace" "$server/client_sock.log"
says '^vym-sim$' "$root/usr/bin/vymctl" --dir "$server" adapter name
# timeout hands the signal on.
kill "$simulator"
wait "$simulator" || true
bash -n "$root/usr/share/bash-completion/completions/vymctl" || complain 'the completions for bash are no script'

dpkg_in_root --purge "${names[@]}"
left=$(files | paste -sd ' ')
[[ -z $left ]] || complain "the packages leave: $left"
verdict "$(wc -l < "$scratch/files") files were there, and are gone"
