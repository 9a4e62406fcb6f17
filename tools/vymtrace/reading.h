// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Reading a file of records or texts from its beginning to its end, damaged places included.
#ifndef VYMTRACE_READING_H
#define VYMTRACE_READING_H

#include "capture/file.h"
#include "damage.h"

#include <cerrno>
#include <system_error>

namespace trace {

inline std::string cannot_be_read() {
    return "cannot be read: " + std::generic_category().message(errno) + "; expected a capture";
}

/// Takes everything that has been read so far. `take_next` takes what the reader has next, and is false
/// when it has nothing. False when the file is of another kind.
template <typename Reader, typename TakeNext>
bool drain(Reader& reader, Damage& damage, TakeNext take_next) {
    for (;;) {
        while (take_next()) {
        }
        if (!reader.problem()) {
            return true;
        }
        damage.note(*reader.problem());
        if (!reader.recover()) {
            return false;
        }
    }
}

/// As far as the file goes for now. @return the number of bytes; what is wrong is noted.
template <typename Reader, typename TakeNext>
uint64_t read_on(const capture::InputFile& file, Reader& reader, Damage& damage, TakeNext take_next) {
    for (uint64_t bytes = 0;;) {
        const long count = file.read(reader.space());
        if (count < 0) {
            damage.note(cannot_be_read());
        }
        if (count <= 0) {
            return bytes;
        }
        reader.filled(static_cast<size_t>(count));
        bytes += static_cast<uint64_t>(count);
        if (!drain(reader, damage, take_next)) {
            return bytes;
        }
    }
}

} // namespace trace

#endif
