// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "writer.h"

#include "format.h"

namespace capture {
namespace {

void append_number(std::string* out, uint64_t number, unsigned bytes) {
    for (unsigned i = bytes; i > 0; --i) {
        *out += static_cast<char>(number >> (8 * (i - 1)) & 0xFFU);
    }
}

} // namespace

void append_piece(std::string* out, bool is_command, int64_t time_us, std::string_view piece) {
    const std::string_view prefix = is_command ? kVendorCommand : kVendorEvent;
    const uint64_t length = prefix.size() + 1 + piece.size();
    append_number(out, length, 4);
    append_number(out, length, 4);
    append_number(out, is_command ? kCommandFlags : kEventFlags, 4);
    append_number(out, 0, 4);
    append_number(out, static_cast<uint64_t>(time_us) + kEpoch1970Us, 8);
    *out += prefix;
    *out += static_cast<char>(piece.size());
    *out += piece;
}

} // namespace capture
