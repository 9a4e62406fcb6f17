// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "page.h"

#include "protocol.h"

#include <algorithm>
#include <vector>

namespace protocol {
namespace {

constexpr const char* kHead = R"(# The protocol

Made from the tables in `protocol/`, from which the simulator, `vymtrace` and the plug-in for Wireshark take what they know, too,
and against which tests hold the library. To make it anew: `build/dev/protocol/vym_protocol_page > docs/protocol.md`.

## On the wire

The server listens on a socket of the local machine (AF_UNIX, a stream), `vym_socket` in a directory of its choice.

- A **command** is `AT#`, its tag, its fields, CR LF: `AT#HH+4930123456` dials.
- An **event** is its tag, its fields, a NUL: `HG0005` says that the phone's battery is full.
- Fields follow each other without separators. Numbers are hexadecimal digits, the most significant first; both cases are read.
- A **descriptor** (sound, serial data) rides on one byte of its own, which follows the event that announces it.
- No tag is the beginning of another one of the same direction, so nothing stands between tag and fields.
- Behind the last field, up to the NUL, there may be surplus; it is passed over.

*Minimum* is the number of characters after the tag without which an event is not decoded. Some events are decoded with fewer than
their fields take: what is missing reads as 0.

### Fields

| type | on the wire |
| --- | --- |
)";

constexpr const char* kBlocks = R"(
A block's bytes are escaped, so that none of them can end a message; the count is that of the escaped bytes.

| byte | stands as |
| --- | --- |
| 00 | DC DD |
| 0D | DC DE |
| 0A | DC DF |
| DC | DC DC |

)";

// A type's short name, and what it looks like; in the order of the types.
struct TypeText {
    Type type;
    const char* name;
    const char* text;
};

constexpr TypeText kTypes[] = {
    {Type::Byte, "byte", "two digits"},
    {Type::Word, "word", "four digits"},
    {Type::Dword, "dword", "eight digits"},
    {Type::HexDigit, "digit", "one digit"},
    {Type::Decimal, "decimal", "two decimal digits"},
    {Type::Address, "address", "twelve digits, `address[5]` first, as people write it"},
    {Type::UuidFirst, "uuid", "thirty-two digits, `uu[0]` first"},
    {Type::UuidLast, "reversed uuid", "thirty-two digits, `uu[15]` first"},
    {Type::Oob, "oob", "thirty-two digits, `data[0]` first"},
    {Type::HexBytes, "hex", "two digits for each byte, as many as another field says"},
    {Type::Counted, "characters", "characters, as many as another field says"},
    {Type::Character, "character", "one character that means nothing"},
    {Type::Text, "text", "characters up to the end"},
    {Type::Block, "block", "four digits that count the escaped bytes that follow, and those"},
    {Type::ShortBlock, "short block", "escaped bytes, counted by an earlier field"},
    {Type::U8, "u8", "in a block: one byte"},
    {Type::Le16, "u16", "in a block: two bytes, the least significant first"},
    {Type::Le32, "u32", "in a block: four bytes, the least significant first"},
    {Type::RawAddress, "raw address", "in a block: six bytes, `address[0]` first"},
    {Type::BigAddress, "written address", "in a block: six bytes, `address[5]` first"},
    {Type::RawUuid, "raw uuid", "in a block: sixteen bytes, `uu[0]` first"},
    {Type::Bytes, "bytes", "in a block: so many bytes, or all that are left"},
    {Type::FixedText, "padded text", "in a block: so many bytes, padded with NULs"},
    {Type::RestText, "rest", "in a block: text up to its end"},
    {Type::NulText, "string", "in a block: text up to a NUL, with it"},
    {Type::SizedBytes, "sized bytes", "in a block: as many bytes as another field says"},
    {Type::Group, "group", "in a block: the fields of a layout"},
    {Type::Choice, "choice", "in a block: one of several layouts, as another field says"},
};

const char* name_of(Type type) {
    const auto* found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [type](const TypeText& entry) { return entry.type == type; });
    return found == std::end(kTypes) ? "?" : found->name;
}

