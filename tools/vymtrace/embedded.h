// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Files of the source tree that are part of the program.
#ifndef VYMTRACE_EMBEDDED_H
#define VYMTRACE_EMBEDDED_H

#include <string_view>

namespace trace {

/// dissector.lua, with @TABLES@ where the tables belong.
extern const std::string_view kDissector;
/// report.html, with @DATA@ where the data belongs.
extern const std::string_view kReport;

} // namespace trace

#endif
