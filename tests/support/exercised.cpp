// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/exercised.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <vector>

namespace support {

namespace {

std::vector<std::string> Without(const std::set<std::string>& all, const std::set<std::string>& these) {
    std::vector<std::string> rest;
    std::set_difference(all.begin(), all.end(), these.begin(), these.end(), std::back_inserter(rest));
    return rest;
}

} // namespace

std::set<std::string> ExportedNames(const std::string& map) {
    std::set<std::string> names;
    std::ifstream lines(map);
    for (std::string word; std::getline(lines, word) && word.find("local:") == std::string::npos;) {
        word.erase(0, word.find_first_not_of(' '));
        if (!word.empty() && word.back() == ';') {
            word.pop_back();
            names.insert(word);
        }
    }
    return names;
}

void ExpectEveryExportExercised(const std::string& map, const std::set<std::string>& exercised) {
    const std::set<std::string> exported = ExportedNames(map);
    EXPECT_GT(exported.size(), 200U);
    EXPECT_EQ(Without(exported, exercised), std::vector<std::string>{}) << "have no CALL in a test";
    EXPECT_EQ(Without(exercised, exported), std::vector<std::string>{}) << "are not exported";
}

} // namespace support
