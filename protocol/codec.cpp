// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "codec.h"

#include <algorithm>
#include <array>
#include <optional>

namespace protocol {
namespace {

constexpr char kEscape = '\xDC';
constexpr size_t kCountWidth = 4;

/// The second byte of the pair that stands for a byte, or 0.
char escaped_as(char byte) {
    switch (byte) {
    case '\0':
        return '\xDD';
    case '\r':
        return '\xDE';
    case '\n':
        return '\xDF';
    case kEscape:
        return kEscape;
    default:
        return 0;
    }
}

std::optional<char> unescaped(char second) {
    for (const char byte : {'\0', '\r', '\n', kEscape}) {
        if (escaped_as(byte) == second) {
            return byte;
        }
    }
    return std::nullopt;
}

/// What is no digit has all the upper bits.
constexpr uint8_t kNoDigit = 0xFF;

constexpr std::array<uint8_t, 256> kDigitOf = [] {
    std::array<uint8_t, 256> digits{};
    for (uint8_t& digit : digits) {
        digit = kNoDigit;
    }
    for (uint8_t i = 0; i < 10; ++i) {
        digits[size_t{'0'} + i] = i;
    }
    for (uint8_t i = 10; i < 16; ++i) {
        digits[size_t{'A'} + i - 10] = i;
        digits[size_t{'a'} + i - 10] = i;
    }
    return digits;
}();

uint8_t digit_of(char c) {
    return kDigitOf[static_cast<unsigned char>(c)];
}

bool is_number(Type type) {
    switch (type) {
    case Type::Byte:
    case Type::Word:
    case Type::Dword:
    case Type::HexDigit:
    case Type::Decimal:
    case Type::U8:
    case Type::Le16:
    case Type::Le32:
        return true;
    default:
        return false;
    }
}

bool is_raw(Type type) {
    return type >= Type::U8;
}

/// Bytes that a raw field takes; 0 for one whose length is told elsewhere.
size_t raw_width(const Field& field) {
    switch (field.type) {
    case Type::U8:
        return 1;
    case Type::Le16:
        return 2;
    case Type::Le32:
        return 4;
    case Type::RawAddress:
    case Type::BigAddress:
        return 6;
    case Type::RawUuid:
        return 16;
    case Type::Bytes:
    case Type::FixedText:
        return field.repeat == Repeat::Fixed ? 0 : field.size;
    default:
        return 0;
    }
}

bool is_reversed(Type type) {
    return type == Type::Address || type == Type::UuidLast || type == Type::BigAddress;
}

/// Foreign text as part of a line.
std::string quoted(std::string_view text) {
    static constexpr Field kText{"", Type::Text};
    Value value;
    value.field = &kText;
    value.bytes = text;
    return to_text(value);
}

/// The places of a list in turn. Values that an earlier message has left there keep their memory.
class Places {
public:
    explicit Places(std::vector<Value>* values) : values_(*values) {}
    ~Places() { values_.resize(taken_); }
    Places(const Places&) = delete;
    Places& operator=(const Places&) = delete;
    Places(Places&&) = delete;
    Places& operator=(Places&&) = delete;

    /// The next place, to be filled; it belongs to the list once take() is called.
    Value* next(const Field& field) {
        if (taken_ == values_.size()) {
            values_.emplace_back();
        }
        Value& value = values_[taken_];
        value.field = &field;
        value.is_list = false;
        value.number = 0;
        value.bytes.clear();
        value.members.clear();
        return &value;
    }
    void take() { ++taken_; }

    size_t taken() const { return taken_; }
    const Value* begin() const { return values_.data(); }
    const Value* end() const { return values_.data() + taken_; }

private:
    std::vector<Value>& values_;
    size_t taken_ = 0;
};

/// The values around one, from the inside out.
struct Scope {
    const Places& values;
    const Scope* outer;

    const Value* find(std::string_view name) const {
        for (const Scope* scope = this; scope != nullptr; scope = scope->outer) {
            for (const Value& value : scope->values) {
                if (value.field->name == name) {
                    return &value;
                }
            }
        }
        return nullptr;
    }

