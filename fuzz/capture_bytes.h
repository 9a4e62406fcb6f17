// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture's bytes given to its reader, a read at a time.
#ifndef VYM_FUZZ_CAPTURE_BYTES_H
#define VYM_FUZZ_CAPTURE_BYTES_H

#include "capture/texts.h"
#include "target.h"

#include <algorithm>

namespace fuzz {

/// Reads all of a capture in reads of `step` bytes, damaged places included, and calls each(text).
/// @return how often it was damaged.
template <class Each>
size_t read_capture_bytes(std::string_view bytes, size_t step, Each each) {
    capture::TextReader reader;
    size_t problems = 0;
    for (bool at_end = false; !at_end;) {
        const capture::RecordReader::Space space = reader.space();
        require(space.size > 0, "there is room for a record");
        const size_t count = std::min({space.size, step, bytes.size()});
        std::copy_n(bytes.data(), count, space.begin);
        bytes.remove_prefix(count);
        reader.filled(count);
        at_end = count == 0;
        if (at_end) {
            reader.finish();
        }
        bool goes_on = true;
        while (goes_on) {
            for (capture::Text text; reader.next(&text);) {
                each(text);
            }
            const bool damaged = reader.problem().has_value();
            problems += damaged ? 1 : 0;
            goes_on = damaged && reader.recover();
        }
        if (reader.problem()) {
            return problems; // not a capture at all
        }
    }
    each(reader.unfinished(true));
    each(reader.unfinished(false));
    return problems;
}

} // namespace fuzz

#endif
