// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vymtrace: what crossed the library's socket, as a person reads it.
#include "vymtrace/program.h"

#include <iostream>
#include <unistd.h>

int main(int argc, char** argv) {
    return trace::run_program(argc, argv, STDOUT_FILENO, std::cerr);
}