std::string quoted(std::string_view name) {
    return '`' + std::string(name) + '`';
}

std::string layout_of(const Field& field) {
    if (field.inner == nullptr) {
        return "";
    }
    if (field.type != Type::Choice) {
        return " of " + quoted(field.inner->name);
    }
    std::string text = " by " + quoted(field.count) + " of";
    for (const Layout* layout = field.inner; layout != nullptr; layout = layout->next) {
        text += (layout == field.inner ? " " : ", ") + std::to_string(layout->key) + ": " +
                quoted(layout->name);
    }
    return text;
}

std::string repetition_of(const Field& field) {
    switch (field.repeat) {
    case Repeat::Fixed:
        return ", " + std::to_string(field.size) + " times";
    case Repeat::Counted:
        return ", " + quoted(field.count) + " times";
    case Repeat::ToEnd:
        return ", up to the end";
    default:
        return "";
    }
}

std::string condition_of(const Field& field) {
    switch (field.when) {
    case When::Contact:
        return ", of a contact only";
    case When::CallLog:
        return ", of a past call only";
    default:
        return "";
    }
}

std::string size_of(const Field& field) {
    if (field.repeat == Repeat::Once && field.size != 0) {
        return '[' + std::to_string(field.size) + ']';
    }
    const bool is_sized = field.repeat == Repeat::Once && field.type != Type::Choice;
    return is_sized && !field.count.empty() ? '[' + quoted(field.count) + ']' : "";
}

std::string text_of(const Field& field) {
    return quoted(field.name) + ' ' + name_of(field.type) + size_of(field) + layout_of(field) +
           repetition_of(field) + condition_of(field);
}

std::string text_of(const Fields& fields) {
    std::string text;
    for (const Field& field : fields) {
        text += (text.empty() ? "" : "; ") + text_of(field);
    }
    return text.empty() ? "-" : text;
}

// The layouts of a profile, each once, in the order in which they are met.
class Layouts {
public:
    void add(const Fields& fields) {
        for (const Field& field : fields) {
            const bool is_choice = field.type == Type::Choice;
            for (const Layout* layout = field.inner; layout != nullptr;
                 layout = is_choice ? layout->next : nullptr) {
                if (std::find(met_.begin(), met_.end(), layout) == met_.end()) {
                    met_.push_back(layout);
                    add(layout->fields);
                }
            }
        }
    }

    std::string text() const {
        if (met_.empty()) {
            return "";
        }
        std::string text = "| layout in a block | fields |\n| --- | --- |\n";
        for (const Layout* layout : met_) {
            text += "| " + quoted(layout->name) + " | " + text_of(layout->fields) + " |\n";
        }
        return text + '\n';
    }

private:
    std::vector<const Layout*> met_;
};

std::string text_of(const Profile& profile) {
    Layouts layouts;
    std::string text = "## " + std::string(profile.title) + "\n\nIn captures: " + quoted(profile.name) +
                       ".\n\n| command | name | fields |\n| --- | --- | --- |\n";
    for (const Message& command : profile.commands) {
        layouts.add(command.fields);
        text += "| " + quoted(command.tag) + " | " + quoted(command.name) + " | " +
                text_of(command.fields) + " |\n";
    }
    text += "\n| event | name | minimum | fields |\n| --- | --- | --- | --- |\n";
    for (const Message& event : profile.events) {
        layouts.add(event.fields);
        text += "| " + quoted(event.tag) + " | " + quoted(event.name) + " | " +
                std::to_string(event.minimum) + " | " + text_of(event.fields) + " |\n";
    }
    return text + '\n' + layouts.text();
}

} // namespace

std::string page() {
    std::string text = kHead;
    for (const TypeText& entry : kTypes) {
        text += std::string("| ") + entry.name + " | " + entry.text + " |\n";
    }
    text += kBlocks;
    for (const Profile* profile : profiles()) {
        text += text_of(*profile);
    }
    text.pop_back(); // the empty line behind the last table
    return text;
}

} // namespace protocol
