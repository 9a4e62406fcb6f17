// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The commands and events of a capture.
#ifndef VYM_CAPTURE_TEXTS_H
#define VYM_CAPTURE_TEXTS_H

#include "joiner.h"
#include "records.h"

#include <optional>
#include <string_view>

namespace capture {

struct Text {
    bool is_command = false;
    /// False at the end of a file, and in one that was damaged: the end of the text is missing.
    bool whole = true;
    /// The record in which it ends, its place in the file and its time in microseconds since 1970.
    uint64_t record = 0;
    uint64_t offset = 0;
    int64_t time_us = 0;
    /// A command with its CR LF, an event without its NUL.
    std::string_view text;
};

/// What a record carries of the library's text.
struct Piece {
    bool is_command = false;
    std::string_view text;
};

/// Nothing for a packet of another kind: an application may record such, too. A piece that is not as
/// long as it says is told in `problem`.
std::optional<Piece> piece_of(const Record& record, std::optional<Problem>* problem);

/// In the order in which they were recorded.
class TextReader {
public:
    RecordReader::Space space() { return records_.space(); }
    void filled(size_t count) { records_.filled(count); }
    void finish() { records_.finish(); }

    /// The text is valid until the next call of any function. False when more bytes are needed, and
    /// after a problem.
    bool next(Text* text);

    const std::optional<Problem>& problem() const { return problem_ ? problem_ : records_.problem(); }
    /// As RecordReader's.
    bool recover();

    /// At the end of the file: what of a command, or of an event, is there without an end.
    Text unfinished(bool is_command) const;

    /// Records so far, those without text too.
    uint64_t records() const { return record_.number; }

private:
    RecordReader records_;
    Record record_;
    /// The last record of each direction that had text.
    Record last_command_;
    Record last_event_;
    Joiner commands_{true};
    Joiner events_{false};
    /// The one whose record was the last.
    Joiner* current_ = nullptr;
    std::optional<Problem> problem_;
};

} // namespace capture

#endif
