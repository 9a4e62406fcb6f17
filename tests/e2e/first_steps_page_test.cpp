// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// docs/first-steps.md shows a program: it must be the one that is built.

#include "support/capture_reader.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

constexpr const char* kPage = VYM_SOURCE_DIR "/docs/first-steps.md";

std::vector<std::string> LinesOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string ProgramOfPage() {
    std::string program;
    bool is_program = false;
    for (const std::string& line : LinesOf(kPage)) {
        if (line.rfind("```", 0) == 0) {
            is_program = line == "```c";
        } else if (is_program) {
            program += line + '\n';
        }
    }
    return program;
}

TEST(FirstStepsPage, ShowsTheSmallestExampleAsItIs) {
    const std::string source = support::ReadFile(VYM_SOURCE_DIR "/examples/smallest.c");
    const size_t code = source.find("#include");
    ASSERT_NE(code, std::string::npos);
    EXPECT_EQ(ProgramOfPage(), source.substr(code));
}

} // namespace
