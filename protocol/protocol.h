// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every command and event of the wire, described once: who owns it, what it is called, how many
// characters it needs and which fields it carries. Whoever reads or writes the protocol outside the
// library - the simulated server, tools, generated documents, tests - takes it from here.
#ifndef VYM_PROTOCOL_PROTOCOL_H
#define VYM_PROTOCOL_PROTOCOL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace protocol {

/// How a value is written. The first group stands in commands and events themselves, as text; the
/// second only inside an unescaped block, as raw bytes.
enum class Type : uint8_t {
    Byte,       // two hexadecimal digits
    Word,       // four
    Dword,      // eight
    HexDigit,   // one
    Decimal,    // two decimal digits
    Address,    // twelve digits, the most significant byte first
    UuidFirst,  // thirty-two digits, uu[0] first
    UuidLast,   // thirty-two digits, uu[15] first
    Oob,        // thirty-two digits, data[0] first
    HexBytes,   // two digits for each byte; `count` names the field that says how many
    Counted,    // plain characters; `count` names the field that says how many
    Character,  // one plain character that means nothing
    Text,       // plain characters up to the end
    Block,      // four digits that count the escaped bytes that follow
    ShortBlock, // the same, counted by `count`, an earlier field

    U8,
    Le16,
    Le32,
    RawAddress, // six bytes, address[0] first
    BigAddress, // six bytes, the most significant first
    RawUuid,    // sixteen bytes, uu[0] first
    Bytes,      // `size` bytes, or all that are left
    FixedText,  // `size` bytes, padded with NULs
    RestText,   // all that is left
    NulText,    // up to a NUL, with it
    SizedBytes, // `count` names the field that says how many
    Group,      // the fields of `inner`
    Choice,     // those of one of the layouts in `inner`; `count` names the field that selects
};

/// When a field is there at all.
enum class When : uint8_t {
    Always,
    Contact, // a phone-book entry of the phone or the SIM card
    CallLog, // a phone-book entry of a call list
};

/// How often it is there.
enum class Repeat : uint8_t {
    Once,
    Fixed,   // `size` times
    Counted, // as often as the field says that `count` names
    ToEnd,   // until the block ends
};

/// What about a field is nobody else's business. Addresses and out-of-band data are private by their
/// type.
enum class Private : uint8_t {
    No,
    Address,    // in a block of its own, address[0] first
    Name,       // of a person, a device or a network
    Title,      // of what is played
    Number,     // that can be called, and what is dialled
    Contact,    // lines of vCards
    Secret,     // PINs, keys, key strokes, pictures
    Advertised, // advertising data: it may have a name in it
    Data,       // of an application's own protocol: whatever it is, text in it may be private
};

struct Layout;

struct Field {
    std::string_view name{};
    Type type = Type::Byte;
    uint16_t size = 0;
    std::string_view count{};
    const Layout* inner = nullptr;
    Repeat repeat = Repeat::Once;
    When when = When::Always;
    Private is_private = Private::No;
};

/// The most fields that a message or a layout has.
constexpr size_t kMaxFields = 16;

/// A list of fields that needs no memory of its own.
class Fields {
public:
    constexpr Fields() = default;
    constexpr Fields(std::initializer_list<Field> fields) {
        for (const Field& field : fields) {
            append(field);
        }
    }

    constexpr void append(const Field& field) { fields_[size_++] = field; }

    constexpr const Field* begin() const { return fields_.data(); }
    constexpr const Field* end() const { return fields_.data() + size_; }
    constexpr size_t size() const { return size_; }
    constexpr bool empty() const { return size_ == 0; }

private:
    std::array<Field, kMaxFields> fields_{};
    size_t size_ = 0;
};

/// What is inside a block.
struct Layout {
    std::string_view name{};
    /// In a choice: the value that selects it.
    uint32_t key = 0;
    Fields fields{};
    /// The next of a choice's layouts.
    const Layout* next = nullptr;
};

enum class Direction : uint8_t { Command, Event };

struct Message {
    /// What stands on the wire; a command's is preceded by "AT#" and its fields are followed by CR LF,
    /// an event's fields are followed by a NUL.
    std::string_view tag{};
    /// An event's is the name that the library's tables give it; a command's says what it asks for.
    std::string_view name{};
    /// Events only: the characters after the tag without which nothing is decoded. The library accepts
    /// some events with fewer characters than their fields take; what is missing reads as 0.
    uint16_t minimum = 0;
    Fields fields{};
};

/// A list of messages somewhere in static memory.
class Messages {
public:
    constexpr Messages() = default;
    template <size_t Size>
    constexpr Messages(const Message (&messages)[Size]) : begin_(messages), size_(Size) {}

    constexpr const Message* begin() const { return begin_; }
    constexpr const Message* end() const { return begin_ + size_; }
    constexpr size_t size() const { return size_; }

private:
    const Message* begin_ = nullptr;
    size_t size_ = 0;
};

struct Profile {
    /// As it stands in the names of the library's functions: "bluetooth", "hfp", ...
    std::string_view name;
    /// For people.
    std::string_view title;
    Messages commands;
    Messages events;
};

/// All profiles; the order is that of the documentation.
const std::array<const Profile*, 9>& profiles();

struct Found {
    const Profile* profile = nullptr;
    const Message* message = nullptr;

    explicit operator bool() const { return message != nullptr; }
};

/// The message that a text begins with: the text of a command starts behind its "AT#". No tag is the
/// beginning of another one of the same direction.
Found find(Direction direction, std::string_view text);

/// The characters that a field of text takes; 0 for one whose length the text itself tells.
constexpr size_t width(Type type) {
    switch (type) {
    case Type::Byte:
    case Type::Decimal:
        return 2;
    case Type::Word:
        return 4;
    case Type::Dword:
        return 8;
    case Type::HexDigit:
    case Type::Character:
        return 1;
    case Type::Address:
        return 12;
    case Type::UuidFirst:
    case Type::UuidLast:
    case Type::Oob:
        return 32;
    default:
        return 0;
    }
}

extern const Profile kBluetooth;
extern const Profile kRfcomm;
extern const Profile kHfp;
extern const Profile kA2dp;
extern const Profile kAvrcp;
extern const Profile kPbap;
extern const Profile kGattClient;
extern const Profile kGattServer;
extern const Profile kHid;

} // namespace protocol

#endif
