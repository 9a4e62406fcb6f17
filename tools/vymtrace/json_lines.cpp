// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "json_lines.h"

#include "json_text.h"
#include "protocol/append.h"

namespace trace {
namespace {

void append_member(std::string* json, std::string_view name, std::string_view text) {
    protocol::append_all(json, ",\"", name, "\":");
    append_json_string(json, text);
}

void append_number(std::string* json, std::string_view name, uint64_t number) {
    protocol::append_all(json, ",\"", name, "\":");
    protocol::append_number(json, number);
}

} // namespace

void append_json(std::string* json, const Item& item, TimeWriter* times) {
    *json += "{\"time\":\"";
    times->append(json, item.text().time_us);
    *json += "Z\"";
    append_number(json, "record", item.text().record);
    append_number(json, "offset", item.text().offset);
    protocol::append_all(json, ",\"direction\":\"", item.text().is_command ? "command" : "event");
    if (const protocol::Found& found = item.found()) {
        // What the protocol's description names needs no escapes.
        protocol::append_all(json, "\",\"profile\":\"", found.profile->name, "\",\"name\":\"",
                             found.message->name, "\",\"tag\":\"", found.message->tag,
                             "\",\"fields\":");
        append_json(json, item.decoded().values);
    } else {
        *json += '"';
        append_member(json, "text", item.body());
    }
    if (!item.decoded().surplus.empty()) {
        append_member(json, "surplus", item.decoded().surplus);
    }
    if (!item.problem().empty()) {
        append_member(json, "problem", item.problem());
    }
    *json += '}';
}

} // namespace trace
