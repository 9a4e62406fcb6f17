// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A record of the bytes that crossed the socket, for comparison with what the client captured.
#ifndef VYM_SIM_TRAFFIC_H
#define VYM_SIM_TRAFFIC_H

#include <fstream>
#include <string>
#include <string_view>

namespace sim {

/// One line per command or event: "< " (from the client) or "> " (to it) and its bytes in hexadecimal,
/// with the end mark that it had on the socket; "> fd 00" is a descriptor and the byte that it rode on.
/// The bytes of all lines of one direction, joined, are the stream.
class Traffic {
public:
    /// Records nothing when `path` is empty. Throws std::runtime_error when the file cannot be written.
    explicit Traffic(const std::string& path);

    void received(std::string_view bytes) { write("< ", bytes); }
    void sent(std::string_view bytes) { write("> ", bytes); }
    void sent_descriptor(std::string_view bytes) { write("> fd ", bytes); }

private:
    void write(std::string_view mark, std::string_view bytes);

    std::ofstream file_;
};

} // namespace sim

#endif
