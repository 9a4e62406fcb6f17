// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// One value that people and programs read and write: what it is called, what it may be, and how it
// looks as text. Arguments of verbs and fields of events are both described so.
#ifndef VYM_VYMCTL_FIELD_H
#define VYM_VYMCTL_FIELD_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <vym/bluetooth.h>

namespace vymctl {

using Json = nlohmann::ordered_json;

/// What was asked for makes no sense; the text says how to mend it. Exit code 2.
class Usage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Kind { Number, Words, Address, Uuid, Text, Bytes, List };

struct Field {
    std::string name;
    Kind kind = Kind::Number;
    /// Of a number; of the length of a text or of bytes.
    int64_t low = 0;
    int64_t high = 0;
    /// Names of numbers. Numbers without a name stay numbers.
    std::vector<std::pair<std::string, int64_t>> words;
    /// Of an argument that may be left out.
    std::optional<std::string> fallback;

    /// "speaker|microphone", "0..15", "ADDRESS".
    std::string domain() const;
    /// A number as it is shown.
    Json name_of(int64_t number) const;
};

/// What the text of a field does not say, its C type does.
struct FieldType {
    Kind kind;
    int64_t low;
    int64_t high;
};

/// "name", "name=0..15", "name=off|on", "name=connected:2|gone:0", "name=text"; an argument may end in
/// "?default". Throws std::logic_error when it is none of these.
Field read_field(std::string_view text, FieldType type);

/// What a row of a table says of each field, separated by blanks.
std::vector<std::string> split_row(std::string_view row);

/// One argument, read.
struct Value {
    int64_t number = 0;
    std::string bytes;
    bt_bdaddr_t address{};
    bt_uuid_t uuid{};
};

/// Throws Usage.
Value read_value(const Field& field, const std::string& word);

std::string to_text(const bt_bdaddr_t& address);
/// Four digits when it is on the base UUID.
std::string to_text(const bt_uuid_t& uuid);
std::string to_hex(std::string_view bytes);
std::optional<bt_bdaddr_t> to_address(std::string_view text);
std::optional<bt_uuid_t> to_uuid(std::string_view text);
std::optional<std::string> from_hex(std::string_view digits);

/// As one word of a line.
std::string to_word(const Json& value);

/// UTF-8 whatever the text was.
std::string dump(const Json& value);

// Words for the numbers that several profiles share.
#define VYMCTL_STATUS                                                                                  \
    "status=success|fail|not-ready|no-memory|busy|done|unsupported|parameter-invalid|unhandled|"       \
    "auth-failure|remote-down|auth-rejected"
#define VYMCTL_CODE "status=success:0"

} // namespace vymctl

#endif
