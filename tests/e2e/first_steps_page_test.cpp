// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// docs/first-steps.md, carried out: what it says is typed at two terminals, and what it shows must
// come.

#include "e2e/terminal.h"
#include "support/capture_reader.h"
#include "support/temp_dir.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>
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
    const size_t code = source.find("#define");
    ASSERT_NE(code, std::string::npos);
    EXPECT_EQ(ProgramOfPage(), source.substr(code));
}

#if VYM_SIM_HAS_PROMPT

// A line of a console block, and the terminal that the text before it names.
struct Step {
    int terminal;
    std::string line;
};

std::vector<Step> StepsOfPage() {
    std::vector<Step> steps;
    int terminal = 0;
    bool is_console = false;
    for (const std::string& line : LinesOf(kPage)) {
        std::smatch match;
        if (line.rfind("```", 0) == 0) {
            is_console = line == "```console";
        } else if (is_console) {
            steps.push_back({terminal, line});
        } else if (std::regex_search(line, match, std::regex("^Terminal ([12]):"))) {
            terminal = std::stoi(match[1]);
        }
    }
    return steps;
}

// A shell in a directory where the build is build/demo, as it is after the demonstration.
class TopDirectory {
public:
    TopDirectory() {
        std::filesystem::create_directory(place_.Path() + "/build");
        std::filesystem::create_directory_symlink(VYM_BUILD_DIR, place_.Path() + "/build/demo");
    }
    [[nodiscard]] std::vector<std::string> Shell() const {
        return {"/usr/bin/env", "-C", place_.Path(), "PS1=$ ", "NO_COLOR=1", "/bin/sh"};
    }
    [[nodiscard]] const std::string& Path() const { return place_.Path(); }

private:
    support::TempDir place_;
};

std::string PromptOf(const std::string& line) {
    for (const char* prompt : {"$ ", "vym-sim> ", "vymctl> "}) {
        if (line.rfind(prompt, 0) == 0) {
            return prompt;
        }
    }
    return "";
}

// Records are numbered and timed anew each time.
std::string WithoutTime(const std::string& line) {
    return std::regex_replace(line, std::regex("^[-0-9]{10} [:.0-9]{15} +[0-9]+ "), "");
}

TEST(FirstStepsPage, IsTrueLineByLine) {
    const TopDirectory top;
    const std::vector<Step> steps = StepsOfPage();
    size_t typed = 0;
    {
        // The shells' first prompts are used up by their constructors.
        e2e::Terminal one(top.Shell(), "$ ");
        e2e::Terminal two(top.Shell(), "$ ");
        std::map<int, e2e::Terminal*> terminals{{1, &one}, {2, &two}};
        std::map<int, bool> is_fresh{{1, true}, {2, true}};
        for (const auto& [number, line] : steps) {
            ASSERT_EQ(terminals.count(number), 1U) << "no text says at which terminal: " << line;
            e2e::Terminal& terminal = *terminals[number];
            const std::string prompt = PromptOf(line);
            if (!prompt.empty()) {
                ASSERT_TRUE(is_fresh[number] || terminal.WaitFor(prompt)) << line << '\n'
                                                                          << terminal.Text();
                is_fresh[number] = false;
                terminal.Type(line.substr(prompt.size()) + '\r');
                ASSERT_TRUE(terminal.WaitFor("\n")) << line << '\n' << terminal.Text();
                ++typed;
            } else if (line != "...") {
                ASSERT_TRUE(terminal.WaitFor(WithoutTime(line) + "\r\n")) << line << '\n'
                                                                          << terminal.Text();
            }
        }
        for (e2e::Terminal* terminal : {&one, &two}) {
            ASSERT_TRUE(terminal->WaitFor("$ ")) << terminal->Text();
            terminal->Type("exit\r");
            EXPECT_EQ(terminal->ExitCode(), 0) << terminal->Text();
        }
    }
    EXPECT_GE(typed, 12U);
    EXPECT_NE(support::ReadFile(top.Path() + "/build/bt/call.html").find("<html"), std::string::npos);
}

#endif

} // namespace
