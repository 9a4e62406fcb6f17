// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The tables are complete, and what they promise to others does not change.
#include "ending.h"
#include "examples.h"
#include "profiles.h"
#include "session.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace {

using vymctl::EventRow;
using vymctl::Profile;
using vymctl::profiles;
using vymctl::Verb;

std::set<std::string> exported_names() {
    std::set<std::string> names;
    std::ifstream map(VYM_SYMBOL_MAP);
    const std::regex row(R"(^\s*([A-Za-z_][A-Za-z0-9_]*);$)");
    std::smatch match;
    for (std::string line; std::getline(map, line);) {
        if (std::regex_match(line, match, row)) {
            names.insert(match[1]);
        }
    }
    return names;
}

TEST(VerbTable, ReachesEveryExportedFunctionAndNothingElse) {
    std::set<std::string> reached;
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            EXPECT_FALSE(verb.functions.empty()) << verb.title();
            reached.insert(verb.functions.begin(), verb.functions.end());
        }
    }
    const std::set<std::string> exported = exported_names();
    EXPECT_GT(exported.size(), 150U) << "the symbol map was not read";
    EXPECT_EQ(reached, exported);
}

TEST(VerbTable, HasNoVerbTwiceAndALineOfHelpForEach) {
    std::set<std::string> titles;
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            EXPECT_TRUE(titles.insert(verb.title()).second) << verb.title();
            EXPECT_FALSE(verb.help.empty()) << verb.title();
            EXPECT_EQ(verb.help.find('\n'), std::string::npos) << verb.title();
            EXPECT_EQ(vymctl::find_verb(profile.name, verb.name), &verb);
        }
    }
    for (const auto& own : vymctl::Session::own_verbs()) {
        EXPECT_TRUE(titles.insert(own.name).second) << own.name;
        EXPECT_TRUE(std::none_of(profiles().begin(), profiles().end(), [&own](const Profile& one) {
            return one.name == own.name;
        })) << own.name;
    }
}

TEST(VerbTable, ReadsExamplesOfAllItsArgumentsAndItsFallbacks) {
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            const std::vector<std::string> words = example_arguments(verb);
            EXPECT_NO_THROW(read_values(verb, words)) << verb.usage();
            bool optional = false;
            size_t needed = 0;
            for (const vymctl::Field& parameter : verb.parameters) {
                EXPECT_FALSE(optional && !parameter.fallback)
                    << verb.usage() << ": behind one that may be missing";
                optional = parameter.fallback.has_value();
                needed += optional ? 0 : 1;
            }
            const std::vector<std::string> least(words.begin(),
                                                 words.begin() + static_cast<long>(needed));
            EXPECT_NO_THROW(read_values(verb, least)) << verb.usage();
        }
    }
}

TEST(VerbTable, EachVerbEndsWithAnEventThatThereIs) {
    size_t endings = 0;
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            const vymctl::Ending ending(verb, read_values(verb, example_arguments(verb)));
            EXPECT_EQ(ending.is_empty(), verb.ends.empty());
            EXPECT_FALSE(verb.local && !ending.is_empty()) << verb.title() << " waits without a server";
            endings += verb.ends.empty() ? 0 : 1;
        }
    }
    EXPECT_GT(endings, 40U);
}

// A table of callbacks is pointers and nothing else: none may be left out.
TEST(EventTable, SetsEveryMemberOfEveryTableOfCallbacks) {
    size_t members = 0;
    for (const Profile& profile : profiles()) {
        if (profile.callbacks == nullptr) {
            continue;
        }
        std::memset(profile.callbacks, 0, profile.callbacks_size);
        profile.install();
        const auto* slots = static_cast<void* const*>(profile.callbacks);
        const size_t count = profile.callbacks_size / sizeof(void*);
        for (size_t i = 0; i < count; ++i) {
            EXPECT_NE(slots[i], nullptr) << profile.name << ", member " << i;
        }
        members += count;
    }
    EXPECT_EQ(members, 112U) << "callbacks of all profiles";
}

// Scripts and programs live on them: a name that is here may be added to, not changed.
TEST(EventTable, KeepsTheNamesOfEventsAndFields) {
    std::ostringstream names;
    for (const Profile& profile : profiles()) {
        for (const EventRow& row : profile.events) {
            names << row.type.name;
            for (const vymctl::Field& field : row.type.fields) {
                names << ' ' << field.name;
            }
            names << '\n';
        }
    }
    std::ifstream file(VYMCTL_NAMES);
    const std::string known{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(names.str(), known) << "if the change is wanted, put these names into names.txt";
}

TEST(EventTable, HasNoEventAndNoFieldTwice) {
    std::set<std::string> events;
    for (const Profile& profile : profiles()) {
        for (const EventRow& row : profile.events) {
            EXPECT_EQ(row.type.name.rfind(profile.name + '.', 0), 0U) << row.type.name;
            EXPECT_TRUE(events.insert(row.type.name).second) << row.type.name;
            std::set<std::string> fields{"event", "time"};
            for (const vymctl::Field& field : row.type.fields) {
                EXPECT_TRUE(fields.insert(field.name).second) << row.type.name << ' ' << field.name;
            }
        }
    }
}

} // namespace
