// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "lines.h"

#include "protocol/append.h"

#include <charconv>
#include <string>

namespace trace {
namespace {

// Of the numbers of records, and of the longest name of a profile.
constexpr size_t kNumberWidth = 7;
constexpr size_t kProfileWidth = 12;

constexpr std::string_view kDim = "\x1B[2m";
constexpr std::string_view kBold = "\x1B[1m";
constexpr std::string_view kRed = "\x1B[31m";
constexpr std::string_view kCyan = "\x1B[36m";
constexpr std::string_view kGreen = "\x1B[32m";
constexpr std::string_view kPlain = "\x1B[0m";

void append_left(std::string* line, std::string_view text, size_t width) {
    *line += text;
    line->append(text.size() < width ? width - text.size() : 0, ' ');
}

void append_right(std::string* line, std::string_view text, size_t width) {
    line->append(text.size() < width ? width - text.size() : 0, ' ');
    *line += text;
}

/// Switches a colour on for as long as it lives.
class Coloured {
public:
    Coloured(std::string* line, std::string_view colour, bool enabled)
        : line_(line), enabled_(enabled) {
        *line_ += enabled_ ? colour : "";
    }
    ~Coloured() { *line_ += enabled_ ? kPlain : ""; }
    Coloured(const Coloured&) = delete;
    Coloured& operator=(const Coloured&) = delete;
    Coloured(Coloured&&) = delete;
    Coloured& operator=(Coloured&&) = delete;

private:
    std::string* line_;
    bool enabled_;
};

std::string remark(const Item& item) {
    if (!item.problem().empty()) {
        return std::string(item.problem());
    }
    const std::string_view surplus = item.decoded().surplus;
    return surplus.empty() ? "" : "surplus " + in_quotes(surplus);
}

} // namespace

std::string in_quotes(std::string_view text) {
    // As the protocol's own texts are written.
    static constexpr protocol::Field kText{"text", protocol::Type::Text};
    protocol::Value value;
    value.field = &kText;
    value.bytes = text;
    return to_text(value);
}

void Lines::take(const Item& item) {
    std::string& line = out_.line();
    const bool colour = style_.colour;
    {
        const Coloured dim(&line, kDim, colour);
        times_.append(&line, item.text().time_us);
        char number[24];
        const char* end = std::to_chars(number, number + sizeof(number), item.text().record).ptr;
        append_right(&line, {number, static_cast<size_t>(end - number)}, kNumberWidth);
    }
    line += item.text().is_command ? " > " : " < ";
    const protocol::Found& found = item.found();
    if (found) {
        const Coloured hue(&line, item.text().is_command ? kCyan : kGreen, colour);
        append_left(&line, found.profile->name, kProfileWidth);
        const Coloured bold(&line, kBold, colour);
        line += found.message->name;
    } else {
        append_left(&line, "?", kProfileWidth);
        line += in_quotes(item.body());
    }
    for (const protocol::Value& value : item.decoded().values) {
        protocol::append_all(&line, " ", value.field->name, "=");
        append_text(&line, value);
    }
    const std::string wrong = remark(item);
    if (!wrong.empty()) {
        line += ' ';
        const Coloured red(&line, kRed, colour);
        // A message of the codec may quote what it did not understand.
        for (const char c : '(' + wrong + ')') {
            line += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
        }
    }
    out_.end_line();
}

} // namespace trace
