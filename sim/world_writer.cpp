// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "world_fields.h"
#include "world_file.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace sim {
namespace {

/// Keys stay in the order of the description.
using Json = nlohmann::ordered_json;

std::string hex(uint64_t value, unsigned digits) {
    std::string text(digits, '0');
    for (unsigned i = digits; i > 0; --i, value >>= 4U) {
        text[i - 1] = "0123456789ABCDEF"[value & 0xF];
    }
    return text;
}

template <typename Range>
std::string hex(const Range& bytes) {
    std::string text;
    for (const auto byte : bytes) {
        text += hex(static_cast<uint8_t>(byte), 2);
    }
    return text;
}

Json write(bool& value) {
    return value;
}

Json write(Address& value) {
    std::string text = to_string(value);
    for (size_t i = 10; i > 0; i -= 2) {
        text.insert(i, 1, ':');
    }
    return text;
}

Json write(const Text& wanted) {
    return wanted.value;
}

Json write(const TelephoneNumber& wanted) {
    return wanted.value;
}

Json write(const Bytes& wanted) {
    // What is shorter is more likely a number.
    constexpr size_t kShortestText = 3;
    const std::string& bytes = wanted.value;
    const bool is_text =
        bytes.size() >= kShortestText &&
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
    return is_text ? Json{{"text", bytes}} : Json(hex(bytes));
}

Json write(const Uuid& wanted) {
    std::string text = uuid_text(wanted.value);
    if (text.size() > 4) {
        for (const size_t i : {20U, 16U, 12U, 8U}) {
            text.insert(i, 1, '-');
        }
    }
    return text;
}

Json write(const HexOctets& wanted) {
    return hex(wanted.value);
}

Json write(const Delay& wanted) {
    return wanted.value ? Json(wanted.value->count()) : Json();
}

template <typename T>
Json write(const Ranged<T>& wanted) {
    return static_cast<int64_t>(wanted.value);
}

template <typename T>
Json write(const HexNumber<T>& wanted) {
    return "0x" + hex(wanted.value, wanted.digits);
}

template <typename T>
Json write(const Choice<T>& wanted) {
    const auto it = std::find_if(wanted.names.begin(), wanted.names.end(), [&wanted](const auto& name) {
        return static_cast<T>(name.second) == wanted.value;
    });
    return std::string(it->first);
}

template <typename T>
Json write(const Flags<T>& wanted) {
    Json all = Json::array();
    for (const auto& name : wanted.names) {
        if ((wanted.value & name.second) != 0) {
            all.push_back(std::string(name.first));
        }
    }
    return all;
}

template <typename T, typename Wrap>
Json write(const Many<T, Wrap>& wanted) {
    Json all = Json::array();
    for (T& value : wanted.values) {
        all.push_back(write(wanted.wrap(value)));
    }
    return all;
}

template <typename T>
Json write(T& object);

template <typename T>
Json write(std::vector<T>& objects) {
    Json all = Json::array();
    for (T& object : objects) {
        all.push_back(write(object));
    }
    return all;
}

template <typename T>
Json write(std::optional<T>& object) {
    return object ? write(*object) : Json();
}

class ObjectWriter {
public:
    static constexpr bool kReads = false;

    template <typename T>
    void operator()(const char* key, T&& value) {
        json_[key] = write(std::forward<T>(value));
    }

    template <typename T>
    void need(const char* key, T&& value) {
        (*this)(key, std::forward<T>(value));
        needed_.emplace_back(key);
    }

    template <typename T>
    void cards(const char* key, const std::vector<T>& all) {
        // The cards themselves do not belong into such a file.
        json_[key] = all.empty() ? Json() : Json("built-in");
    }

    const Json& json() const { return json_; }
    bool needs(const std::string& key) const {
        return std::find(needed_.begin(), needed_.end(), key) != needed_.end();
    }

private:
    Json json_ = Json::object();
    std::vector<std::string> needed_;
};

/// What a reader takes for granted.
template <typename T>
T taken_for_granted(const T&) {
    return T{};
}

Characteristic taken_for_granted(const Characteristic& c) {
    Characteristic plain;
    plain.permissions = implied_permissions(c.properties);
    return plain;
}

/// Without the keys that would say what is taken for granted.
template <typename T>
Json write(T& object) {
    ObjectWriter writer;
    fields(writer, object);
    T plain = taken_for_granted(object);
    ObjectWriter plain_writer;
    fields(plain_writer, plain);
    Json json = Json::object();
    for (const auto& [key, value] : writer.json().items()) {
        if (writer.needs(key) || value != plain_writer.json()[key]) {
            json[key] = value;
        }
    }
    return json;
}

/// All of it, for what everybody changes first.
template <typename T>
Json write_whole(T& object) {
    ObjectWriter writer;
    fields(writer, object);
    return writer.json();
}

/// The parts of a list or an object, each written by `write_part`, with `between` them.
template <typename WritePart>
std::string join(const Json& json, const std::string& between, WritePart write_part) {
    std::string text;
    for (const auto& [key, value] : json.items()) {
        text += text.empty() ? "" : between;
        text += (json.is_object() ? Json(key).dump() + ": " : "") + write_part(value);
    }
    return text;
}

std::string one_line(const Json& json) {
    if (!json.is_structured() || json.empty()) {
        return json.dump();
    }
    const std::string parts = join(json, ", ", one_line);
    return json.is_object() ? "{ " + parts + " }" : "[" + parts + "]";
}

/// What is short stands on one line, everything else on lines of its own.
std::string text_of(const Json& json, size_t depth) {
    constexpr size_t kWidth = 100;
    std::string short_form = one_line(json);
    if (!json.is_structured() || depth + short_form.size() <= kWidth) {
        return short_form;
    }
    const std::string margin(depth + 2, ' ');
    const std::string parts =
        join(json, ",\n" + margin, [depth](const Json& part) { return text_of(part, depth + 2); });
    const std::string body = '\n' + margin + parts + '\n' + std::string(depth, ' ');
    return json.is_object() ? '{' + body + '}' : '[' + body + ']';
}

} // namespace

std::string built_in_world_text() {
    World world = built_in_world();
    Json json;
    json["adapter"] = write_whole(world.adapter);
    json["devices"] = write(world.devices);
    json["bonded"] = Json::array();
    for (Address& address : world.bonded) {
        json["bonded"].push_back(write(address));
    }
    json["phone"] = write_whole(world.phone);
    json["hall"] = world.hall;
    return text_of(json, 0) + '\n';
}

} // namespace sim
