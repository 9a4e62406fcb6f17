// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_event_parser.h"

#include "vym_unknown_event.h"

#include "support/output_capture.h"
#include "support/text.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

// What the decoder was given and what it is to answer.
struct Decoder {
    int calls = 0;
    int pos = -1;
    int text_end = -1;
    int complete = -1;
    int advance = 14; // answers pos + advance
    bool refuse = false;
};

Decoder& TheDecoder() {
    static Decoder decoder;
    return decoder;
}

std::string& TheLog() {
    static std::string log;
    return log;
}

__attribute__((format(printf, 1, 0))) void KeepLog(const char* format, va_list args) {
    std::array<char, 256> text{};
    vsnprintf(text.data(), text.size(), format, args);
    TheLog() += text.data();
}

int Parse(uint8_t* buffer, int pos) {
    Decoder& decoder = TheDecoder();
    ++decoder.calls;
    decoder.pos = pos;
    decoder.text_end = vym_event_text_end(buffer, pos, &decoder.complete);
    return decoder.refuse ? -1 : pos + decoder.advance;
}

parser_t Entry(const char* (*keyword)(), const char* (*name)()) {
    return {keyword, name, [] { return 14; }, Parse};
}

// The table of the tests: "AA" and "AB", 14 characters each.
class FrameworkTest : public ::testing::Test {
protected:
    void SetUp() override {
        TheDecoder() = Decoder{};
        TheLog().clear();
        evt_log_set_sink(KeepLog);
    }
    void TearDown() override { evt_log_set_sink(nullptr); }

    // Puts the text into a block of exactly its size and offers what lies at `offset`.
    int Offer(const std::string& text, int offset = 0) {
        const std::unique_ptr<uint8_t[]> buffer(new uint8_t[text.size()]);
        std::copy(text.begin(), text.end(), buffer.get());
        return parser_.process_event(&parser_, buffer.get(), offset,
                                     static_cast<int>(text.size()) - offset);
    }

    std::array<parser_t, 2> table_{Entry([] { return "AA"; }, [] { return "onFirst"; }),
                                   Entry([] { return "AB"; }, [] { return "onSecond"; })};
    event_parser_t parser_{0, 2, table_.data(), process_event_impl};
};

std::string Event(const std::string& text) {
    return support::Event(text);
}

TEST_F(FrameworkTest, AWholeEventIsDecodedAndConsumedUpToItsNul) {
    EXPECT_EQ(Offer(Event("AA00112233445566")), 16);
    EXPECT_EQ(TheDecoder().calls, 1);
    EXPECT_EQ(TheDecoder().pos, 2);
    EXPECT_EQ(TheDecoder().text_end, 16);
    EXPECT_EQ(TheDecoder().complete, 1);
    EXPECT_EQ(parser_.event_end_pos, 16);
    EXPECT_EQ(TheLog(), "");
}

TEST_F(FrameworkTest, AnEventTooShortForItsFieldsIsConsumedWithoutACall) {
    EXPECT_EQ(Offer(Event("AA0011223344")), 12);
    EXPECT_EQ(TheDecoder().calls, 0);
    EXPECT_EQ(TheLog(), "onFirst: Invalid parameters!\n");
}

TEST_F(FrameworkTest, OneCharacterTooFewIsTooShort) {
    EXPECT_EQ(Offer(Event("AA0011223344556")), 15);
    EXPECT_EQ(TheDecoder().calls, 0);
}

TEST_F(FrameworkTest, FieldsThatHaveNotAllArrivedAreKept) {
    EXPECT_EQ(Offer("AA0011223344"), -1);
    EXPECT_EQ(TheDecoder().calls, 0);
    EXPECT_EQ(parser_.event_end_pos, -1);
    EXPECT_EQ(TheLog(), "onFirst: Not enough information!\n");
}

TEST_F(FrameworkTest, FieldsAreDecodedBeforeTheNulArrives) {
    EXPECT_EQ(Offer("AA00112233445566"), 16);
    EXPECT_EQ(TheDecoder().calls, 1);
    EXPECT_EQ(TheDecoder().text_end, 16);
    EXPECT_EQ(TheDecoder().complete, 0);
    EXPECT_EQ(parser_.event_end_pos, -1);
}

TEST_F(FrameworkTest, SurplusBeforeTheNulIsSkippedAfterTheCall) {
    EXPECT_EQ(Offer(Event("AA0011223344556677")), 18);
    EXPECT_EQ(TheDecoder().calls, 1);
    EXPECT_EQ(TheLog(), "onFirst: Still 2 characters not processed!!");
}

