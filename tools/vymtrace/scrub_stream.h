// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes of one direction, and what they became.
#ifndef VYMTRACE_SCRUB_STREAM_H
#define VYMTRACE_SCRUB_STREAM_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace trace {

/// Positions count the bytes of a direction as they were, repetitions left out.
class StreamMap {
public:
    struct Range {
        uint64_t begin = 0;
        uint64_t end = 0;
    };

    /// The next `count` bytes become these.
    void add(uint64_t count, std::string_view bytes);

    /// Up to here it is known what the bytes become.
    uint64_t known() const { return known_; }

    /// What a known range becomes.
    std::string_view bytes(Range range) const;

    /// Nobody will ask for what is before this position, but from the beginning of its text on.
    void forget(uint64_t position);

private:
    struct Segment {
        Range from;
        Range to;
    };
    /// Within a text of another length, as many bytes of it as there are.
    uint64_t mapped(uint64_t position) const;

    std::deque<Segment> segments_;
    std::string bytes_;
    /// Where in what it becomes the bytes begin.
    uint64_t base_ = 0;
    uint64_t known_ = 0;
};

} // namespace trace

#endif
