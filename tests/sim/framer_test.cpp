// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "framer.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

struct Collected {
    Strings lines;
    std::string dropped;
    int dropped_lines = 0;
    sim::Framer framer{{[this](std::string_view line) { lines.emplace_back(line); },
                        [this](std::string_view bytes, bool first) {
                            dropped += bytes;
                            dropped_lines += first ? 1 : 0;
                        }}};
};

TEST(SimFramer, EveryCutOfTheStreamGivesTheSameLines) {
    const std::string stream = "AT#PB\r\nAT#PV\r\n\r\nx\r\r\n";
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        Collected c;
        c.framer.feed(stream.substr(0, cut));
        c.framer.feed(stream.substr(cut));
        EXPECT_EQ(c.lines, (Strings{"AT#PB\r\n", "AT#PV\r\n", "\r\n", "x\r\r\n"})) << "cut at " << cut;
        EXPECT_EQ(c.framer.unfinished(), "");
    }
}

TEST(SimFramer, ALoneCrOrLfEndsNothing) {
    Collected c;
    c.framer.feed("a\nb\rc");
    EXPECT_TRUE(c.lines.empty());
    EXPECT_EQ(c.framer.unfinished(), "a\nb\rc");
    c.framer.feed("\r\n");
    EXPECT_EQ(c.lines, Strings{"a\nb\rc\r\n"});
}

TEST(SimFramer, TheLongestCommandPasses) {
    Collected c;
    const std::string line = std::string(sim::Framer::kLongest - 2, 'x') + "\r\n";
    c.framer.feed(line);
    EXPECT_EQ(c.lines, Strings{line});
    EXPECT_EQ(c.dropped_lines, 0);
}

TEST(SimFramer, ALineTooLongIsDroppedWholeAndTheNextIsRead) {
    const std::string line = std::string(sim::Framer::kLongest - 1, 'x') + "\r\n";
    for (const size_t piece : {line.size(), size_t{4096}, size_t{1000}}) {
        Collected c;
        for (size_t at = 0; at < line.size(); at += piece) {
            c.framer.feed(line.substr(at, piece));
        }
        c.framer.feed("AT#PV\r\n");
        EXPECT_EQ(c.lines, Strings{"AT#PV\r\n"}) << "in pieces of " << piece;
        EXPECT_EQ(c.dropped, line);
        EXPECT_EQ(c.dropped_lines, 1);
    }
}

TEST(SimFramer, AnEndlessLineCostsNoMemory) {
    Collected c;
    const std::string piece(4096, '\r');
    for (int i = 0; i < 256; ++i) {
        c.framer.feed(piece);
        ASSERT_LE(c.framer.unfinished().size(), sim::Framer::kLongest + piece.size());
    }
    c.framer.feed("\nAT#PV\r\n");
    EXPECT_EQ(c.lines, Strings{"AT#PV\r\n"});
    EXPECT_EQ(c.dropped.size(), 256U * 4096 + 1);
    EXPECT_EQ(c.dropped_lines, 1);
}

} // namespace