TEST_F(FrameworkTest, ADecoderThatReadsPastTheNulIsSetBackToIt) {
    TheDecoder().advance = 17;
    EXPECT_EQ(Offer(Event("AA00112233445566")), 16);
    EXPECT_EQ(TheLog(), "onFirst: Still -3 characters not processed!!");
}

TEST_F(FrameworkTest, ARefusedEventIsConsumedUpToItsNul) {
    TheDecoder().refuse = true;
    EXPECT_EQ(Offer(Event("AA00112233445566")), 16);
    EXPECT_EQ(TheDecoder().calls, 1);
}

TEST_F(FrameworkTest, ARefusedEventWithoutItsNulIsKept) {
    TheDecoder().refuse = true;
    EXPECT_EQ(Offer("AA00112233445566"), -1);
    EXPECT_EQ(TheDecoder().calls, 1);
}

TEST_F(FrameworkTest, TheTableIsSearchedForTheTag) {
    EXPECT_EQ(Offer(Event("AB00112233445566")), 16);
    EXPECT_EQ(TheDecoder().calls, 1);
    EXPECT_EQ(Offer(Event("AB00")), 4);
    EXPECT_EQ(TheLog(), "onSecond: Invalid parameters!\n");
}

TEST_F(FrameworkTest, ATextOfAnotherTableIsNotTaken) {
    for (const char* text :
         {"AC00112233445566", "aa00112233445566", " AA0011223344556", "\nAA0011223344556", "A", ""}) {
        EXPECT_EQ(Offer(Event(text)), -1) << text;
    }
    EXPECT_EQ(Offer("A"), -1);
    EXPECT_EQ(TheDecoder().calls, 0);
    EXPECT_EQ(TheLog(), "");
}

TEST_F(FrameworkTest, PositionsAreAbsolute) {
    EXPECT_EQ(Offer(Event("skipped") + Event("AA00112233445566") + "AB", 8), 24);
    EXPECT_EQ(TheDecoder().pos, 10);
    EXPECT_EQ(TheDecoder().text_end, 24);
    EXPECT_EQ(Offer(Event("skipped") + "AA00112233445566", 8), 24);
    EXPECT_EQ(Offer(Event("skipped") + Event("AA0011"), 8), 14);
}

TEST_F(FrameworkTest, WithoutATableNothingIsTaken) {
    uint8_t text[] = "AA00112233445566";
    event_parser_t empty{0, 2, nullptr, process_event_impl};
    EXPECT_EQ(process_event_impl(&empty, text, 0, 17), -1);
    EXPECT_EQ(process_event_impl(nullptr, text, 0, 17), -1);
    empty.parser_list = table_.data();
    empty.num_of_parsers = 0;
    EXPECT_EQ(process_event_impl(&empty, text, 0, 17), -1);
}

TEST_F(FrameworkTest, DiagnosticsAreDiscardedWithoutASink) {
    const support::OutputCapture output(support::OutputCapture::Streams::kOutAndErr);
    evt_log_set_sink(nullptr);
    EXPECT_EQ(Offer(Event("AA00")), 4);
    evt_log("%s\n", "text");
    EXPECT_EQ(output.Out() + output.Err(), "");
    EXPECT_EQ(TheLog(), "");
}

TEST(EventParserTag, IsComparedByteForByteWithinTheLength) {
    struct Case {
        const char* tag;
        const char* text;
        int offset;
        int length;
        int result;
    };
    for (const Case& one :
         {Case{"AA", "AA01", 0, 4, 2}, Case{"AA", "AA01", 0, 2, 2}, Case{"AA", "AA01", 0, 1, -1},
          Case{"AA", "AA01", 0, 0, -1}, Case{"AA", "xxAA", 2, 2, 4}, Case{"AA", "xxAA", 0, 4, -1},
          Case{"AA", "aa01", 0, 4, -1}, Case{"KZA", "KZA01", 0, 5, 3}, Case{"KZA", "KZB01", 0, 5, -1},
          Case{"KZA", "KZ", 0, 2, -1}}) {
        std::string text = one.text;
        EXPECT_EQ(check_tag(one.tag, reinterpret_cast<uint8_t*>(text.data()), one.offset, one.length),
                  one.result)
            << one.tag << " in " << one.text;
    }
}

