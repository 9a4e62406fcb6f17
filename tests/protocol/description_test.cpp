// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What every reader of the tables relies on.

#include "protocol/protocol.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using protocol::Direction;
using protocol::Field;
using protocol::Fields;
using protocol::Message;
using protocol::Type;

std::vector<const Message*> All(Direction direction) {
    std::vector<const Message*> all;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const Message& message :
             direction == Direction::Command ? profile->commands : profile->events) {
            all.push_back(&message);
        }
    }
    return all;
}

// The characters without which the fixed fields are not whole; a block counts with its length.
size_t FixedWidth(const Message& message) {
    size_t sum = 0;
    for (const Field& field : message.fields) {
        sum += field.type == Type::Block ? 4 : protocol::width(field.type);
    }
    return sum;
}

void ExpectSound(const Fields& fields, const std::string& where) {
    std::set<std::string_view> names;
    for (const Field& field : fields) {
        EXPECT_FALSE(field.name.empty()) << where;
        EXPECT_TRUE(names.insert(field.name).second) << where << ": two fields " << field.name;
        const bool needs_inner = field.type == Type::Group || field.type == Type::Choice;
        EXPECT_TRUE(field.inner != nullptr || !needs_inner) << where << ": " << field.name;
        for (const protocol::Layout* inner = field.inner; inner != nullptr; inner = inner->next) {
            EXPECT_FALSE(inner->fields.empty()) << where << ": " << inner->name;
            ExpectSound(inner->fields, where + ": " + std::string(inner->name));
        }
    }
}

TEST(ProtocolDescription, NoTagIsTheBeginningOfAnother) {
    for (const Direction direction : {Direction::Command, Direction::Event}) {
        for (const Message* one : All(direction)) {
            for (const Message* other : All(direction)) {
                if (one != other) {
                    EXPECT_NE(other->tag.substr(0, one->tag.size()), one->tag) << other->name;
                }
            }
        }
    }
}

TEST(ProtocolDescription, EachTagIsFoundInItsProfile) {
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const Message& message : profile->commands) {
            const auto found = protocol::find(Direction::Command, std::string(message.tag) + "01");
            EXPECT_EQ(found.message, &message);
            EXPECT_EQ(found.profile, profile);
        }
        for (const Message& message : profile->events) {
            const auto found = protocol::find(Direction::Event, std::string(message.tag) + "01");
            EXPECT_EQ(found.message, &message);
            EXPECT_EQ(found.profile, profile);
        }
    }
}

TEST(ProtocolDescription, NoTagIsFoundInOtherText) {
    for (const char* text : {"", "B", "ZZ", "bb", "DD", "RWD", "\x01"}) {
        EXPECT_FALSE(protocol::find(Direction::Event, text)) << text;
    }
    for (const char* text : {"", "K", "DD", "HY", "AT#HH"}) {
        EXPECT_FALSE(protocol::find(Direction::Command, text)) << text;
    }
}

TEST(ProtocolDescription, NamesAreUniqueWithinAProfile) {
    for (const protocol::Profile* profile : protocol::profiles()) {
        std::set<std::string_view> names;
        for (const Message& message : profile->commands) {
            EXPECT_TRUE(names.insert(message.name).second) << message.name;
        }
        for (const Message& message : profile->events) {
            EXPECT_TRUE(names.insert(message.name).second) << message.name;
        }
    }
}

TEST(ProtocolDescription, FieldsHaveNamesOfTheirOwn) {
    for (const Direction direction : {Direction::Command, Direction::Event}) {
        for (const Message* message : All(direction)) {
            ExpectSound(message->fields, std::string(message->tag));
        }
    }
}

TEST(ProtocolDescription, AMinimumIsTheWidthOfTheFixedFieldsButForTheKnownOnes) {
    // The library has always been content with less than these carry; servers may rely on it.
    const std::map<std::string_view, size_t> shorter = {{"KB", 20}, {"RD", 22}, {"RR", 24}, {"SE", 38}};
    // Its length is a matter of what kind of entry it is.
    const std::set<std::string_view> none = {"TD"};
    for (const Message* event : All(Direction::Event)) {
        if (none.count(event->tag) != 0) {
            EXPECT_EQ(event->minimum, 0U);
            continue;
        }
        const auto known = shorter.find(event->tag);
        if (known == shorter.end()) {
            EXPECT_EQ(event->minimum, FixedWidth(*event)) << event->tag;
        } else {
            EXPECT_EQ(FixedWidth(*event), known->second) << event->tag;
            EXPECT_LT(event->minimum, known->second) << event->tag;
        }
    }
}

} // namespace
