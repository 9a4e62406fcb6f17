// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "described.h"

#include "protocol/codec.h"
#include "wire.h"

namespace sim {
namespace {

constexpr size_t kLongestValue = 120;
constexpr size_t kLongestLine = 400;

/// Never ends inside a character of UTF-8.
std::string shortened(const std::string& text, size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end) + "...";
}

} // namespace

std::string name_of(const protocol::Found& found) {
    return std::string(found.profile->name).append(" ").append(found.message->name);
}

std::string described(protocol::Direction direction, std::string_view text) {
    const protocol::Decoded decoded = protocol::decode(direction, text);
    if (!decoded.found) {
        return "unknown: " + printable(text);
    }
    std::string line = name_of(decoded.found);
    for (const protocol::Value& value : decoded.values) {
        line.append(" ").append(value.field->name).append("=");
        line += shortened(protocol::to_text(value), kLongestValue);
    }
    line = shortened(line, kLongestLine);
    if (!decoded.problem.empty()) {
        line += " (" + printable(decoded.problem) + ")";
    } else if (!decoded.surplus.empty()) {
        line += " (surplus \"" + printable(decoded.surplus, 40) + "\")";
    }
    return line;
}

} // namespace sim
