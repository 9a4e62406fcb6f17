#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The checks can fail: each is given something wrong and must say so.
# usage: checks_can_fail.sh <cc> <c++> <nm> <readelf> <libvym.so> <libvym.map> \
#            <include directory> <tree's vym/> <libvym.a>
set -euo pipefail
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
cc=$1 cxx=$2 nm=$3 readelf=$4 library=$5 map=$6 include=$7 sources=$8 archive=$9

# refuses <what is wrong> <expected text> <check and arguments>...
refuses() {
    local wrong=$1 text=$2
    shift 2
    if "$@" > "$scratch/log" 2>&1; then
        complain "passed in spite of $wrong"
    elif ! grep -q -- "$text" "$scratch/log"; then
        complain "for $wrong it does not say '$text': $(cat "$scratch/log")"
    fi
}

sed '/ vym_sdk_done;/d' "$map" > "$scratch/short.map"
sed 's/ vym_sdk_done;/ vym_sdk_done; vym_sdk_never_written;/; s/; v/;\n    v/' "$map" > "$scratch/long.map"
sed 's/ vym_sdk_done;/ vym_sdk_d*;/' "$map" > "$scratch/wild.map"
refuses 'a new export' 'not expected: vym_sdk_done' "$here/exports.sh" "$nm" "$library" "$scratch/short.map"
refuses 'a lost export' 'missing: vym_sdk_never' "$here/exports.sh" "$nm" "$library" "$scratch/long.map"
refuses 'a wildcard' 'has a wildcard' "$here/exports.sh" "$nm" "$library" "$scratch/wild.map"

echo 'int other(void); int other(void) { return 1; }' > "$scratch/other.c"
echo 'int other(void); int mine(void); int mine(void) { return other(); }' > "$scratch/mine.c"
"$cc" -shared -fPIC -Wl,-soname,libother.so.5 -o "$scratch/libother.so" "$scratch/other.c"
"$cc" -shared -fPIC -Wl,-soname,libvym.so.1 -o "$scratch/mine.so" "$scratch/mine.c" "$scratch/libother.so"
refuses 'another library' 'needs libother.so.5' "$here/needed.sh" "$readelf" "$scratch/mine.so"

mkdir -p "$scratch/include/vym" "$scratch/tree"
echo 'size_t needs_an_include(void);' > "$scratch/include/vym/bad.h"
echo 'class not_c {};' > "$scratch/tree/bad.h"
refuses 'a header that does not stand alone' 'bad.h> installed, C99' \
    "$here/headers.sh" "$cc" "$cxx" "$scratch/include" "$scratch/tree" none.h
refuses 'a public header that is not C' 'bad.h" in the tree, C99' \
    "$here/headers.sh" "$cc" "$cxx" "$scratch/include" "$scratch/tree" none.h
# The check of declarations uses an option that only GCC has.
if "$cc" -fsyntax-only -aux-info "$scratch/none" -x c /dev/null 2> "$scratch/log" && [[ ! -s $scratch/log ]]; then
    refuses 'a public function that is not exported' 'not expected: vym_sdk_done' \
        "$here/declarations.sh" "$cc" "$nm" "$readelf" "$include" "$sources" "$scratch/short.map" "$archive"
    echo 'int main(void) { return 0; }' > "$scratch/empty.c"
    "$cc" -c -o "$scratch/empty.o" "$scratch/empty.c"
    refuses 'a function that is declared only' 'but not in libvym.a with C linkage: .*vym_sdk_done' \
        "$here/declarations.sh" "$cc" "$nm" "$readelf" "$include" "$sources" "$map" "$scratch/empty.o"
fi
printf 'typedef struct tag_new {\n    int new_member;\n} new_t;\n' > "$scratch/include/vym/bad.h"
echo 'SIZE(old_t, 4);' > "$scratch/layouts.h"
refuses 'a type without a layout' 'missing: new_t: new_t:new_member' \
    "$here/layouts.sh" "$scratch/include" "$scratch/layouts.h"

# shares <library> <line of C>...: a library with debug information, and its header.
shares() {
    printf '%s\n' "${@:2}" > "$scratch/include/vym/bad.h"
    printf '#include "bad.h"\n%s\n' 'int first(struct s *p) { return p->a; } int second(void) { return 2; }' \
        > "$scratch/shared.c"
    "$cc" -g -shared -fPIC "-I$scratch/include/vym" -Wl,-soname,libvym.so.1 -o "$1" "$scratch/shared.c"
}
prototypes='int first(struct s *p); int second(void);'
shares "$scratch/last.so" 'struct s { int a; };' "$prototypes"
abidw --exported-interfaces-only --headers-dir "$scratch/include/vym" --out-file "$scratch/last.abi" "$scratch/last.so"
abi=("$here/abi.sh" "$scratch/next.so" "$scratch/include" "$scratch/last.abi")
shares "$scratch/next.so" 'struct s { int a; int b; };' "$prototypes"
refuses 'a structure that has grown' 'type size changed' "${abi[@]}"
shares "$scratch/next.so" 'struct s { int a; };' "$prototypes" '#define second static gone'
refuses 'a function that is gone' '1 Removed function' "${abi[@]}"
shares "$scratch/next.so" 'struct s { int a; };' "$prototypes"
"${abi[@]}" > "$scratch/log" || complain "refused without a change: $(cat "$scratch/log")"
# A C library's own objects may have debug information, too.
"$cc" -shared -fPIC "-I$scratch/include/vym" -Wl,--strip-debug -Wl,-soname,libvym.so.1 -o "$scratch/next.so" "$scratch/shared.c"
refuses 'a library whose types nobody can see' 'has no debug information' "${abi[@]}"
refuses 'a release without its interface' 'there is no interface' "${abi[@]:0:3}" "$scratch/none.abi"

recipes=$scratch/recipes
mkdir "$recipes"
cp -r "$sources"/../{CMakeLists.txt,LICENSE,packaging} "$recipes"
"$here/recipes.sh" "$recipes" > "$scratch/log" || complain "refused without a mistake: $(cat "$scratch/log")"
sed -i 's/^\(project(vym VERSION \)[0-9.]*/\19.9.9/; s/BUILD_TESTING/TESTING/' "$recipes/CMakeLists.txt"
echo >> "$recipes/LICENSE"
mv "$recipes"/packaging/yocto/recipes-connectivity/vym/vym_{*,9.9.9}.bb
for text in "vym.mk is about '" 'another checksum of LICENSE' 'no option BUILD_TESTING'; do
    refuses 'recipes for another tree' "$text" "$here/recipes.sh" "$recipes"
done
verdict 'each mistake was found'
