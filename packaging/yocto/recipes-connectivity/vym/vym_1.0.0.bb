# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

SUMMARY = "Bluetooth client library for embedded Linux"
DESCRIPTION = "A plain C interface to Bluetooth: the library talks to a server daemon that owns the controller."
SECTION = "libs"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=00542fa05d5ef80add9ad6ff41455411"

# The tree that this layer is part of; a product names its own mirror and release here.
inherit externalsrc
EXTERNALSRC ?= "${@os.path.normpath(d.getVar('THISDIR') + '/../../../..')}"
EXTERNALSRC_BUILD = "${WORKDIR}/build"

inherit cmake pkgconfig

EXTRA_OECMAKE = "-DBUILD_TESTING=OFF -DVYM_BUILD_EXAMPLES=OFF -DVYM_BUILD_SIM=OFF"

# The programs need header-only libraries, asio, cli11 and nlohmann-json, of meta-oe.
PACKAGECONFIG ??= ""
PACKAGECONFIG[tools] = "-DVYM_BUILD_TOOLS=ON,-DVYM_BUILD_TOOLS=OFF,asio cli11 nlohmann-json"

PACKAGE_BEFORE_PN = "${PN}-tools"
FILES:${PN}-tools = "${bindir} ${datadir}/vym ${datadir}/bash-completion ${datadir}/zsh"
ALLOW_EMPTY:${PN}-tools = "1"

BBCLASSEXTEND = "native nativesdk"
