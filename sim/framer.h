// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Cuts the client's byte stream into commands.
#ifndef VYM_SIM_FRAMER_H
#define VYM_SIM_FRAMER_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace sim {

/// Commands end with CR LF. A line longer than any command can be is dropped up to its end, so that a
/// client that never ends its line costs no memory.
class Framer {
public:
    /// The longest command: six blocks of 0xFFFF bytes, its fixed fields, and room to spare.
    static constexpr size_t kLongest = size_t{6} * 0xFFFF + 1024;

    struct Listener {
        /// A whole line with its CR LF.
        std::function<void(std::string_view line)> line;
        /// A piece of a line that was too long; `first` is true once per such line.
        std::function<void(std::string_view bytes, bool first)> dropped;
    };

    explicit Framer(Listener listener) : listener_(std::move(listener)) {}

    void feed(std::string_view bytes);

    /// What came after the last line end.
    const std::string& unfinished() const { return buffer_; }

private:
    void drop(std::string_view bytes);

    Listener listener_;
    std::string buffer_;
    size_t searched_ = 0;
    bool dropping_ = false;
};

} // namespace sim

#endif
