// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Pieces of JSON.
#ifndef VYMTRACE_JSON_TEXT_H
#define VYMTRACE_JSON_TEXT_H

#include "protocol/codec.h"

#include <string>
#include <string_view>
#include <vector>

namespace trace {

/// In quotation marks; what is no UTF-8 becomes U+FFFD.
void append_json_string(std::string* json, std::string_view text);

/// Numbers are numbers, lists arrays, groups objects; addresses, UUIDs and text are strings, and bytes
/// strings of hexadecimal digits.
void append_json(std::string* json, const protocol::Value& value);

/// An object with the names of the fields.
void append_json(std::string* json, const std::vector<protocol::Value>& values);

} // namespace trace

#endif
