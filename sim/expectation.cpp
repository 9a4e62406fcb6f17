// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "expectation.h"

#include <algorithm>
#include <cctype>

namespace sim {
namespace {

using protocol::Direction;
using protocol::Field;
using protocol::Message;
using protocol::Type;
using protocol::Value;

const char* kind_name(Direction direction) {
    return direction == Direction::Command ? "command" : "event";
}

const protocol::Messages& messages_of(const protocol::Profile& profile, Direction direction) {
    return direction == Direction::Command ? profile.commands : profile.events;
}

template <typename Range, typename Name>
std::string joined(const Range& range, Name name) {
    std::string text;
    for (const auto& item : range) {
        text += text.empty() ? "" : ", ";
        text += name(item);
    }
    return text;
}

const Message* find_message(Direction direction, const std::string& name) {
    const size_t dot = name.find('.');
    const std::string profile_name = name.substr(0, dot);
    for (const protocol::Profile* profile : protocol::profiles()) {
        if (profile->name != profile_name) {
            continue;
        }
        const protocol::Messages& all = messages_of(*profile, direction);
        const std::string wanted = dot == std::string::npos ? "" : name.substr(dot + 1);
        const auto* it = std::find_if(all.begin(), all.end(),
                                      [&wanted](const Message& m) { return m.name == wanted; });
        if (it != all.end()) {
            return it;
        }
        throw Refused(profile_name + " has no " + kind_name(direction) + " \"" + printable(wanted) +
                      "\", only " + joined(all, [](const Message& m) { return std::string(m.name); }));
    }
    throw Refused(
        std::string("expected the name of a ") + kind_name(direction) + " such as hfp.dial, found \"" +
        printable(name) + "\"; the profiles are " +
        joined(protocol::profiles(), [](const protocol::Profile* p) { return std::string(p->name); }));
}

enum class Sort { Number, Address, Uuid, Text, Bytes, Compound };

Sort sort_of(const Field& field) {
    if (field.inner != nullptr || field.repeat != protocol::Repeat::Once) {
        return Sort::Compound;
    }
    switch (field.type) {
    case Type::Address:
    case Type::RawAddress:
    case Type::BigAddress:
        return Sort::Address;
    case Type::UuidFirst:
    case Type::UuidLast:
    case Type::RawUuid:
        return Sort::Uuid;
    case Type::Counted:
    case Type::Character:
    case Type::Text:
    case Type::FixedText:
    case Type::RestText:
    case Type::NulText:
        return Sort::Text;
    case Type::Oob:
    case Type::HexBytes:
    case Type::Block:
    case Type::ShortBlock:
    case Type::Bytes:
    case Type::SizedBytes:
        return Sort::Bytes;
    case Type::Group:
    case Type::Choice:
        return Sort::Compound;
    default:
        return Sort::Number;
    }
}

/// The digits of hexadecimal text in capitals, what may stand between them left out; "?" if it is
/// something else.
std::string digits_of(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c)) != 0) {
            digits += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        } else if (std::string_view(" -:<>").find(c) == std::string_view::npos) {
            return "?";
        }
    }
    return digits;
}

std::string digits_of_bytes(const std::string& bytes) {
    std::string digits;
    for (const char c : bytes) {
        const auto value = static_cast<uint8_t>(c);
        digits += "0123456789ABCDEF"[value >> 4U];
        digits += "0123456789ABCDEF"[value & 0xFU];
    }
    return digits;
}

/// All digits of a UUID that may be written short; "?" if it is none.
std::string uuid_digits(const std::string& text) {
    const std::string digits = digits_of(text);
    if (digits.size() == 4) {
        return "0000" + digits + "00001000800000805F9B34FB";
    }
    return digits.size() == 32 ? digits : "?";
}

/// A number, decimal or with 0x; -1 if it is none.
int64_t number_of(const std::string& text) {
    const bool is_hex = text.rfind("0x", 0) == 0;
    const std::string digits = is_hex ? text.substr(2) : text;
    const char* allowed = is_hex ? "0123456789abcdefABCDEF" : "0123456789";
    if (digits.empty() || digits.size() > 10 ||
        digits.find_first_not_of(allowed) != std::string::npos) {
        return -1;
    }
    return std::stoll(digits, nullptr, is_hex ? 16 : 10);
}

/// A device's name or address as addresses are compared; "?" if it is none.
std::string address_digits(const std::string& text, const World& world) {
    for (const Device& device : world.devices) {
        if (device.name == text) {
            return to_string(device.address);
        }
    }
    const std::string digits = digits_of(text);
    return digits.size() == 12 ? digits : "?";
}

