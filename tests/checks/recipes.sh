#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# What other build systems read agrees with the tree: version, licence, the names of options and files. Yocto's
# and Buildroot's own tools are not needed for that, and not asked.
# usage: recipes.sh <source directory>
set -euo pipefail
source "$(dirname "$0")/common.sh"
tree=$1
buildroot=$tree/packaging/buildroot
version=$(sed -n 's/^project(vym VERSION \([0-9.]*\) .*/\1/p' "$tree/CMakeLists.txt")

# What Buildroot makes of the package, as far as make alone can tell.
# shellcheck disable=SC2016 # for make
printf '%s\n' 'inner = $(foreach v,$(sort $(filter VYM_%,$(.VARIABLES))),$(info $(v)=$(strip $($(v)))))' \
    'cmake-package = $(call inner)' 'include $(BR2_EXTERNAL_VYM_PATH)/external.mk' 'all: ;' > "$scratch/stub.mk"
make -s --no-print-directory -f "$scratch/stub.mk" "BR2_EXTERNAL_VYM_PATH=$buildroot" all > "$scratch/package" ||
    complain 'make cannot read the package'

# said <variable of the package>
said() {
    sed -n "s/^$1=//p" "$scratch/package"
}
[[ $(said VYM_VERSION) == "$version" ]] || complain "vym.mk is about '$(said VYM_VERSION)', the tree is $version"
[[ $(said VYM_SITE) -ef $tree ]] || complain "vym.mk takes the sources from '$(said VYM_SITE)'"
[[ -e $tree/$(said VYM_LICENSE_FILES) ]] || complain "vym.mk names no licence: $(said VYM_LICENSE_FILES)"
grep -qx 'name: VYM' "$buildroot/external.desc" || complain 'external.desc has another name than the variables'

# Every menu that is sourced is there, and every package can be chosen.
while read -r path; do
    [[ -e ${path/\$BR2_EXTERNAL_VYM_PATH/$buildroot} ]] || complain "Config.in sources $path, which is not there"
done < <(sed -n 's/^source "\(.*\)"$/\1/p' "$buildroot/Config.in")
grep -qx 'config BR2_PACKAGE_VYM' "$buildroot/package/vym/Config.in" || complain 'nothing selects the package'

recipe=$(find "$tree/packaging/yocto" -name "vym_$version.bb")
[[ -n $recipe ]] || complain "there is no recipe vym_$version.bb"
if [[ -n $recipe ]]; then
    checksum=$(md5sum < "$tree/LICENSE")
    grep -q "file://LICENSE;md5=${checksum%% *}\"" "$recipe" || complain 'the recipe has another checksum of LICENSE'
    up=$(sed -n "s/.*d.getVar('THISDIR') + '\([^']*\)'.*/\1/p" "$recipe")
    [[ $(dirname "$recipe")$up -ef $tree ]] || complain "the recipe takes the sources from THISDIR$up"
    # In quotes from end to end, continued lines too.
    sed -e ':a' -e '/\\$/N; s/\\\n//; ta' "$recipe" "$tree/packaging/yocto/conf/layer.conf" |
        grep -vE '^(#.*|inherit [a-z ]+|[^ "]+ *([?:.+]|[?][?])?= *"[^"]*")?$' > "$scratch/odd" || true
    [[ ! -s $scratch/odd ]] || complain "not understood: $(head -1 "$scratch/odd")"
fi

while read -r option; do
    grep -rqE "option\($option |$option \"" "$tree/CMakeLists.txt" || complain "there is no option $option"
done < <(cat "$recipe" "$scratch/package" | grep -oE -- '-D[A-Z_]+=' | sed 's/^-D//; s/=//' | sort -u)
verdict "version $version"
