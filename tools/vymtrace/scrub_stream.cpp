// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "scrub_stream.h"

#include <algorithm>

namespace trace {

void StreamMap::add(uint64_t count, std::string_view bytes) {
    if (count == 0 && bytes.empty()) {
        return;
    }
    const uint64_t begin = base_ + bytes_.size();
    segments_.push_back({{known_, known_ + count}, {begin, begin + bytes.size()}});
    known_ += count;
    bytes_ += bytes;
}

uint64_t StreamMap::mapped(uint64_t position) const {
    const auto segment =
        std::partition_point(segments_.begin(), segments_.end(),
                             [position](const Segment& each) { return each.from.end <= position; });
    if (segment == segments_.end()) {
        return base_ + bytes_.size();
    }
    if (position < segment->from.begin) {
        return segment->to.begin;
    }
    return std::min(segment->to.begin + (position - segment->from.begin), segment->to.end);
}

std::string_view StreamMap::bytes(Range range) const {
    const uint64_t begin = mapped(range.begin);
    const uint64_t end = mapped(range.end);
    return std::string_view(bytes_).substr(static_cast<size_t>(begin - base_),
                                           static_cast<size_t>(end - begin));
}

void StreamMap::forget(uint64_t position) {
    // Moving the rest to the front each time would take longer than all the rest.
    constexpr size_t kEnough = 65536;
    if (segments_.empty() || bytes_.size() < kEnough) {
        return;
    }
    while (!segments_.empty() && segments_.front().from.end <= position) {
        segments_.pop_front();
    }
    const uint64_t begin = segments_.empty() ? base_ + bytes_.size() : segments_.front().to.begin;
    bytes_.erase(0, static_cast<size_t>(begin - base_));
    base_ = begin;
}

} // namespace trace
