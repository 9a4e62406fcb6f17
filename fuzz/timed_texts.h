// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands and events with times, as a reader of captures would give them.
#ifndef VYM_FUZZ_TIMED_TEXTS_H
#define VYM_FUZZ_TIMED_TEXTS_H

#include "capture/texts.h"
#include "target.h"

#include <algorithm>

namespace fuzz {

/// A number of eight bytes, taken off.
inline uint64_t take_number(std::string_view& input) {
    uint64_t number = 0;
    for (size_t i = 0; i < sizeof number && !input.empty(); ++i) {
        number = number << 8U | byte_at(input, 0);
        input.remove_prefix(1);
    }
    return number;
}

/// Calls each(text) for each text of the input: the first one's time, the time between two, and texts
/// that end in NUL. What begins with "AT#" is a command.
template <class Each>
void each_timed_text(std::string_view input, Each each) {
    uint64_t time = take_number(input);
    const uint64_t step = take_number(input);
    for (capture::Text text; !input.empty(); time += step) {
        const std::string_view one = input.substr(0, input.find('\0'));
        text.text = one;
        text.is_command = one.substr(0, 3) == "AT#";
        text.whole = !text.is_command || (one.size() >= 5 && one.substr(one.size() - 2) == "\r\n");
        text.time_us =
            std::clamp(static_cast<int64_t>(time), -capture::kFarthestTime, capture::kFarthestTime);
        text.offset = ++text.record;
        each(text);
        input.remove_prefix(one.size() < input.size() ? one.size() + 1 : one.size());
    }
}

} // namespace fuzz

#endif