TEST(EventParserEnd, IsTheFirstNulInTheRange) {
    uint8_t text[] = {'A', 0, 'B', 'C', 0};
    EXPECT_EQ(check_event_end_pos(text, 0, 5), 1);
    EXPECT_EQ(check_event_end_pos(text, 1, 4), 1);
    EXPECT_EQ(check_event_end_pos(text, 2, 3), 4);
    EXPECT_EQ(check_event_end_pos(text, 2, 2), -1);
    EXPECT_EQ(check_event_end_pos(text, 0, 1), -1);
    EXPECT_EQ(check_event_end_pos(text, 0, 0), -1);
}

TEST(EventParserLength, ComparesTheFieldsWithTheEndOrWithWhatArrived) {
    struct Case {
        int end;
        int offset;
        int length;
        int pos;
        int min;
        int result;
    };
    for (const Case& one :
         {Case{16, 0, 17, 2, 14, 0}, Case{15, 0, 16, 2, 14, 1}, Case{20, 0, 21, 2, 14, 0},
          Case{-1, 0, 16, 2, 14, 0}, Case{-1, 0, 15, 2, 14, 2}, Case{-1, 8, 15, 10, 14, 2},
          Case{-1, 8, 16, 10, 14, 0}, Case{2, 0, 3, 2, 0, 0}, Case{1, 0, 2, 2, 0, 1}}) {
        event_parser_t parser{};
        parser.event_end_pos = one.end;
        EXPECT_EQ(check_event_length(&parser, one.offset, one.length, one.pos, one.min), one.result)
            << "end " << one.end << ", " << one.length << " characters from " << one.offset;
    }
}

TEST(EventParserTerminator, IsNulCrOrLf) {
    for (int value = -128; value < 128; ++value) {
        const bool terminator = value == 0x00 || value == 0x0D || value == 0x0A;
        EXPECT_EQ(is_terminator_char(static_cast<char>(value)), terminator ? 1 : 0) << value;
    }
}

TEST(EventParserCreate, MakesAZeroedBaseThatRunsTheFramework) {
    event_parser_t* parser = create_event_parser();
    ASSERT_NE(parser, nullptr);
    EXPECT_EQ(parser->num_of_parsers, 0);
    EXPECT_EQ(parser->parser_list, nullptr);
    EXPECT_EQ(parser->process_event, process_event_impl);
    destroy_event_parser(parser);
    EXPECT_EQ(parser->process_event, process_event_impl)
        << "destroying the base leaves it to its profile";
    free(parser);
}

TEST(EventParserTextEnd, IsTheTextsOwnNulOutsideADecoder) {
    uint8_t text[] = "AA01";
    int complete = 0;
    EXPECT_EQ(vym_event_text_end(text, 2, &complete), 4);
    EXPECT_EQ(complete, 1);
}

int Unknown(const std::string& text, int offset, int length) {
    std::string copy = text;
    return unknown_process_event(nullptr, reinterpret_cast<uint8_t*>(copy.data()), offset, length);
}

TEST(UnknownEvent, IsConsumedUpToItsNul) {
    EXPECT_EQ(Unknown(Event("ZZ01"), 0, 5), 4);
    EXPECT_EQ(Unknown(Event("ZZ01") + Event("AA"), 0, 8), 4);
    EXPECT_EQ(Unknown(Event("ZZ01") + Event("AA"), 5, 3), 7);
    EXPECT_EQ(Unknown(Event("") + Event("AA"), 0, 4), 0) << "which counts as not consumed";
}

TEST(UnknownEvent, IsKeptWithoutItsNul) {
    EXPECT_EQ(Unknown("ZZ01", 0, 4), -1);
    EXPECT_EQ(Unknown(Event("ZZ01"), 0, 4), -1);
    EXPECT_EQ(Unknown(Event("ZZ01"), 0, 0), -1);
}

TEST(UnknownEvent, HasAParserOfItsOwn) {
    const support::OutputCapture output(support::OutputCapture::Streams::kOutAndErr);
    event_parser_t* parser = create_unknown_event_parser();
    ASSERT_NE(parser, nullptr);
    EXPECT_EQ(parser->process_event, unknown_process_event);
    uint8_t text[] = "ZZ01";
    EXPECT_EQ(parser->process_event(parser, text, 0, 5), 4);
    destroy_unknown_event_parser(parser);
    destroy_unknown_event_parser(nullptr);
    EXPECT_EQ(output.Out() + output.Err(), "") << "unknown events are dropped without a message";
}

} // namespace
