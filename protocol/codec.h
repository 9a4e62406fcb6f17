// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands and events to values and back, as the tables describe them.
#ifndef VYM_PROTOCOL_CODEC_H
#define VYM_PROTOCOL_CODEC_H

#include "protocol.h"

#include <string>
#include <string_view>
#include <vector>

namespace protocol {

/// The value of one field.
struct Value {
    const Field* field = nullptr;
    /// A repeated field: its values are the members, each with the same field.
    bool is_list = false;
    /// Of a number.
    uint32_t number = 0;
    /// Of everything else, unescaped. An address and a UUID stand in the order of the application's
    /// structures, whatever their order on the wire: address[0] and uu[0] first. Of an address that is
    /// the least significant byte, of a UUID the most significant.
    std::string bytes;
    /// Of a group, a choice, a block whose inside is described, and of a list.
    std::vector<Value> members;
};

struct Decoded {
    Found found;
    std::vector<Value> values;
    /// Characters behind the last field. The library skips them.
    std::string_view surplus;
    /// What is wrong, in one line without an end; empty when nothing is. The values before it are good.
    std::string problem;
};

/// A command without "AT#" and line end, or an event without its NUL. Where the library is content with
/// an event whose last fields are missing, so is this: they are left out.
Decoded decode(Direction direction, std::string_view text);

/// The same when find() has already been asked, and into what was decoded before: its memory is used
/// again.
void decode(Direction direction, const Found& found, std::string_view text, Decoded* decoded);

/// The reverse, tag and fields. The length of a block is taken from what is in it; other counts are
/// values like any other. Values that do not fit their field are cut to its width.
std::string encode(const Message& message, const std::vector<Value>& values);

/// 0x00, CR, LF and 0xDC are written as two bytes, so that a block cannot end a message.
std::string escape(std::string_view bytes);

/// Undoes escape(); false for a pair that escape() does not write, and for a dangling 0xDC.
bool unescape(std::string_view escaped, std::string* bytes);

/// The value as a person reads it, in one line: 12, 00:1A:7D:DA:71:13, 180D, "text", <DC 00>, [1, 2],
/// {name=value ...}.
std::string to_text(const Value& value);

/// "name=value name=value ..."
std::string to_text(const std::vector<Value>& values);

/// The same at the end of a text.
void append_text(std::string* text, const Value& value);
void append_text(std::string* text, const std::vector<Value>& values);

} // namespace protocol

#endif
