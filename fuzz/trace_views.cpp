// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What vymtrace makes of commands and events, at whatever time they came: lines, JSON, numbers, a page.

#include "timed_texts.h"
#include "tools/vymtrace/json_lines.h"
#include "tools/vymtrace/lines.h"
#include "tools/vymtrace/report.h"
#include "tools/vymtrace/stats.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    trace::Output lines_out(nowhere);
    trace::Output stats_out(nowhere);
    trace::Lines lines(lines_out, {true, false});
    trace::Stats stats(stats_out, {true, true});
    trace::Report page("capture", "/dev/null");
    trace::TimeWriter times(true);
    fuzz::each_timed_text(fuzz::text_of(data, size), [&](const capture::Text& text) {
        const fuzz::Exact copy(text.text);
        const trace::Item item(text);
        lines.take(item);
        std::string& line = lines_out.line();
        fuzz::require(line.empty() || line.find('\n') == line.size() - 1, "one line says it");
        line.clear();
        std::string json;
        trace::append_json(&json, item, &times);
        fuzz::require(nlohmann::json::accept(json), "JSON is JSON");
        stats.take(item);
        page.take(item);
    });
    stats.end();
    page.end();
    return 0;
}
