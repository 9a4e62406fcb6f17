// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A recorded conversation: the capture that the library writes while a client runs, client_sock.log.
#ifndef VYM_SIM_CAPTURE_H
#define VYM_SIM_CAPTURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

/// One whole command or event of a capture.
struct CapturedText {
    bool is_command = false;
    /// The record in which it ends; the first one in the file is 1.
    uint64_t record = 0;
    /// A command with its CR LF, an event without its NUL.
    std::string text;
    /// When that record was written, in microseconds.
    int64_t time_us = 0;
};

/// The commands and events of a capture in the order in which they were recorded. Text without its end
/// mark, as at the end of a conversation, is left out. Throws FileError, also for a capture that is cut
/// off.
std::vector<CapturedText> read_capture(const std::string& path);

} // namespace sim

#endif
