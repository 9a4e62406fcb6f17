# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# A thin front for people. Every target installs the Debian packages it needs, as root or with sudo.

.DEFAULT_GOAL := help
.PHONY: demo test unit asan tsan arm musl evil fuzz fuzz-coverage killed soak valgrind bench docs abi deb lint format library install clean help
PREFIX ?= /usr/local

demo: ## see the library at work against a simulated server
	@scripts/demo

test: ## all tests: debug, sanitizers, 32-bit ARM under emulation
	@scripts/test

unit: ## the tests of the debug build only
	@scripts/test dev

musl: ## the library with the musl C library
	@scripts/test musl

asan: ## the tests with the address and undefined-behaviour sanitizers
	@scripts/test asan

tsan: ## the tests with the thread sanitizer
	@scripts/test tsan

arm: ## the tests on 32-bit ARM under emulation
	@scripts/test arm

evil: ## an application of all profiles against a server that misbehaves (EVIL_SEEDS=1000)
	@scripts/evil

killed: ## the examples, and vymctl, against a server that is killed or stalls after each message
	@scripts/killed

fuzz: ## the fuzz targets, FUZZ_SECONDS (60) each
	@scripts/fuzz

fuzz-coverage: ## the lines of the library that the fuzz targets reach
	@scripts/fuzz --coverage

soak: ## millions of events and commands: nothing lost, nothing grown (SOAK_EVENTS, SOAK_COMMANDS)
	@scripts/soak

valgrind: ## the unit and wire tests under memcheck
	@scripts/valgrind

bench: ## what the library costs, beside what else could be used
	@scripts/bench

docs: ## the guides and the API reference, in build/docs/docs/html
	@scripts/docs

abi: ## the library's interface, compared with that of the last release
	@scripts/abi

deb: ## Debian packages for this machine and armhf: built, checked, installed, used, removed
	@scripts/deb

lint: ## formatting and static analysis
	@scripts/lint

format: ## format the sources
	@scripts/install-packages lint
	@scripts/format

library: ## the release build of the library alone; needs nothing but a compiler and CMake
	@cmake -S . -B build/library -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DVYM_BUILD_SIM=OFF \
		-DVYM_BUILD_TOOLS=OFF -DVYM_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX=$(PREFIX)
	@cmake --build build/library

install: library ## install the library for release builds (PREFIX=/usr/local, DESTDIR)
	@cmake --install build/library --prefix $(PREFIX)

clean: ## remove everything that was built
	rm -rf build

help: ## this list
	@echo 'usage: make <target>'
	@sed -n 's/^\([a-z-]*\):[^#]*## \(.*\)$$/  \1|\2/p' Makefile | awk -F '|' '{ printf "%-15s %s\n", $$1, $$2 }'
