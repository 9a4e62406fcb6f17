// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// How values travel in commands and events. Written from the protocol, not shared with the library:
// were both ends to use one codec, a mistake in it would cancel itself out.
#ifndef VYM_SIM_WIRE_H
#define VYM_SIM_WIRE_H

#include "console/words.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sim {

/// A device address in controller order: `octets[5]` is the most significant one, which is written
/// first.
struct Address {
    std::array<uint8_t, 6> octets{};

    bool operator==(const Address& other) const { return octets == other.octets; }
    bool operator!=(const Address& other) const { return octets != other.octets; }
};

/// Sixteen bytes in array order: a 128-bit UUID (most significant byte first, as it is written) or
/// out-of-band data.
using Octets16 = std::array<uint8_t, 16>;

/// A command whose fields cannot be read; the text says which one and why.
class BadCommand : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// "00:1A:7D:DA:71:13" or "001A7DDA7113" to an address. Throws std::invalid_argument.
Address to_address(std::string_view text);

/// An address as twelve upper-case digits, most significant byte first.
std::string to_string(const Address& address);

/// The UUID that a 16-bit UUID stands for.
Octets16 uuid_from_16bit(uint16_t uuid);

/// Escapes 0x00, CR, LF and 0xDC, so that a block cannot end a command or an event.
std::string escape(std::string_view raw);

/// Undoes escape(). Throws BadCommand for a pair that escape() never writes and for a dangling 0xDC.
std::string unescape(std::string_view escaped);

using console::printable;

/// Little-endian values, as property records carry them.
std::string le16(uint16_t value);
std::string le32(uint32_t value);
uint32_t from_le32(std::string_view value);

/// Address and UUID bytes in array order, as property records carry them.
std::string raw(const Address& address);
std::string raw(const Octets16& octets);

/// One property record: type and length as two digits each, then the value (at most 255 bytes of it).
std::string property_record(uint8_t type, std::string_view value);

/// Reads the fields of one command from left to right. Every read throws BadCommand when the text is
/// short or not hexadecimal; `what` names the field in that message.
class Fields {
public:
    explicit Fields(std::string_view text) : text_(text) {}

    uint8_t byte(const char* what) { return static_cast<uint8_t>(number(2, what)); }
    uint16_t word(const char* what) { return static_cast<uint16_t>(number(4, what)); }
    uint32_t dword(const char* what) { return number(8, what); }
    Address address(const char* what = "address");
    /// Thirty-two digits, first byte first.
    Octets16 octets(const char* what);
    /// Thirty-two digits, last byte first: the usual order of a UUID in a command.
    Octets16 octets_reversed(const char* what);
    /// A counted escaped block, unescaped.
    std::string block(const char* what);
    /// Trailing text: whatever is left.
    std::string rest();
    /// Throws when something is left over.
    void end() const;

private:
    uint32_t number(size_t width, const char* what);
    std::string_view take(size_t width, const char* what);

    std::string_view text_;
    size_t position_ = 0;
};

/// Builds one event.
class Event {
public:
    explicit Event(std::string_view tag) : bytes_(tag) {}

    Event& byte(uint8_t value);
    Event& word(uint16_t value);
    Event& dword(uint32_t value);
    Event& address(const Address& value);
    Event& octets(const Octets16& value);
    /// A counted escaped block.
    Event& block(std::string_view raw_bytes);
    /// Trailing text, cut at its first NUL: a NUL inside would end the event.
    Event& text(std::string_view value);

    /// The event without its NUL.
    const std::string& bytes() const { return bytes_; }

private:
    Event& number(uint32_t value, int width);

    std::string bytes_;
};

} // namespace sim

#endif
