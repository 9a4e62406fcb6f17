// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "json_text.h"

#include "protocol/append.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace trace {
namespace {

bool is_plain(char c) {
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
}

void append_hex(std::string* json, std::string_view bytes) {
    char* at = protocol::grow(json, 2 * bytes.size() + 2);
    *at++ = '"';
    for (const char byte : bytes) {
        at = protocol::put_hex(at, byte);
    }
    *at = '"';
}

} // namespace

void append_json_string(std::string* json, std::string_view text) {
    if (std::all_of(text.begin(), text.end(), is_plain)) {
        protocol::append_all(json, "\"", text, "\"");
    } else {
        using Json = nlohmann::json;
        *json += Json(std::string(text)).dump(-1, ' ', false, Json::error_handler_t::replace);
    }
}

void append_json(std::string* json, const protocol::Value& value) {
    using protocol::Type;
    if (value.is_list) {
        *json += '[';
        for (const protocol::Value& member : value.members) {
            *json += json->back() == '[' ? "" : ",";
            append_json(json, member);
        }
        *json += ']';
        return;
    }
    if (!value.members.empty()) {
        append_json(json, value.members);
        return;
    }
    switch (value.field->type) {
    case Type::Oob:
    case Type::HexBytes:
    case Type::Bytes:
    case Type::SizedBytes:
        append_hex(json, value.bytes);
        break;
    case Type::Block:
    case Type::ShortBlock:
        // Empty, with something described that could be inside, it is an empty group.
        if (value.field->inner != nullptr) {
            *json += "{}";
        } else {
            append_hex(json, value.bytes);
        }
        break;
    case Type::Group:
    case Type::Choice:
        *json += "{}";
        break;
    case Type::Text:
    case Type::Counted:
    case Type::Character:
    case Type::FixedText:
    case Type::RestText:
    case Type::NulText:
        append_json_string(json, value.bytes);
        break;
    default: {
        const std::string_view quote = value.bytes.empty() ? "" : "\"";
        *json += quote;
        append_text(json, value);
        *json += quote;
    }
    }
}

void append_json(std::string* json, const std::vector<protocol::Value>& values) {
    *json += '{';
    std::string_view between = "\"";
    for (const protocol::Value& value : values) {
        // What the protocol's description names needs no escapes.
        protocol::append_all(json, between, value.field->name, "\":");
        append_json(json, value);
        between = ",\"";
    }
    *json += '}';
}

} // namespace trace