    uint32_t number(std::string_view name) const {
        const Value* value = find(name);
        return value == nullptr ? 0 : value->number;
    }
};

bool applies(When when, const Scope& scope) {
    if (when == When::Always) {
        return true;
    }
    const uint32_t target = scope.number("target");
    switch (when) {
    case When::Contact:
        return target == 5 || target == 6;
    case When::CallLog:
        return (target >= 7 && target <= 10) || target == 15;
    case When::Always:
        break;
    }
    return true;
}

/// The layout of a choice for this value; the last one serves for all others when its key is 0.
const Layout* chosen(const Field& field, const Scope& scope) {
    const uint32_t key = scope.number(field.count);
    for (const Layout* layout = field.inner; layout != nullptr; layout = layout->next) {
        if (layout->key == key || layout->key == 0) {
            return layout;
        }
    }
    return nullptr;
}

class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    bool read(const Fields& fields, std::vector<Value>* values, const Scope* outer) {
        values->reserve(fields.size());
        Places places(values);
        const Scope scope{places, outer};
        for (const Field& field : fields) {
            if (!applies(field.when, scope)) {
                continue;
            }
            Value* value = places.next(field);
            const bool good = field.repeat == Repeat::Once ? read_one(field, value, scope)
                                                           : read_list(field, value, scope);
            // What was read of a list or a block before it went wrong is shown as well.
            if (good || !value->members.empty()) {
                places.take();
            }
            if (!good) {
                return false;
            }
        }
        return true;
    }

    size_t left() const { return text_.size() - at_; }
    std::string_view rest() const { return text_.substr(at_); }
    const std::string& problem() const { return problem_; }
    /// Whether nothing but missing characters was found wrong, and not inside a block.
    bool only_ended() const { return only_ended_; }

private:
    bool fail(const Field& field, const std::string& why) {
        problem_ = std::string(field.name) + ": " + why;
        return false;
    }

    std::optional<std::string_view> take(const Field& field, size_t length) {
        if (left() < length) {
            only_ended_ = true;
            fail(field, "ends after " + std::to_string(left()) + " of " + std::to_string(length) +
                            (is_raw(field.type) ? " bytes" : " characters"));
            return std::nullopt;
        }
        const std::string_view taken = text_.substr(at_, length);
        at_ += length;
        return taken;
    }

    bool read_digits(const Field& field, size_t length, uint32_t base, uint32_t* number) {
        const auto digits = take(field, length);
        if (!digits) {
            return false;
        }
        uint32_t value = 0;
        for (const char c : *digits) {
            const uint32_t digit = digit_of(c);
            if (digit >= base) {
                return fail(field, quoted(*digits) + " is no number");
            }
            value = value * base + digit;
        }
        *number = value;
        return true;
    }

    /// All at once, if they are there and good; else none.
    void take_hex_bytes(size_t count, std::string* bytes) {
        if (left() / 2 < count) {
            return;
        }
        bytes->resize(count);
        uint8_t wrong = 0;
        const char* digits = text_.data() + at_;
        for (char& byte : *bytes) {
            const uint8_t high = digit_of(*digits++);
            const uint8_t low = digit_of(*digits++);
            wrong |= high | low;
            byte = static_cast<char>(high << 4U | low);
        }
        if (wrong >= 16) {
            bytes->clear();
        } else {
            at_ += 2 * count;
        }
    }

    bool read_hex_bytes(const Field& field, size_t count, std::string* bytes) {
        take_hex_bytes(count, bytes);
        // What is wrong with them is told of the first that is.
        while (bytes->size() < count) {
            uint32_t byte = 0;
            if (!read_digits(field, 2, 16, &byte)) {
                return false;
            }
            *bytes += static_cast<char>(byte);
        }
        if (is_reversed(field.type)) {
            std::reverse(bytes->begin(), bytes->end());
        }
        return true;
    }

    bool read_block(const Field& field, size_t length, Value* value, const Scope& scope) {
        const auto escaped = take(field, length);
        if (!escaped) {
            only_ended_ = false;
            return false;
        }
        if (!unescape(*escaped, &value->bytes)) {
            return fail(field, "is not escaped as a block must be");
        }
        // An empty block says nothing, whatever could be in it.
        if (field.inner == nullptr || value->bytes.empty()) {
            return true;
        }
        Reader inside(value->bytes);
        if (!inside.read(field.inner->fields, &value->members, &scope)) {
            only_ended_ = false;
            return fail(field, inside.problem());
        }
        return true;
    }

