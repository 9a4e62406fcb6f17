// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Values for the fields of a message, made from its description alone. The same message, kind and round
// always give the same values.
#ifndef VYM_TESTS_PROTOCOL_GENERATED_VALUES_H
#define VYM_TESTS_PROTOCOL_GENERATED_VALUES_H

#include "protocol/codec.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace generated {

using protocol::Field;
using protocol::Fields;
using protocol::Layout;
using protocol::Repeat;
using protocol::Type;
using protocol::Value;

/** What numbers, bytes and texts are made of. */
enum class Kind {
    kEmpty,   // zeroes, empty texts, blocks and lists
    kSmall,   // 1, 2, 3 ...: no two fields are alike
    kSpecial, // the bytes that blocks escape
    kMaximum, // all bits set, long texts and blocks
    kRandom,
};
constexpr std::array<Kind, 5> kKinds{Kind::kEmpty, Kind::kSmall, Kind::kSpecial, Kind::kMaximum,
                                     Kind::kRandom};

/** Kinds of phone-book entry: contacts, call lists, others. */
constexpr std::array<uint32_t, 6> kTargets{5, 6, 7, 10, 15, 1};

inline Value* Find(std::vector<Value>& values, std::string_view name) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](const Value& v) { return v.field->name == name; });
    return found == values.end() ? nullptr : &*found;
}

/** How many rounds it takes until each of a choice's layouts has had its turn. */
inline size_t Rounds(const Fields& fields) {
    size_t rounds = 1;
    for (const Field& field : fields) {
        size_t layouts = 0;
        for (const Layout* inner = field.inner; inner != nullptr; inner = inner->next) {
            ++layouts;
            rounds = std::max(rounds, Rounds(inner->fields));
        }
        rounds =
            std::max({rounds, layouts, field.when != protocol::When::Always ? kTargets.size() : 1});
    }
    return rounds;
}

class Values {
public:
    Values(Kind kind, size_t round) : kind_(kind), round_(round), random_(round + 1) {}

    std::vector<Value> Of(const protocol::Message& message) { return Make(message.fields, nullptr); }

private:
    struct Scope {
        std::vector<Value>& values;
        Scope* outer;
    };

    static uint32_t NumberOf(Scope* scope, std::string_view name) {
        for (; scope != nullptr; scope = scope->outer) {
            if (const Value* value = Find(scope->values, name)) {
                return value->number;
            }
        }
        return 0;
    }

    // The field of a layout, or of a block in it, that `name` counts, measures or selects.
    static const Field* GovernedBy(const Fields& fields, std::string_view name) {
        for (const Field& field : fields) {
            if (field.count == name) {
                return &field;
            }
        }
        for (const Field& field : fields) {
            const Field* inside = field.inner != nullptr && field.type != Type::Choice
                                      ? GovernedBy(field.inner->fields, name)
                                      : nullptr;
            if (inside != nullptr) {
                return inside;
            }
        }
        return nullptr;
    }

    std::vector<Value> Make(const Fields& fields, Scope* outer) {
        std::vector<Value> values;
        Scope scope{values, outer};
        for (const Field& field : fields) {
            if (!Applies(field, &scope)) {
                continue;
            }
            Value value;
            value.field = &field;
            const Field* governed = GovernedBy(fields, field.name);
            if (field.name == "target") {
                value.number = kTargets[round_ % kTargets.size()];
            } else if (governed != nullptr && governed->type == Type::Choice) {
                value.number = Selector(*governed);
            } else if (governed != nullptr && governed->repeat == Repeat::Counted) {
                value.number = Length(*governed, field.type == Type::HexDigit ? 15 : 12);
            } else if (field.repeat != Repeat::Once) {
                MakeList(field, &value, &scope);
            } else {
                MakeOne(field, &value, &scope);
            }
            values.push_back(std::move(value));
        }
        Measure(values);
        return values;
    }

    static bool Applies(const Field& field, Scope* scope) {
        const uint32_t target = NumberOf(scope, "target");
        const bool is_contact = target == 5 || target == 6;
        const bool is_call = (target >= 7 && target <= 10) || target == 15;
        return field.when == protocol::When::Always ||
               (field.when == protocol::When::Contact ? is_contact : is_call);
    }

    // A length stands before what it measures, but is known only afterwards.
    static void Measure(std::vector<Value>& values) {
        for (const Value& value : values) {
            const Type type = value.field->type;
            Value* length = Find(values, type == Type::Choice ? "length" : value.field->count);
            if (length == nullptr || value.is_list) {
                continue;
            }
            if (type == Type::Choice) {
                length->number = static_cast<uint32_t>(protocol::encode({}, value.members).size());
            } else if (type == Type::ShortBlock) {
                length->number = static_cast<uint32_t>(protocol::escape(value.bytes).size());
            } else {
                length->number = static_cast<uint32_t>(value.bytes.size());
            }
        }
    }

    uint32_t Selector(const Field& choice) {
        std::vector<uint32_t> keys;
        for (const Layout* layout = choice.inner; layout != nullptr; layout = layout->next) {
            keys.push_back(layout->key != 0 ? layout->key : 0x3D);
        }
        return keys[(round_ + selected_++) % keys.size()];
    }

    static const Layout* Chosen(const Field& choice, uint32_t key) {
        const Layout* layout = choice.inner;
        while (layout->next != nullptr && layout->key != key) {
            layout = layout->next;
        }
        return layout;
    }

