// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The records of a capture, one after the other, however the file's bytes come in.
#ifndef VYM_CAPTURE_RECORDS_H
#define VYM_CAPTURE_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace capture {

/// No record is further from 1970; damaged times are brought in. The time between any two is a number.
inline constexpr int64_t kFarthestTime = (int64_t{1} << 62) - 1;

struct Record {
    /// The first one in the file is 1.
    uint64_t number = 0;
    /// Of its first byte in the file.
    uint64_t offset = 0;
    /// Microseconds since 1970.
    int64_t time_us = 0;
    uint32_t flags = 0;
    /// With its type byte.
    std::string_view packet;
};

/// What is wrong with a file, and where.
struct Problem {
    /// Missing when it is the file as a whole.
    std::optional<uint64_t> offset;
    std::string what;
};

/// "at byte 16: record 1 is cut off: ..."
std::string to_text(const Problem& problem);

/// Takes memory once, and none for a record.
class RecordReader {
public:
    RecordReader();

    struct Space {
        char* begin;
        size_t size;
    };
    /// Where the file's next bytes are to be put; never empty once next() has said that there is no
    /// further record. What earlier records point to ends here.
    Space space();
    void filled(size_t count) { end_ += count; }
    /// The file has no more bytes than came so far.
    void finish();

    /// Takes the next whole record; its packet is valid until space() is called. False when more bytes
    /// are needed, and after a problem.
    bool next(Record* record);

    const std::optional<Problem>& problem() const { return problem_; }
    /// After a problem: goes on at the next place that looks like a record. The problem is forgotten.
    /// False when the file is of another kind, or at its end.
    bool recover();

private:
    bool read_header();
    bool find_record();
    void check_end();
    void fail(std::optional<uint64_t> offset, const std::string& what) { problem_ = {offset, what}; }
    void fail_cut(size_t there, const std::string& whole);
    size_t left() const { return end_ - at_; }
    uint64_t offset() const { return base_ + at_; }

    std::unique_ptr<char[]> buffer_;
    size_t at_ = 0;
    size_t end_ = 0;
    /// Where in the file the buffer begins.
    uint64_t base_ = 0;
    uint64_t number_ = 0;
    bool in_records_ = false;
    bool searching_ = false;
    bool finished_ = false;
    std::optional<Problem> problem_;
};

} // namespace capture

#endif
