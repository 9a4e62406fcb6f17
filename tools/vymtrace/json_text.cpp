// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "json_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace trace {
namespace {

bool is_plain(char c) {
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
}

void append_hex(std::string* json, const std::string& bytes) {
    *json += '"';
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        *json += "0123456789ABCDEF"[byte >> 4U];
        *json += "0123456789ABCDEF"[byte & 0xFU];
    }
    *json += '"';
}

} // namespace

void append_json_string(std::string* json, std::string_view text) {
    if (std::all_of(text.begin(), text.end(), is_plain)) {
        *json += '"';
        *json += text;
        *json += '"';
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
        const std::string text = to_text(value);
        const bool is_number = value.bytes.empty();
        *json += is_number ? text : '"' + text + '"';
    }
    }
}

void append_json(std::string* json, const std::vector<protocol::Value>& values) {
    *json += '{';
    for (const protocol::Value& value : values) {
        *json += json->back() == '{' ? "" : ",";
        append_json_string(json, value.field->name);
        *json += ':';
        append_json(json, value);
    }
    *json += '}';
}

} // namespace trace
