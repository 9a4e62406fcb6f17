// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The plug-in for Wireshark and tshark.
#ifndef VYMTRACE_DISSECTOR_H
#define VYMTRACE_DISSECTOR_H

#include <string>

namespace trace {

/// A Lua script, made from the description of the protocol.
std::string dissector();

} // namespace trace

#endif
