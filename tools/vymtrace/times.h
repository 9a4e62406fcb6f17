// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Points in time as a person writes them.
#ifndef VYMTRACE_TIMES_H
#define VYMTRACE_TIMES_H

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace trace {

/// Appends times such as "2026-11-22 02:09:06.123456"; quick for times that lie close together.
class TimeWriter {
public:
    explicit TimeWriter(bool utc, char between = ' ') : utc_(utc), between_(between) {}
    void append(std::string* text, int64_t time_us);

private:
    bool utc_;
    char between_;
    std::optional<int64_t> second_;
    std::string second_text_;
};

/// What --since and --until say.
struct TimeLimit {
    enum class Kind : uint8_t {
        Absolute,  // since 1970
        OfDay,     // since the midnight before the first record
        FromFirst, // since the first record
    };
    Kind kind = Kind::Absolute;
    int64_t us = 0;
};

/// Reads "2026-11-22 02:09:06.5", with a T in between or a Z behind it too, the date alone, "02:09",
/// "02:09:06.5", "+12.5" (seconds from the first record on).
std::optional<TimeLimit> parse_time(const std::string& text, bool utc);

/// Microseconds since 1970.
int64_t resolve(const TimeLimit& limit, int64_t first_us, bool utc);

} // namespace trace

#endif
