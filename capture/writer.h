// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Writing records as the library does.
#ifndef VYM_CAPTURE_WRITER_H
#define VYM_CAPTURE_WRITER_H

#include <cstdint>
#include <string>
#include <string_view>

namespace capture {

/// Appends the record of one piece of a command or of received text; at most 255 bytes.
void append_piece(std::string* out, bool is_command, int64_t time_us, std::string_view piece);

} // namespace capture

#endif
