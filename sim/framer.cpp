// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "framer.h"

namespace sim {

void Framer::drop(std::string_view bytes) {
    listener_.dropped(bytes, !dropping_);
    dropping_ = true;
}

void Framer::feed(std::string_view bytes) {
    buffer_ += bytes;
    size_t begin = 0;
    for (;;) {
        const size_t end = buffer_.find("\r\n", searched_);
        if (end == std::string::npos) {
            break;
        }
        const std::string_view line = std::string_view(buffer_).substr(begin, end + 2 - begin);
        if (dropping_ || line.size() > kLongest) {
            drop(line);
            dropping_ = false;
        } else {
            listener_.line(line);
        }
        begin = searched_ = end + 2;
    }
    buffer_.erase(0, begin);
    // A CR at the very end may turn out to be half of a line end: it is looked at again, and never
    // dropped.
    const size_t settled =
        !buffer_.empty() && buffer_.back() == '\r' ? buffer_.size() - 1 : buffer_.size();
    searched_ = settled;
    if (dropping_ || buffer_.size() > kLongest) {
        drop(std::string_view(buffer_).substr(0, settled));
        buffer_.erase(0, settled);
        searched_ = 0;
    }
}

} // namespace sim