bool is_equal(const Value& value, const std::string& wanted) {
    const bool plain = value.members.empty() && !value.is_list;
    switch (plain ? sort_of(*value.field) : Sort::Compound) {
    case Sort::Number:
        return number_of(wanted) == static_cast<int64_t>(value.number);
    case Sort::Address:
        return digits_of(protocol::to_text(value)) == digits_of(wanted);
    case Sort::Uuid:
        return digits_of_bytes(value.bytes) == uuid_digits(wanted);
    case Sort::Text:
        return value.bytes == wanted;
    case Sort::Bytes:
        return digits_of_bytes(value.bytes) == digits_of(wanted);
    case Sort::Compound:
        break;
    }
    return protocol::to_text(value) == wanted;
}

/// The value at the end of the way, or nullptr.
const Value* find_value(const std::vector<Value>& values, const std::vector<std::string>& path) {
    const std::vector<Value>* level = &values;
    const Value* found = nullptr;
    for (const std::string& name : path) {
        const auto it = std::find_if(level->begin(), level->end(),
                                     [&name](const Value& v) { return v.field->name == name; });
        if (it == level->end()) {
            return nullptr;
        }
        found = &*it;
        level = &it->members;
    }
    return found;
}

} // namespace

Expectation::Expectation(Direction direction, const std::vector<std::string>& words, const World& world)
    : direction_(direction) {
    if (words.empty()) {
        throw Refused(std::string("expected the name of a ") + kind_name(direction) +
                      " such as hfp.dial, found the end of the line");
    }
    message_ = find_message(direction, words.front());
    text_ = words.front();
    for (size_t i = 1; i < words.size(); ++i) {
        wanted_.push_back(read_field(words[i], world));
        text_ += ' ' + printable(words[i]);
    }
}

Expectation::Wanted Expectation::read_field(const std::string& word, const World& world) const {
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, std::min(equals, word.find('.')));
    const auto* field =
        std::find_if(message_->fields.begin(), message_->fields.end(),
                     [&name](const Field& f) { return std::string_view(name) == f.name; });
    if (equals == std::string::npos || field == message_->fields.end()) {
        throw Refused(
            "expected " +
            (message_->fields.empty()
                 ? std::string("no field")
                 : "FIELD=VALUE with a field out of " +
                       joined(message_->fields, [](const Field& f) { return std::string(f.name); })) +
            ", found \"" + printable(word) + '"');
    }
    Wanted wanted;
    wanted.value = word.substr(equals + 1);
    std::string path = word.substr(0, equals);
    for (size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.')) {
        wanted.path.push_back(path.substr(0, dot));
        path.erase(0, dot + 1);
    }
    wanted.path.push_back(path);
    const auto must = [&](bool good, const char* what) {
        if (!good) {
            throw Refused(name + " is " + what + ", not \"" + printable(wanted.value) + '"');
        }
    };
    switch (wanted.path.size() == 1 ? sort_of(*field) : Sort::Compound) {
    case Sort::Number:
        must(number_of(wanted.value) >= 0, "a number, decimal or with 0x");
        break;
    case Sort::Address:
        wanted.value = address_digits(wanted.value, world);
        if (wanted.value == "?") {
            wanted.value = word.substr(equals + 1);
            must(false, "an address or the name of a device");
        }
        break;
    case Sort::Uuid:
        must(uuid_digits(wanted.value) != "?", "a UUID of 4 or 32 digits");
        break;
    case Sort::Bytes:
        must(digits_of(wanted.value) != "?", "bytes in hexadecimal digits");
        break;
    case Sort::Text:
    case Sort::Compound:
        break;
    }
    return wanted;
}

std::string Expectation::difference(std::string_view text) const {
    const protocol::Decoded decoded = protocol::decode(direction_, text);
    if (decoded.found.message != message_) {
        return std::string("it is another ") + kind_name(direction_);
    }
    for (const Wanted& wanted : wanted_) {
        std::string name;
        for (const std::string& part : wanted.path) {
            name += (name.empty() ? "" : ".") + part;
        }
        const Value* value = find_value(decoded.values, wanted.path);
        if (value == nullptr) {
            return "it has no field " + printable(name);
        }
        if (!is_equal(*value, wanted.value)) {
            return name + " is " + protocol::to_text(*value) + ", not " + printable(wanted.value);
        }
    }
    return {};
}

std::vector<std::string> Expectation::names(Direction direction) {
    std::vector<std::string> all;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const Message& message : messages_of(*profile, direction)) {
            all.push_back(std::string(profile->name).append(".").append(message.name));
        }
    }
    return all;
}

std::vector<std::string> Expectation::fields(Direction direction, const std::string& name) {
    std::vector<std::string> all;
    try {
        for (const Field& field : find_message(direction, name)->fields) {
            all.push_back(std::string(field.name) + '=');
        }
    } catch (const Refused&) {
        all.clear();
    }
    return all;
}

} // namespace sim
