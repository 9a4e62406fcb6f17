// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "json_lines.h"

#include "json_text.h"

namespace trace {
namespace {

void append_member(std::string* json, std::string_view name, std::string_view text) {
    *json += ",\"";
    *json += name;
    *json += "\":";
    append_json_string(json, text);
}

void append_number(std::string* json, std::string_view name, uint64_t number) {
    *json += ",\"";
    *json += name;
    *json += "\":";
    *json += std::to_string(number);
}

} // namespace

void append_json(std::string* json, const Item& item, TimeWriter* times) {
    *json += "{\"time\":\"";
    times->append(json, item.text().time_us);
    *json += "Z\"";
    append_number(json, "record", item.text().record);
    append_number(json, "offset", item.text().offset);
    append_member(json, "direction", item.text().is_command ? "command" : "event");
    if (const protocol::Found& found = item.found()) {
        append_member(json, "profile", found.profile->name);
        append_member(json, "name", found.message->name);
        append_member(json, "tag", found.message->tag);
        *json += ",\"fields\":";
        append_json(json, item.decoded().values);
    } else {
        append_member(json, "text", item.body());
    }
    if (!item.decoded().surplus.empty()) {
        append_member(json, "surplus", item.decoded().surplus);
    }
    const std::string problem = item.problem();
    if (!problem.empty()) {
        append_member(json, "problem", problem);
    }
    *json += '}';
}

} // namespace trace
