// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "history.h"

#include "protocol/codec.h"
#include "wire.h"

#include <algorithm>

namespace sim {
namespace {

// More than what can be on its way while a script does not look, and no burden on memory.
constexpr size_t kMostEntries = 1000;
constexpr size_t kMostBytes = size_t{4} * 1024 * 1024;
/// The longest line that somebody is shown.
constexpr size_t kLongestShown = 300;

} // namespace

void History::add(protocol::Direction direction, std::string_view text) {
    entries_.push_back({next_++, direction, std::string(text)});
    bytes_ += text.size();
    while (entries_.size() > kMostEntries || (bytes_ > kMostBytes && entries_.size() > 1)) {
        bytes_ -= entries_.front().text.size();
        entries_.pop_front();
    }
}

const History::Entry* History::find(protocol::Direction direction, uint64_t from) const {
    const auto it = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.number >= from && entry.direction == direction;
    });
    return it == entries_.end() ? nullptr : &*it;
}

std::vector<std::string> History::last(protocol::Direction direction, size_t count) const {
    std::vector<std::string> lines;
    for (auto it = entries_.rbegin(); it != entries_.rend() && lines.size() < count; ++it) {
        if (it->direction == direction) {
            lines.push_back(in_words(direction, it->text));
        }
    }
    std::reverse(lines.begin(), lines.end());
    return lines;
}

std::string in_words(protocol::Direction direction, std::string_view text) {
    const protocol::Decoded decoded = protocol::decode(direction, text);
    if (!decoded.found) {
        return "unknown \"" + printable(text) + '"';
    }
    std::string line(decoded.found.profile->name);
    line.append(".").append(decoded.found.message->name);
    const std::string fields = protocol::to_text(decoded.values);
    line += fields.empty() ? "" : ' ' + fields;
    line += decoded.problem.empty() ? "" : " (" + decoded.problem + ')';
    if (line.size() > kLongestShown) {
        line.resize(kLongestShown);
        line += "...";
    }
    return line;
}

} // namespace sim
