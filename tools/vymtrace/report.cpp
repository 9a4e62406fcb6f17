// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "report.h"

#include "embedded.h"
#include "json_lines.h"
#include "json_text.h"
#include "output.h"

#include <cstdio>

namespace trace {
namespace {

constexpr size_t kMostRecords = 100000;

std::string seconds(int64_t us) {
    char text[40];
    std::snprintf(text, sizeof(text), "%.6f", static_cast<double>(us) / 1e6);
    return text;
}

/// Inside a script element "</" would end it; a < stands in strings only.
std::string without_tags(const std::string& json) {
    std::string safe;
    safe.reserve(json.size());
    for (const char c : json) {
        if (c == '<') {
            safe += "\\u003c";
        } else {
            safe += c;
        }
    }
    return safe;
}

} // namespace

void Report::take(const Item& item) {
    if (count_ == kMostRecords) {
        ++left_out_;
        return;
    }
    if (count_ == 0) {
        first_us_ = item.text().time_us;
    }
    records_ += count_ == 0 ? "" : ",\n";
    records_ += "{\"t\":" + seconds(item.text().time_us - first_us_) + ",\"record\":";
    append_json(&records_, item, &times_);
    records_ += '}';
    if (item.found()) {
        profiles_.insert(item.found().profile->name);
    }
    has_unknown_ |= !item.found();
    bars_.take(item, count_++);
}

std::string Report::data() const {
    std::string json = "{\"file\":";
    append_json_string(&json, title_);
    json += ",\"left_out\":" + std::to_string(left_out_) + ",\"lanes\":[";
    for (const protocol::Profile* profile : protocol::profiles()) {
        if (profiles_.count(profile->name) != 0) {
            json += json.back() == '[' ? "" : ",";
            append_json_string(&json, profile->name);
        }
    }
    if (has_unknown_) {
        json += json.back() == '[' ? "\"?\"" : ",\"?\"";
    }
    json += "],\"bars\":[";
    for (const Bar& bar : bars_.all()) {
        json += json.back() == '[' ? "{" : ",{";
        json += "\"lane\":\"" + std::string(bar.profile) + "\",\"kind\":\"" + std::string(bar.kind) +
                "\",\"begin\":" + seconds(bar.begin_us - first_us_) +
                ",\"end\":" + seconds(bar.end_us - first_us_) +
                ",\"index\":" + std::to_string(bar.item) + "}";
    }
    return json + "],\"records\":[" + records_ + "]}";
}

void Report::end() {
    constexpr std::string_view kPlace = "@DATA@";
    std::string page(kReport);
    page.replace(page.find(kPlace), kPlace.size(), without_tags(data()));
    const NewFile file(path_);
    Output out(file.fd(), path_);
    out.line() = std::move(page);
    out.flush();
}

} // namespace trace
