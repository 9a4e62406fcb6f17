// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "dispatcher.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

struct Fixture {
    std::ostringstream text;
    sim::Log log{sim::LogLevel::Problems, text};
    sim::Dispatcher dispatcher{log};
    std::string ran;

    Fixture() {
        dispatcher.add({{"BT", "short", [this](sim::Fields&) { ran += "BT;"; }},
                        {"BTA", "long",
                         [this](sim::Fields& f) { ran += "BTA" + std::to_string(f.byte("n")) + ";"; }},
                        {"BX", "broken", [](sim::Fields&) { throw std::runtime_error("no way"); }}});
    }
};

TEST(SimDispatcher, TheLongestTagIsMeant) {
    Fixture s;
    s.dispatcher.run("AT#BTA0C\r\n");
    s.dispatcher.run("AT#BTB\r\n");
    EXPECT_EQ(s.ran, "BTA12;BT;");
    EXPECT_EQ(s.text.str(), "");
}

TEST(SimDispatcher, AnUnknownCommandIsNamedInOneLine) {
    Fixture s;
    s.dispatcher.run("AT#ZZ01\x01\r\n");
    EXPECT_EQ(s.text.str(), "vym-sim: unknown command, ignored: \"AT#ZZ01\\x01\"\n");
}

TEST(SimDispatcher, TextThatIsNoCommandIsShown) {
    Fixture s;
    s.dispatcher.run("hello\r\n");
    s.dispatcher.run("\r\n");
    s.dispatcher.run("AT#\r\n");
    EXPECT_EQ(s.text.str(), "vym-sim: not a command, ignored: \"hello\"\n"
                            "vym-sim: not a command, ignored: \"\"\n"
                            "vym-sim: unknown command, ignored: \"AT#\"\n");
}

TEST(SimDispatcher, AMalformedCommandNamesItsFault) {
    Fixture s;
    s.dispatcher.run("AT#BTA1\r\n");
    EXPECT_EQ(s.text.str(),
              "vym-sim: malformed command, ignored: BTA long: n: 2 characters expected, 1 left\n");
}

TEST(SimDispatcher, AHandlerThatThrowsEndsOnlyItself) {
    Fixture s;
    EXPECT_NO_THROW(s.dispatcher.run("AT#BX\r\n"));
    EXPECT_EQ(s.text.str(), "vym-sim: command failed: BX broken: no way\n");
}

TEST(SimDispatcher, ATagOfTwoModulesIsRefused) {
    Fixture s;
    EXPECT_THROW(s.dispatcher.add({{"BT", "again", [](sim::Fields&) {}}}), std::logic_error);
}

} // namespace
