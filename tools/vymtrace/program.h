// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The program, but for its process.
#ifndef VYMTRACE_PROGRAM_H
#define VYMTRACE_PROGRAM_H

#include <iosfwd>

namespace trace {

/// Does what the command line says. Results go to the descriptor `out`, messages to `err`. @return the
/// exit code: 0 done, 1 something is wrong with a file, 2 with the command line.
int run_program(int argc, const char* const* argv, int out, std::ostream& err);

} // namespace trace

#endif
