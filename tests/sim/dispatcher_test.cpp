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
        dispatcher.add(
            {{"BK", [this](sim::Fields&) { ran += "BK;"; }},
             {"BA", [this](sim::Fields& f) { ran += "BA" + std::to_string(f.byte("n")) + ";"; }},
             {"BL", [](sim::Fields&) { throw std::runtime_error("no way"); }}});
    }
};

TEST(SimDispatcher, FieldsBeginWhereTheTagEnds) {
    Fixture s;
    s.dispatcher.run("AT#BA0C\r\n");
    s.dispatcher.run("AT#BK\r\n");
    EXPECT_EQ(s.ran, "BA12;BK;");
    EXPECT_EQ(s.text.str(), "");
}

TEST(SimDispatcher, AnUnknownCommandIsNamedInOneLine) {
    Fixture s;
    s.dispatcher.run("AT#ZZ01\x01\r\n");
    EXPECT_EQ(s.text.str(), "vym-sim: unknown command, ignored: \"AT#ZZ01\\x01\"\n");
}

TEST(SimDispatcher, ACommandThatNobodyCarriesOutIsUnknownToo) {
    Fixture s;
    s.dispatcher.run("AT#BM112233445566\r\n");
    EXPECT_EQ(s.text.str(), "vym-sim: unknown command, ignored: \"AT#BM112233445566\"\n");
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
    s.dispatcher.run("AT#BA1\r\n");
    EXPECT_EQ(s.text.str(), "vym-sim: malformed command, ignored: bluetooth get_adapter_property: n: 2 "
                            "characters expected, 1 left\n");
}

TEST(SimDispatcher, AHandlerThatThrowsEndsOnlyItself) {
    Fixture s;
    EXPECT_NO_THROW(s.dispatcher.run("AT#BL\r\n"));
    EXPECT_EQ(s.text.str(), "vym-sim: command failed: bluetooth stop_discovery: no way\n");
}

TEST(SimDispatcher, ATagOfTwoModulesIsRefused) {
    Fixture s;
    EXPECT_THROW(s.dispatcher.add({{"BK", [](sim::Fields&) {}}}), std::logic_error);
}

TEST(SimDispatcher, ATagThatTheProtocolDoesNotHaveIsRefused) {
    Fixture s;
    EXPECT_THROW(s.dispatcher.add({{"ZZ", [](sim::Fields&) {}}}), std::logic_error);
    EXPECT_THROW(s.dispatcher.add({{"BAA", [](sim::Fields&) {}}}), std::logic_error);
}

} // namespace
