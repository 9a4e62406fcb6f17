// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "verb.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;
using namespace std::string_literals;
using std::chrono::milliseconds;

/// Why a line is refused.
template <typename Function>
std::string refusal(Function function) {
    try {
        function();
    } catch (const sim::Refused& error) {
        return error.what();
    }
    return "nothing is wrong";
}

TEST(ControlWords, QuotesKeepBlanksTogetherAndCommentsEndALine) {
    EXPECT_EQ(sim::split_words("phone call\t+49301 # rings"), (Strings{"phone", "call", "+49301"}));
    EXPECT_EQ(sim::split_words("device \"Kitchen speaker\" back\r"),
              (Strings{"device", "Kitchen speaker", "back"}));
    EXPECT_EQ(sim::split_words("name=\"Anna # B\" c#d"), (Strings{"name=Anna # B", "c#d"}));
    EXPECT_EQ(sim::split_words("operator \"\""), (Strings{"operator", ""}));
    EXPECT_EQ(sim::split_words("  # nothing"), Strings{});
    EXPECT_EQ(sim::split_words(""), Strings{});
}

TEST(ControlWords, EscapesStandForBytes) {
    EXPECT_EQ(sim::split_words(R"(a\x00b \n\r\t\\ \"x\" \# "q\"q")"),
              (Strings{"a\0b"s, "\n\r\t\\", "\"x\"", "#", "q\"q"}));
}

TEST(ControlWords, UnfinishedQuotesAndEscapesAreRefused) {
    EXPECT_EQ(refusal([] { sim::split_words("say \"hello"); }), "a quote is opened and not closed");
    EXPECT_EQ(refusal([] { sim::split_words("say \\"); }), "the line ends behind a backslash");
    for (const char* line : {"\\x", "\\x1", "\\xg0", "\\x0g"}) {
        EXPECT_EQ(refusal([line] { sim::split_words(line); }),
                  "\\x is followed by two hexadecimal digits");
    }
}

TEST(ControlWords, TimesAreSecondsUnlessTheySayOtherwise) {
    EXPECT_EQ(sim::to_duration("5s"), milliseconds(5000));
    EXPECT_EQ(sim::to_duration("5"), milliseconds(5000));
    EXPECT_EQ(sim::to_duration("1.5s"), milliseconds(1500));
    EXPECT_EQ(sim::to_duration("200ms"), milliseconds(200));
    EXPECT_EQ(sim::to_duration("0"), milliseconds(0));
    for (const char* word : {"", "s", ".", "1.2.3", "5m", "-1s", "1e3", "5 s", "1234567890"}) {
        EXPECT_EQ(refusal([word] { sim::to_duration(word); }),
                  "\"" + std::string(word) + "\" is no time such as 5s, 1.5s or 200ms");
    }
    EXPECT_EQ(refusal([] { sim::to_duration("90000"); }), "\"90000\" is more than a day");
}

class VerbTable : public ::testing::Test {
protected:
    VerbTable() {
        const auto keep = [this](sim::Given& given) { said_ += '<' + given.text(0) + '>'; };
        verbs_.add({{"lamp set LEVEL=-5..5", "brightness", keep},
                    {"lamp on|off", "switch", keep},
                    {"device DEVICE paint UUID HEX", "colour", keep},
                    {"lamp blink [SECONDS]", "nervously", keep}});
        verbs_.add({{"dial DIGITS", "ring", keep}});
    }

    sim::Order parse(const std::string& line) { return verbs_.parse(sim::split_words(line)); }
    std::string why_not(const std::string& line) {
        return refusal([&] { parse(line); });
    }

    sim::World world_ = sim::built_in_world();
    sim::Verbs verbs_{world_};
    std::string said_;
};

