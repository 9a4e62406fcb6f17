// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "dissector.h"

#include "embedded.h"
#include "protocol/protocol.h"

#include <map>

namespace trace {
namespace {

using protocol::Field;
using protocol::Fields;
using protocol::Layout;
using protocol::Type;

std::string_view name_of(Type type) {
    switch (type) {
    case Type::Byte:
        return "Byte";
    case Type::Word:
        return "Word";
    case Type::Dword:
        return "Dword";
    case Type::HexDigit:
        return "HexDigit";
    case Type::Decimal:
        return "Decimal";
    case Type::Address:
        return "Address";
    case Type::UuidFirst:
        return "UuidFirst";
    case Type::UuidLast:
        return "UuidLast";
    case Type::Oob:
        return "Oob";
    case Type::HexBytes:
        return "HexBytes";
    case Type::Counted:
        return "Counted";
    case Type::Character:
        return "Character";
    case Type::Text:
        return "Text";
    case Type::Block:
        return "Block";
    case Type::ShortBlock:
        return "ShortBlock";
    case Type::U8:
        return "U8";
    case Type::Le16:
        return "Le16";
    case Type::Le32:
        return "Le32";
    case Type::RawAddress:
        return "RawAddress";
    case Type::BigAddress:
        return "BigAddress";
    case Type::RawUuid:
        return "RawUuid";
    case Type::Bytes:
        return "Bytes";
    case Type::FixedText:
        return "FixedText";
    case Type::RestText:
        return "RestText";
    case Type::NulText:
        return "NulText";
    case Type::SizedBytes:
        return "SizedBytes";
    case Type::Group:
        return "Group";
    case Type::Choice:
        return "Choice";
    }
    return "";
}

std::string quoted(std::string_view name) {
    return '"' + std::string(name) + '"';
}

/// Writes each layout once, and those inside it before it.
class Tables {
public:
    std::string all() {
        std::string messages;
        for (const protocol::Profile* profile : protocol::profiles()) {
            messages += of(profile->commands, "command", *profile);
            messages += of(profile->events, "event", *profile);
        }
        return layouts_ + messages;
    }

private:
    std::string of(const protocol::Messages& messages, const char* direction,
                   const protocol::Profile& profile) {
        std::string text;
        for (const protocol::Message& message : messages) {
            text += std::string("messages.") + direction + '[' + quoted(message.tag) +
                    "] = { profile = " + quoted(profile.name) + ", name = " + quoted(message.name) +
                    ", tag = " + quoted(message.tag) +
                    ", minimum = " + std::to_string(message.minimum) +
                    ", fields = " + of(message.fields) + " }\n";
        }
        return text;
    }

    std::string of(const Fields& fields) {
        std::string text = "{";
        for (const Field& field : fields) {
            text += (text.size() > 1 ? ", " : " ") + of(field);
        }
        return text + " }";
    }

    std::string of(const Field& field) {
        std::string text = "{ name = " + quoted(field.name) +
                           ", type = " + quoted(name_of(field.type)) +
                           ", size = " + std::to_string(field.size);
        if (!field.count.empty()) {
            text += ", count = " + quoted(field.count);
        }
        if (field.inner != nullptr) {
            text += ", inner = " + reference(*field.inner);
        }
        if (field.repeat != protocol::Repeat::Once) {
            text +=
                std::string(", times = ") + (field.repeat == protocol::Repeat::Fixed     ? "\"Fixed\""
                                             : field.repeat == protocol::Repeat::Counted ? "\"Counted\""
                                                                                         : "\"ToEnd\"");
        }
        if (field.when != protocol::When::Always) {
            text += std::string(", when = ") +
                    (field.when == protocol::When::Contact ? "\"Contact\"" : "\"CallLog\"");
        }
        return text + " }";
    }

    std::string reference(const Layout& layout) {
        const auto known = numbers_.find(&layout);
        if (known != numbers_.end()) {
            return name(known->second);
        }
        const std::string next = layout.next == nullptr ? "nil" : reference(*layout.next);
        const std::string fields = of(layout.fields);
        const size_t number = numbers_.size() + 1;
        numbers_[&layout] = number;
        layouts_ += name(number) + " = { key = " + std::to_string(layout.key) + ", next = " + next +
                    ", fields = " + fields + " }\n";
        return name(number);
    }

    static std::string name(size_t number) { return "layouts[" + std::to_string(number) + ']'; }

    std::map<const Layout*, size_t> numbers_;
    std::string layouts_;
};

} // namespace

std::string dissector() {
    constexpr std::string_view kPlace = "@TABLES@\n";
    std::string script(kDissector);
    return script.replace(script.find(kPlace), kPlace.size(), Tables().all());
}

} // namespace trace
