// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "times.h"

#include <cctype>
#include <cstdio>

namespace trace {
namespace {

constexpr int64_t kSecond = 1000000;

tm broken_down(int64_t seconds, bool utc) {
    const auto time = static_cast<time_t>(seconds);
    tm parts{};
    if ((utc ? gmtime_r(&time, &parts) : localtime_r(&time, &parts)) == nullptr) {
        parts = tm{};
    }
    return parts;
}

int64_t seconds_since_1970(tm parts, bool utc) {
    parts.tm_isdst = -1;
    return utc ? timegm(&parts) : mktime(&parts);
}

/// Rounded down, before 1970 too.
int64_t whole_seconds(int64_t us) {
    return us / kSecond - (us % kSecond < 0 ? 1 : 0);
}

/// Reads from the front of a text.
class Cursor {
public:
    explicit Cursor(const std::string& text) : text_(text) {}

    bool at_end() const { return at_ == text_.size(); }
    bool skip(char c) {
        const bool is_there = !at_end() && text_[at_] == c;
        at_ += is_there ? 1 : 0;
        return is_there;
    }
    /// A number of at least one and at most `most` digits, up to `limit`.
    std::optional<int> number(size_t most, int limit) {
        int value = 0;
        const size_t begin = at_;
        while (!at_end() && at_ - begin < most && is_digit()) {
            value = value * 10 + (text_[at_++] - '0');
        }
        return at_ > begin && value <= limit ? std::optional<int>(value) : std::nullopt;
    }
    /// What may stand behind whole seconds, in microseconds.
    std::optional<int64_t> fraction() {
        if (!skip('.')) {
            return 0;
        }
        int64_t us = 0;
        int64_t unit = kSecond / 10;
        const size_t begin = at_;
        for (; !at_end() && is_digit(); ++at_, unit /= 10) {
            us += (text_[at_] - '0') * unit;
        }
        return at_ > begin ? std::optional<int64_t>(us) : std::nullopt;
    }

private:
    bool is_digit() const { return std::isdigit(static_cast<unsigned char>(text_[at_])) != 0; }

    const std::string& text_;
    size_t at_ = 0;
};

/// "02:09", "02:09:06", "02:09:06.5": microseconds since midnight.
std::optional<int64_t> parse_of_day(Cursor* cursor) {
    const auto hour = cursor->number(2, 23);
    if (!hour || !cursor->skip(':')) {
        return std::nullopt;
    }
    const auto minute = cursor->number(2, 59);
    std::optional<int> second = 0;
    std::optional<int64_t> us = 0;
    if (minute && cursor->skip(':')) {
        second = cursor->number(2, 60);
        us = cursor->fraction();
    }
    if (!minute || !second || !us) {
        return std::nullopt;
    }
    return ((*hour * 60 + *minute) * 60 + *second) * kSecond + *us;
}

std::optional<TimeLimit> parse_date(const std::string& text, bool utc) {
    Cursor cursor(text);
    const auto year = cursor.number(4, 9999);
    const bool has_month = cursor.skip('-');
    const auto month = cursor.number(2, 12);
    const bool has_day = cursor.skip('-');
    const auto day = cursor.number(2, 31);
    if (!year || !has_month || !month || !has_day || !day || *month == 0 || *day == 0) {
        return std::nullopt;
    }
    std::optional<int64_t> of_day = 0;
    if (cursor.skip(' ') || cursor.skip('T')) {
        of_day = parse_of_day(&cursor);
    }
    const bool is_utc = cursor.skip('Z') || utc;
    if (!of_day || !cursor.at_end()) {
        return std::nullopt;
    }
    tm parts{};
    parts.tm_year = *year - 1900;
    parts.tm_mon = *month - 1;
    parts.tm_mday = *day;
    const int64_t second_of_day = *of_day / kSecond;
    parts.tm_hour = static_cast<int>(second_of_day / 3600);
    parts.tm_min = static_cast<int>(second_of_day / 60 % 60);
    parts.tm_sec = static_cast<int>(second_of_day % 60);
    return TimeLimit{TimeLimit::Kind::Absolute,
                     seconds_since_1970(parts, is_utc) * kSecond + *of_day % kSecond};
}

std::optional<TimeLimit> parse_from_first(const std::string& text) {
    Cursor cursor(text);
    cursor.skip('+');
    const auto seconds = cursor.number(9, 999999999);
    const auto us = seconds ? cursor.fraction() : std::nullopt;
    if (!us || !cursor.at_end()) {
        return std::nullopt;
    }
    return TimeLimit{TimeLimit::Kind::FromFirst, *seconds * kSecond + *us};
}

} // namespace

void TimeWriter::append(std::string* text, int64_t time_us) {
    const int64_t second = whole_seconds(time_us);
    if (second_ != second) {
        const tm parts = broken_down(second, utc_);
        char date[64];
        std::snprintf(date, sizeof(date), "%04d-%02d-%02d%c%02d:%02d:%02d", parts.tm_year + 1900,
                      parts.tm_mon + 1, parts.tm_mday, between_, parts.tm_hour, parts.tm_min,
                      parts.tm_sec);
        second_text_ = date;
        second_ = second;
    }
    *text += second_text_;
    char fraction[8] = ".000000";
    int64_t rest = time_us - second * kSecond;
    for (size_t i = 6; rest > 0; --i, rest /= 10) {
        fraction[i] = static_cast<char>('0' + rest % 10);
    }
    text->append(fraction, sizeof(fraction) - 1);
}

std::optional<TimeLimit> parse_time(const std::string& text, bool utc) {
    if (!text.empty() && text[0] == '+') {
        return parse_from_first(text);
    }
    if (const auto date = parse_date(text, utc)) {
        return date;
    }
    Cursor cursor(text);
    const auto of_day = parse_of_day(&cursor);
    if (!of_day || !cursor.at_end()) {
        return std::nullopt;
    }
    return TimeLimit{TimeLimit::Kind::OfDay, *of_day};
}

int64_t resolve(const TimeLimit& limit, int64_t first_us, bool utc) {
    switch (limit.kind) {
    case TimeLimit::Kind::OfDay: {
        tm parts = broken_down(whole_seconds(first_us), utc);
        parts.tm_hour = parts.tm_min = parts.tm_sec = 0;
        return seconds_since_1970(parts, utc) * kSecond + limit.us;
    }
    case TimeLimit::Kind::FromFirst:
        return first_us + limit.us;
    case TimeLimit::Kind::Absolute:
        break;
    }
    return limit.us;
}

} // namespace trace
