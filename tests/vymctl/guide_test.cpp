// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is made of the tables: the guide's list, the manual page, the schema.
#include "session.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

using vymctl::Json;

std::string content_of(const char* path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Guide, ListsTheVerbsOptionsAndEventsOfTheTables) {
    const std::string guide = content_of(VYMCTL_GUIDE);
    const std::string list = vymctl::emit("list");
    const size_t begin = guide.find(list.substr(0, list.find('\n')));
    ASSERT_NE(begin, std::string::npos) << "docs/vymctl.md has no list";
    EXPECT_EQ(guide.substr(begin), list + '\n')
        << "put what vymctl --emit list writes at the end of docs/vymctl.md";
}

TEST(Help, HasEveryVerbAndOption) {
    const std::string help = vymctl::help_text();
    for (const vymctl::Profile& profile : vymctl::profiles()) {
        for (const vymctl::Verb& verb : profile.verbs) {
            EXPECT_NE(help.find("  " + verb.usage()), std::string::npos) << verb.usage();
        }
    }
    for (const vymctl::OptionRow& row : vymctl::option_rows()) {
        EXPECT_NE(help.find("\n  " + std::string(row.name)), std::string::npos) << row.name;
    }
}

TEST(ManualPage, QuotesWhatRoffWouldTakeForOrders) {
    const std::string page = vymctl::emit("man");
    EXPECT_EQ(page.substr(0, 17), ".TH VYMCTL 1\n.SH ");
    EXPECT_NE(page.find("\n.B hfp dial NUMBER\ncalls a number\n"), std::string::npos);
    EXPECT_NE(page.find("\n.B \\-\\-timeout TIME\n"), std::string::npos);
}

TEST(Schema, DescribesEveryEventAndResult) {
    const Json schema = Json::parse(vymctl::emit("schema"));
    size_t events = 0;
    size_t verbs = 0;
    for (const vymctl::Profile& profile : vymctl::profiles()) {
        events += profile.events.size();
        verbs += profile.verbs.size();
    }
    size_t described_events = 0;
    for (const Json& line : schema["oneOf"]) {
        described_events += line["properties"].contains("event") ? 1 : 0;
    }
    EXPECT_EQ(described_events, events);
    EXPECT_EQ(schema["oneOf"].size(), events + verbs + 3) << "and doctor, save-book, record";
}

} // namespace