    bool read_raw(const Field& field, Value* value) {
        const size_t length = raw_width(field) != 0 ? raw_width(field) : left();
        const auto taken = take(field, length);
        if (!taken) {
            return false;
        }
        if (is_number(field.type)) {
            for (size_t i = length; i > 0; --i) {
                value->number = value->number << 8U | static_cast<unsigned char>((*taken)[i - 1]);
            }
            return true;
        }
        value->bytes = *taken;
        if (field.type == Type::FixedText) {
            value->bytes.resize(std::min(value->bytes.size(), value->bytes.find('\0')));
        } else if (is_reversed(field.type)) {
            std::reverse(value->bytes.begin(), value->bytes.end());
        }
        return true;
    }

    bool read_one(const Field& field, Value* value, const Scope& scope) {
        switch (field.type) {
        case Type::Byte:
        case Type::Word:
        case Type::Dword:
        case Type::HexDigit:
            return read_digits(field, width(field.type), 16, &value->number);
        case Type::Decimal:
            return read_digits(field, width(field.type), 10, &value->number);
        case Type::Address:
        case Type::UuidFirst:
        case Type::UuidLast:
        case Type::Oob:
            return read_hex_bytes(field, width(field.type) / 2, &value->bytes);
        case Type::HexBytes:
            return read_hex_bytes(field, scope.number(field.count), &value->bytes);
        case Type::Character:
            return read_plain(field, 1, value);
        case Type::Counted:
        case Type::SizedBytes:
            return read_plain(field, scope.number(field.count), value);
        case Type::Text:
            return read_plain(field, left(), value);
        case Type::Block: {
            uint32_t length = 0;
            return read_digits(field, kCountWidth, 16, &length) &&
                   read_block(field, length, value, scope);
        }
        case Type::ShortBlock:
            return read_block(field, scope.number(field.count), value, scope);
        case Type::NulText: {
            const size_t nul = rest().find('\0');
            return read_plain(field, nul == std::string_view::npos ? left() + 1 : nul + 1, value) &&
                   (value->bytes.pop_back(), true);
        }
        case Type::Group:
            return read(field.inner->fields, &value->members, &scope);
        case Type::Choice: {
            const Layout* layout = chosen(field, scope);
            return layout != nullptr ? read_chosen(*layout, value, scope)
                                     : fail(field, "of an unknown kind");
        }
        default:
            return read_raw(field, value);
        }
    }

    bool read_plain(const Field& field, size_t length, Value* value) {
        const auto taken = take(field, length);
        if (!taken) {
            return false;
        }
        value->bytes = *taken;
        return true;
    }

    // A value inside a record ends where the record's length says, early if need be: that no device is
    // bonded is a total of 0 and nothing else.
    bool read_chosen(const Layout& layout, Value* value, const Scope& scope) {
        const Value* length = scope.find("length");
        if (length == nullptr) {
            return read(layout.fields, &value->members, &scope);
        }
        const auto taken = take(*value->field, length->number);
        if (!taken) {
            return false;
        }
        Reader inside(*taken);
        if (!inside.read(layout.fields, &value->members, &scope) && !inside.only_ended()) {
            return fail(*value->field, inside.problem());
        }
        return true;
    }

    bool read_list(const Field& field, Value* value, const Scope& scope) {
        value->is_list = true;
        const size_t times = field.repeat == Repeat::Fixed     ? field.size
                             : field.repeat == Repeat::Counted ? scope.number(field.count)
                                                               : 0;
        while (field.repeat == Repeat::ToEnd ? left() > 0 : value->members.size() < times) {
            Value item;
            item.field = &field;
            if (!read_one(field, &item, scope)) {
                return false;
            }
            value->members.push_back(std::move(item));
        }
        return true;
    }

    std::string_view text_;
    size_t at_ = 0;
    std::string problem_;
    bool only_ended_ = false;
};

class Writer {
public:
    void write(const std::vector<Value>& values) {
        for (const Value& value : values) {
            if (value.is_list) {
                for (const Value& item : value.members) {
                    write_one(item);
                }
            } else {
                write_one(value);
            }
        }
    }

