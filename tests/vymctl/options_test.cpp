// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "options.h"

#include "field.h"

#include <gtest/gtest.h>

namespace {

using vymctl::Options;
using vymctl::read_options;
using Words = std::vector<std::string>;

std::string complaint(const Words& words) {
    try {
        read_options(words);
    } catch (const vymctl::Usage& error) {
        return error.what();
    }
    return "no complaint";
}

TEST(Options, StandBeforeAndBehindTheVerb) {
    const Options options =
        read_options({"--dir", "/tmp/bt", "hfp", "dial", "--timeout=5s", "123", "--json"});
    EXPECT_EQ(options.directory, "/tmp/bt");
    EXPECT_EQ(options.timeout, std::chrono::seconds(5));
    EXPECT_TRUE(options.json);
    EXPECT_EQ(options.words, (Words{"hfp", "dial", "123"}));
}

TEST(Options, HaveTheLibrarysDefaults) {
    const Options options = read_options({"adapter", "name"});
    EXPECT_EQ(options.directory, "/etc/backup");
    EXPECT_EQ(options.timeout, std::chrono::seconds(30));
    EXPECT_FALSE(options.json);
    EXPECT_EQ(options.pairing, "");
}

TEST(Options, ANegativeNumberAndWhatIsBehindTwoDashesAreNone) {
    EXPECT_EQ(read_options({"core", "set-debug-status", "-1"}).words.back(), "-1");
    EXPECT_EQ(read_options({"rfcomm", "write", "1", "--", "--json", "--"}).words,
              (Words{"rfcomm", "write", "1", "--json", "--"}));
    EXPECT_EQ(read_options({"-f", "-"}).script, "-");
}

TEST(Options, AreRefusedWithAReason) {
    EXPECT_EQ(complaint({"--nothing"}), "there is no option --nothing (vymctl --help shows them)");
    EXPECT_EQ(complaint({"-x"}), "there is no option -x (vymctl --help shows them)");
    EXPECT_EQ(complaint({"--dir"}), "--dir needs DIR");
    EXPECT_EQ(complaint({"--json=yes"}), "--json takes no value");
    EXPECT_EQ(complaint({"--timeout", "soon"}),
              "--timeout: \"soon\" is no time such as 5s, 1.5s or 200ms");
    EXPECT_EQ(complaint({"--pairing", "maybe"}),
              "--pairing is accept, reject, ask or pin=0000 (1 to 16 characters), not \"maybe\"");
    EXPECT_EQ(complaint({"--pairing", "pin=12345678901234567"}),
              "--pairing is accept, reject, ask or pin=0000 (1 to 16 characters), not "
              "\"pin=12345678901234567\"");
}

TEST(Options, ALineOfAScriptMayHaveATimeout) {
    Words line{"hfp", "--timeout", "200ms", "dial", "123"};
    EXPECT_EQ(vymctl::take_timeout(line, std::chrono::seconds(30)), std::chrono::milliseconds(200));
    EXPECT_EQ(line, (Words{"hfp", "dial", "123"}));
    EXPECT_EQ(vymctl::take_timeout(line, std::chrono::seconds(30)), std::chrono::seconds(30));
    Words open{"hfp", "--timeout"};
    EXPECT_THROW(vymctl::take_timeout(open, std::chrono::seconds(30)), vymctl::Usage);
}

} // namespace
