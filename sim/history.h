// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The commands that came and the events that went, for whoever waits for one: as many as are worth
// looking back on.
#ifndef VYM_SIM_HISTORY_H
#define VYM_SIM_HISTORY_H

#include "protocol/protocol.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

class History {
public:
    struct Entry {
        /// Counts commands and events together, from 1.
        uint64_t number;
        protocol::Direction direction;
        /// Without "AT#", line end and NUL.
        std::string text;
    };

    void add(protocol::Direction direction, std::string_view text);

    /// What the next entry will have.
    uint64_t next_number() const { return next_; }
    /// The oldest entry of this direction with at least this number, or nullptr.
    const Entry* find(protocol::Direction direction, uint64_t from) const;
    /// The newest ones, the newest last, as people read them.
    std::vector<std::string> last(protocol::Direction direction, size_t count) const;

private:
    std::deque<Entry> entries_;
    size_t bytes_ = 0;
    uint64_t next_ = 1;
};

/// "hfp.dial number="123"", with what is wrong with it; of one that nobody knows, what came.
std::string in_words(protocol::Direction direction, std::string_view text);

} // namespace sim

#endif
