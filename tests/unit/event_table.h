// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A profile's table of events asked directly: its rows, what it tells the module, where it goes on.
#ifndef VYM_TESTS_UNIT_EVENT_TABLE_H
#define VYM_TESTS_UNIT_EVENT_TABLE_H

#include "support/text.h"

#include "vym_event_parser.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace unit {

struct Row {
    const char* tag;
    const char* name;
    int minimum;
};

/** What the table's callbacks have left. */
inline std::string& Told() {
    static std::string told;
    return told;
}

/** What the framework would have said. */
inline std::string& Logged() {
    static std::string logged;
    return logged;
}

__attribute__((format(printf, 1, 0))) inline void KeepLog(const char* format, va_list args) {
    char line[200];
    vsnprintf(line, sizeof line, format, args);
    Logged() += line;
}

/** Offers these bytes, in a block of exactly their size; returns where the framework goes on. */
inline int OfferBytes(event_parser_t* parser, const std::string& bytes) {
    const std::unique_ptr<uint8_t[]> buffer(new uint8_t[bytes.size()]);
    memcpy(buffer.get(), bytes.data(), bytes.size());
    return parser->process_event(parser, buffer.get(), 0, static_cast<int>(bytes.size()));
}

template <size_t Size>
void ExpectRows(const event_parser_t& parser, const Row (&rows)[Size]) {
    ASSERT_EQ(parser.num_of_parsers, static_cast<int>(Size));
    for (size_t i = 0; i < Size; ++i) {
        const parser_t& entry = parser.parser_list[i];
        EXPECT_STREQ(entry.get_keyword(), rows[i].tag);
        EXPECT_STREQ(entry.get_tag(), rows[i].name);
        EXPECT_EQ(entry.get_min_expected_length(), rows[i].minimum) << rows[i].tag;
    }
}

/** The parser that `Create` makes for the table that `Table` returns. */
template <auto Create, auto Destroy, auto Table>
class EventTableTest : public ::testing::Test {
protected:
    void SetUp() override {
        Told().clear();
        Logged().clear();
        evt_log_set_sink(KeepLog);
        ASSERT_NE(parser_, nullptr);
    }
    void TearDown() override {
        evt_log_set_sink(nullptr);
        Destroy(parser_);
    }

    int OfferBytes(const std::string& bytes) {
        Told().clear();
        Logged().clear();
        return unit::OfferBytes(parser_, bytes);
    }

    /** Offers the event with its NUL; returns what came of it. */
    std::string Offer(const std::string& event, int expected_end) {
        EXPECT_EQ(OfferBytes(support::Event(event)), expected_end) << event;
        return Told();
    }

    template <size_t Size>
    void ExpectRows(const Row (&rows)[Size]) {
        unit::ExpectRows(*parser_, rows);
    }

    event_parser_t* parser_ = Create(Table());
};

} // namespace unit

#endif