    const std::string& text() const { return text_; }

private:
    void digits(uint32_t number, size_t length, uint32_t base = 16) {
        std::string digits(length, '0');
        for (size_t i = length; i > 0; --i) {
            digits[i - 1] = "0123456789ABCDEF"[number % base];
            number /= base;
        }
        text_ += digits;
    }

    void hex_bytes(const Value& value) {
        std::string bytes = value.bytes;
        if (is_reversed(value.field->type)) {
            std::reverse(bytes.begin(), bytes.end());
        }
        for (const char byte : bytes) {
            digits(static_cast<unsigned char>(byte), 2);
        }
    }

    void raw(const Value& value) {
        const size_t length = raw_width(*value.field);
        if (is_number(value.field->type)) {
            for (size_t i = 0; i < length; ++i) {
                text_ += static_cast<char>(value.number >> (8 * i) & 0xFFU);
            }
            return;
        }
        std::string bytes = value.bytes;
        if (is_reversed(value.field->type)) {
            std::reverse(bytes.begin(), bytes.end());
        }
        if (length != 0) {
            bytes.resize(length);
        }
        text_ += bytes;
    }

    void write_one(const Value& value) {
        switch (value.field->type) {
        case Type::Byte:
        case Type::Word:
        case Type::Dword:
        case Type::HexDigit:
            digits(value.number, width(value.field->type));
            break;
        case Type::Decimal:
            digits(value.number, width(value.field->type), 10);
            break;
        case Type::Address:
        case Type::UuidFirst:
        case Type::UuidLast:
        case Type::Oob:
        case Type::HexBytes:
            hex_bytes(value);
            break;
        case Type::Block:
        case Type::ShortBlock:
            block(value);
            break;
        case Type::NulText:
            text_ += value.bytes + '\0';
            break;
        case Type::Group:
        case Type::Choice:
            write(value.members);
            break;
        default:
            raw(value);
            break;
        }
    }

    void block(const Value& value) {
        Writer inside;
        inside.write(value.members);
        const std::string escaped = escape(value.members.empty() ? value.bytes : inside.text());
        if (value.field->type == Type::Block) {
            digits(static_cast<uint32_t>(escaped.size()), kCountWidth);
        }
        text_ += escaped;
    }

    std::string text_;
};

} // namespace

std::string escape(std::string_view bytes) {
    std::string escaped;
    escaped.reserve(bytes.size());
    for (const char byte : bytes) {
        const char second = escaped_as(byte);
        if (second != 0) {
            escaped += kEscape;
        }
        escaped += second != 0 ? second : byte;
    }
    return escaped;
}

bool unescape(std::string_view escaped, std::string* bytes) {
    bytes->clear();
    for (;;) {
        const std::string_view plain = escaped.substr(0, escaped.find(kEscape));
        *bytes += plain;
        escaped.remove_prefix(plain.size());
        if (escaped.empty()) {
            return true;
        }
        const auto byte = escaped.size() > 1 ? unescaped(escaped[1]) : std::nullopt;
        if (!byte) {
            return false;
        }
        *bytes += *byte;
        escaped.remove_prefix(2);
    }
}

Decoded decode(Direction direction, std::string_view text) {
    Decoded decoded;
    decode(direction, find(direction, text), text, &decoded);
    return decoded;
}

void decode(Direction direction, const Found& found, std::string_view text, Decoded* decoded) {
    decoded->found = found;
    decoded->surplus = {};
    decoded->problem.clear();
    if (!decoded->found) {
        decoded->values.clear();
        decoded->problem = "unknown tag";
        return;
    }
    const Message& message = *decoded->found.message;
    const std::string_view fields = text.substr(message.tag.size());
    Reader reader(fields);
    if (!reader.read(message.fields, &decoded->values, nullptr)) {
        const bool enough = direction == Direction::Event && reader.only_ended() &&
                            fields.size() >= message.minimum && message.minimum > 0;
        decoded->problem = enough ? "" : reader.problem();
    } else {
        decoded->surplus = reader.rest();
    }
}

std::string encode(const Message& message, const std::vector<Value>& values) {
    Writer writer;
    writer.write(values);
    return std::string(message.tag) + writer.text();
}

} // namespace protocol
