// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The page says what the library does, and of every function.

#include "threads/functions.h"
#include "threads/page.h"

#include "support/text.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using threads::Callback;
using threads::Function;

std::string FileText(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(ThreadsPage, KnowsEveryExportedFunction) {
    std::vector<std::pair<std::string, std::vector<std::string>>> known;
    for (const threads::Group& group : threads::Functions()) {
        known.emplace_back(group.title, std::vector<std::string>{});
        for (const Function& function : group.functions) {
            known.back().second.emplace_back(function.name);
        }
    }
    EXPECT_EQ(known, threads::ExportedGroups());
}

TEST(ThreadsPage, SaysWhatTheLibraryDoes) {
    const threads::SeenOfAll seen = threads::WatchAll();
    const std::string page = threads::Page(seen);
    if (std::getenv("VYM_WRITE_THREADS_PAGE") != nullptr) {
        std::ofstream(VYM_THREADS_PAGE) << page;
    }
    const std::vector<std::string> written = support::Lines(FileText(VYM_THREADS_PAGE));
    const std::vector<std::string> due = support::Lines(page);
    EXPECT_EQ(written.size(), due.size()) << "VYM_WRITE_THREADS_PAGE=1 writes the page anew";
    for (size_t i = 0; i < std::min(written.size(), due.size()); ++i) {
        EXPECT_EQ(written[i], due[i]);
    }
    // What cannot be called from a callback takes the lock that is held then, or waits for an event.
    for (const threads::Group& group : threads::Functions()) {
        for (const Function& function : group.functions) {
            const auto found = seen.find(function.name);
            if (found == seen.end() || group.title == "start and stop") {
                continue;
            }
            const bool takes = found->second.locks.count("`parsers_lock` (vym_sdk)") > 0;
            EXPECT_TRUE(!takes || function.callback == Callback::kNever) << function.name;
        }
    }
}

} // namespace
