// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "random_event.h"

#include "protocol/codec.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace sim {
namespace {

using protocol::Field;
using protocol::Fields;
using protocol::Layout;
using protocol::Repeat;
using protocol::Type;
using protocol::Value;

constexpr size_t kLongestText = 40;
constexpr size_t kMostMembers = 4;

class Maker {
public:
    explicit Maker(Random& random) : random_(random) {}

    std::vector<Value> make(const Fields& fields) {
        std::vector<Value> values;
        for (const Field& field : fields) {
            Value value;
            value.field = &field;
            if (field.repeat == Repeat::Once) {
                fill(value, values);
            } else {
                fill_list(value, values);
            }
            values.push_back(std::move(value));
        }
        measure(values);
        return values;
    }

private:
    void fill_list(Value& list, const std::vector<Value>& before) {
        list.is_list = true;
        const size_t count =
            list.field->repeat == Repeat::Fixed ? list.field->size : random_.below(kMostMembers + 1);
        for (size_t i = 0; i < count; ++i) {
            Value member;
            member.field = list.field;
            fill(member, before);
            list.members.push_back(std::move(member));
        }
    }

    void fill(Value& value, const std::vector<Value>& before) {
        const Field& field = *value.field;
        if (field.type == Type::Group) {
            value.members = make(field.inner->fields);
        } else if (field.type == Type::Choice) {
            value.members = make(chosen(field, before)->fields);
        } else if (field.type == Type::Block && field.inner != nullptr) {
            value.members = make(field.inner->fields);
            value.bytes = protocol::encode({}, value.members);
        } else {
            // Which of the two counts is the type's business.
            value.number = random_.dword();
            value.bytes = is_text(field.type) ? text(length_of(field)) : bytes(length_of(field));
        }
    }

    static bool is_text(Type type) {
        return type == Type::Text || type == Type::Counted || type == Type::Character ||
               type == Type::FixedText || type == Type::RestText || type == Type::NulText;
    }

    size_t length_of(const Field& field) {
        switch (field.type) {
        case Type::Character:
            return 1;
        case Type::Address:
        case Type::RawAddress:
        case Type::BigAddress:
            return 6;
        case Type::UuidFirst:
        case Type::UuidLast:
        case Type::Oob:
        case Type::RawUuid:
            return 16;
        default:
            return field.size != 0 ? field.size : random_.below(kLongestText + 1);
        }
    }

    /// Any layout; the field that selects it was any number, and is often none of their keys.
    const Layout* chosen(const Field& choice, const std::vector<Value>& before) {
        const auto selector = std::find_if(before.begin(), before.end(), [&](const Value& value) {
            return value.field->name == choice.count;
        });
        std::vector<const Layout*> layouts;
        for (const Layout* layout = choice.inner; layout != nullptr; layout = layout->next) {
            if (selector != before.end() && layout->key == selector->number) {
                return layout;
            }
            layouts.push_back(layout);
        }
        return layouts[random_.below(layouts.size())];
    }

    /// A count stands before what it counts, but is known only afterwards.
    static void measure(std::vector<Value>& values) {
        for (const Value& counted : values) {
            const Type type = counted.field->type;
            for (Value& count : values) {
                if (counted.field->count.empty() || count.field->name != counted.field->count ||
                    type == Type::Choice) {
                    continue;
                }
                const size_t length = counted.is_list ? counted.members.size()
                                      : type == Type::ShortBlock
                                          ? protocol::escape(counted.bytes).size()
                                          : counted.bytes.size();
                count.number = static_cast<uint32_t>(length);
            }
        }
    }

    std::string text(size_t length) {
        std::string made;
        while (made.size() < length) {
            made += static_cast<char>(' ' + random_.below('~' - ' ' + 1));
        }
        return made;
    }

    std::string bytes(size_t length) {
        std::string made;
        while (made.size() < length) {
            made += static_cast<char>(random_.byte());
        }
        return made;
    }

    Random& random_;
};

std::vector<const protocol::Message*> events() {
    std::vector<const protocol::Message*> all;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Message& message : profile->events) {
            if (message.tag != "PD") {
                all.push_back(&message);
            }
        }
    }
    return all;
}

} // namespace

std::string random_event(Random& random) {
    static const std::vector<const protocol::Message*> kAll = events();
    const protocol::Message& message = *kAll[random.below(kAll.size())];
    return protocol::encode(message, Maker(random).make(message.fields));
}

} // namespace sim
