// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture that can be given to others.
#ifndef VYMTRACE_SCRUB_H
#define VYMTRACE_SCRUB_H

#include <iosfwd>
#include <string>

namespace trace {

/// Writes `to`, the capture `from` without what is private. Each record stands where it stood and has
/// as many bytes as it had, but where a value has got another length. @return the exit code.
int scrub(const std::string& from, const std::string& to, std::ostream& err);

} // namespace trace

#endif