    uint32_t Length(const Field& field, uint32_t most) {
        switch (kind_) {
        case Kind::kEmpty:
            return 0;
        case Kind::kSmall:
            return 2;
        case Kind::kSpecial:
            return 3;
        case Kind::kMaximum:
            return field.type == Type::Group ? 4 : most;
        case Kind::kRandom:
            break;
        }
        return 1 + static_cast<uint32_t>(random_() % 4);
    }

    void MakeList(const Field& field, Value* value, Scope* scope) {
        value->is_list = true;
        const uint32_t count = field.repeat == Repeat::Fixed     ? field.size
                               : field.repeat == Repeat::Counted ? NumberOf(scope, field.count)
                                                                 : Length(field, 12);
        for (uint32_t i = 0; i < count; ++i) {
            Value item;
            item.field = &field;
            MakeOne(field, &item, scope);
            value->members.push_back(std::move(item));
        }
    }

    void MakeOne(const Field& field, Value* value, Scope* scope) {
        switch (field.type) {
        case Type::Group:
            value->members = Make(field.inner->fields, scope);
            break;
        case Type::Choice:
            value->members = Make(Chosen(field, NumberOf(scope, field.count))->fields, scope);
            break;
        case Type::Block:
            MakeBlock(field, value, scope);
            break;
        case Type::ShortBlock:
        case Type::HexBytes:
        case Type::SizedBytes:
            value->bytes = BlockBytes().substr(0, 20);
            break;
        case Type::Byte:
        case Type::U8:
            value->number = Number(1);
            break;
        case Type::Word:
        case Type::Le16:
            value->number = Number(2);
            break;
        case Type::Dword:
        case Type::Le32:
            value->number = Number(4);
            break;
        case Type::HexDigit:
            value->number = Number(1) & 0xFU;
            break;
        case Type::Decimal:
            value->number = Number(1) % 100;
            break;
        default:
            value->bytes = IsText(field.type) ? Text(TextLimit(field)) : RawBytes(field);
            break;
        }
    }

    // An empty block has nothing in it, whatever it could have.
    void MakeBlock(const Field& field, Value* value, Scope* scope) {
        if (field.inner == nullptr) {
            value->bytes = BlockBytes();
        } else if (kind_ != Kind::kEmpty) {
            value->members = Make(field.inner->fields, scope);
            value->bytes = protocol::encode({}, value->members);
        }
    }

    static bool IsText(Type type) {
        return type == Type::Text || type == Type::Counted || type == Type::Character ||
               type == Type::FixedText || type == Type::RestText || type == Type::NulText;
    }

    // The names and numbers of a phone-book entry have little room in the library's record.
    static size_t TextLimit(const Field& field) {
        return field.type == Type::Character   ? 1
               : field.type == Type::FixedText ? field.size
               : field.type == Type::Counted   ? 30
                                               : 200;
    }

    std::string Text(size_t limit) {
        std::string text;
        switch (kind_) {
        case Kind::kEmpty:
            text = limit == 1 ? " " : "";
            break;
        case Kind::kSmall:
            text = "text " + std::to_string(++counter_);
            break;
        case Kind::kSpecial:
            text = "Zo\xC3\xAB \\ \"50%\" \xDC\r\n";
            break;
        case Kind::kMaximum:
            text = std::string(limit - 1, '9') + '!';
            break;
        case Kind::kRandom:
            for (size_t length = 1 + random_() % 20; length > 0; --length) {
                text += static_cast<char>(' ' + random_() % ('~' - ' '));
            }
            break;
        }
        return text.substr(0, limit);
    }

    std::string RawBytes(const Field& field) {
        size_t length = field.size != 0 ? field.size : 3;
        if (field.type == Type::Address || field.type == Type::RawAddress ||
            field.type == Type::BigAddress) {
            length = 6;
        } else if (field.type == Type::UuidFirst || field.type == Type::UuidLast ||
                   field.type == Type::Oob || field.type == Type::RawUuid) {
            length = 16;
        }
        std::string bytes;
        while (bytes.size() < length) {
            bytes += static_cast<char>(Byte());
        }
        return bytes;
    }

    std::string BlockBytes() {
        static constexpr std::array<size_t, 4> kLengths{0, 3, 8, 600};
        const size_t length =
            kind_ == Kind::kRandom ? 1 + random_() % 40 : kLengths[static_cast<size_t>(kind_)];
        std::string bytes;
        while (bytes.size() < length) {
            bytes += static_cast<char>(Byte());
        }
        return bytes;
    }

    uint32_t Number(size_t width) {
        uint32_t number = Byte();
        for (size_t i = 1; i < width && kind_ != Kind::kSmall; ++i) {
            number = number << 8U | Byte();
        }
        return number;
    }

    uint8_t Byte() {
        static constexpr std::array<uint8_t, 4> kSpecial{0x0A, 0x0D, 0xDC, 0x00};
        switch (kind_) {
        case Kind::kEmpty:
            return 0;
        case Kind::kSmall:
            return static_cast<uint8_t>(++counter_);
        case Kind::kSpecial:
            return kSpecial[counter_++ % kSpecial.size()];
        case Kind::kMaximum:
            return 0xFF;
        case Kind::kRandom:
            break;
        }
        return static_cast<uint8_t>(random_());
    }

    Kind kind_;
    size_t round_;
    size_t selected_ = 0;
    uint32_t counter_ = 0;
    // The standard lays down its numbers, so that they are the same everywhere.
    std::minstd_rand random_;
};

} // namespace generated

#endif