TEST_F(VerbTable, ArgumentsAreRead) {
    EXPECT_EQ(parse("lamp set -3").arguments.at(0).number, -3);
    EXPECT_EQ(parse("lamp set 0x4").arguments.at(0).number, 4);
    EXPECT_EQ(parse("lamp off").arguments.at(0).text, "off");
    EXPECT_EQ(parse("lamp blink").arguments.size(), 0U);
    EXPECT_EQ(parse("lamp blink 2s").arguments.at(0).duration, milliseconds(2000));
    const sim::Order order = parse("device \"Heart strap\" paint 2a37 \"00 ff\"");
    EXPECT_EQ(sim::to_string(order.arguments.at(0).address), "C64865617274");
    EXPECT_EQ(order.arguments.at(1).uuid, sim::uuid_from_16bit(0x2A37));
    EXPECT_EQ(order.arguments.at(2).text, "\0\xFF"s);
    EXPECT_EQ(order.verb->help, "colour");
    EXPECT_EQ(sim::to_string(parse("device c6:48:65:61:72:74 paint 2A37 00").arguments.at(0).address),
              "C64865617274");
    const sim::Octets16 own{0x7F, 0x45, 0x00, 0x01, 0x6D, 0x79, 0x4C, 0x6F,
                            0x67, 0x67, 0x69, 0x6E, 0x67, 0x75, 0x6E, 0x69};
    EXPECT_EQ(parse("device Tablet paint 7F450001-6D79-4C6F-6767-696E67756E69 00").arguments.at(1).uuid,
              own);
}

TEST_F(VerbTable, WhatIsWrongIsNamedWithWhatIsExpected) {
    EXPECT_EQ(why_not("lump on"),
              "there is no verb \"lump\"; expected lamp, device or dial (help lists all)");
    EXPECT_EQ(why_not("lamp"),
              "after \"lamp\": expected set, on|off or blink, found the end of the line");
    EXPECT_EQ(why_not("lamp set"), "after \"lamp set\": expected LEVEL, found the end of the line");
    EXPECT_EQ(why_not("lamp set 1 2"), "after \"lamp set 1\": expected nothing more, found \"2\"");
    EXPECT_EQ(why_not("lamp up"), "expected on or off, found \"up\"");
    for (const char* word : {"6", "-6", "x", "", "-", "0x", "1.5", "99999999999999999999"}) {
        EXPECT_EQ(why_not("lamp set \"" + std::string(word) + "\""),
                  "LEVEL is a number from -5 to 5, not \"" + std::string(word) + "\"");
    }
    EXPECT_EQ(why_not("device Tablet paint 2A3 00"),
              "UUID is a UUID of 4 or 32 hexadecimal digits, not \"2A3\"");
    EXPECT_EQ(why_not("device Tablet paint 2A37 0"),
              "HEX is two hexadecimal digits for each byte, not \"0\"");
    EXPECT_EQ(why_not("dial Anna"),
              "\"Anna\" is no telephone number: only digits, *, # and + may be in it");
    EXPECT_EQ(why_not("device Mixer paint 2A37 00"),
              "no device has the name or address \"Mixer\"; there are \"Anna's phone\", \"Kitchen "
              "speaker\", \"Heart strap\", \"Car kit\", \"Office keyboard\", \"GNSS receiver\", \"Work "
              "laptop\", \"Climate sensor\" or \"Tablet\"");
}

TEST_F(VerbTable, TheNextWordIsSuggested) {
    EXPECT_EQ(verbs_.continuations({}), (Strings{"device", "dial", "lamp"}));
    EXPECT_EQ(verbs_.continuations({"lamp"}), (Strings{"blink", "off", "on", "set"}));
    EXPECT_EQ(verbs_.continuations({"device"}).front(), "Anna's phone");
    EXPECT_EQ(verbs_.continuations({"device", "Tablet"}), Strings{"paint"});
    EXPECT_EQ(verbs_.continuations({"dial"}), Strings{});
    EXPECT_EQ(verbs_.continuations({"nothing", "such"}), Strings{});
}

TEST_F(VerbTable, APatternThatIsNoneIsAnErrorOfTheProgram) {
    EXPECT_THROW(verbs_.add({{"lamp COLOUR", "", {}}}), std::logic_error);
}

} // namespace
