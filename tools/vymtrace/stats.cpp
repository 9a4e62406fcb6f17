// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "stats.h"

#include "stats_text.h"

#include <algorithm>
#include <tuple>

namespace trace {
namespace {

// What a person would call a pause, and as many as fit a screen.
constexpr int64_t kShortestGapUs = 1000000;
constexpr size_t kMostGaps = 10;

} // namespace

void Stats::look_at_time(const Item& item) {
    const int64_t now_us = item.text().time_us;
    if (summary_.commands + summary_.events == 0) {
        summary_.first_us = summary_.last_us = now_us;
        return;
    }
    const int64_t us = now_us - summary_.last_us;
    summary_.steps_back += us < 0 ? 1 : 0;
    if (us >= kShortestGapUs) {
        std::vector<Gap>& gaps = summary_.gaps;
        const auto place =
            std::find_if(gaps.begin(), gaps.end(), [us](const Gap& gap) { return gap.us < us; });
        gaps.insert(place, {us, summary_.last_us, item.text().record});
        gaps.resize(std::min(gaps.size(), kMostGaps));
    }
    summary_.last_us = now_us;
}

void Stats::take(const Item& item) {
    look_at_time(item);
    const capture::Text& text = item.text();
    (text.is_command ? summary_.commands : summary_.events) += 1;
    summary_.bytes += text.text.size();
    if (!item.found()) {
        ++summary_.unknown;
        return;
    }
    Count& count = counts_[item.found().message];
    count.found = item.found();
    count.is_command = text.is_command;
    ++count.count;
    count.bytes += text.text.size();
    round_trips_.take(item);
}

Stats::Summary Stats::summary() const {
    Summary summary = summary_;
    for (const auto& [message, count] : counts_) {
        summary.messages.push_back(count);
    }
    std::sort(summary.messages.begin(), summary.messages.end(), [](const Count& a, const Count& b) {
        const auto key = [](const Count& count) {
            return std::make_tuple(UINT64_MAX - count.count, count.found.profile->name,
                                   !count.is_command, count.found.message->tag);
        };
        return key(a) < key(b);
    });
    summary.round_trips = round_trips_.made();
    return summary;
}

void Stats::end() {
    const Summary all = summary();
    out_.line() += style_.json ? stats_json(all) : stats_text(all, style_.utc);
    out_.flush();
}

} // namespace trace
