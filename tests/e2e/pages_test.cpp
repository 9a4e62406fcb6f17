// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The pages for people are true: what they show of a program stands in a program, what they have typed
// at a terminal is typed and answers as they say, and their links lead somewhere.

#include "e2e/terminal.h"
#include "e2e/top_directory.h"
#include "support/capture_reader.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using support::Lines;
using support::Match;

constexpr const char* kTop = VYM_SOURCE_DIR;

// Pages, by their paths from the top.
std::vector<std::string> Pages() {
    std::vector<std::string> pages{"README.md", "CONTRIBUTING.md"};
    for (const auto& entry : fs::directory_iterator(std::string(kTop) + "/docs")) {
        if (entry.path().extension() == ".md") {
            pages.push_back("docs/" + entry.path().filename().string());
        }
    }
    std::sort(pages.begin(), pages.end());
    return pages;
}

// A fenced block, and the terminal that the text before it names.
struct Block {
    std::string language;
    size_t terminal = 0;
    std::string text;
};

struct Page {
    std::string prose; // without its blocks
    std::vector<Block> blocks;
};

Page Read(const std::string& path) {
    Page page;
    size_t terminal = 0;
    bool is_block = false;
    for (const std::string& line : Lines(support::ReadFile(std::string(kTop) + "/" + path))) {
        if (line.rfind("```", 0) == 0) {
            is_block = !is_block;
            if (is_block) {
                page.blocks.push_back({line.substr(3), terminal, ""});
            }
        } else if (is_block) {
            page.blocks.back().text += line + '\n';
        } else {
            page.prose += line + '\n';
            const std::vector<std::string> named = Match(line, "^Terminal ([12]):");
            terminal = named.empty() ? terminal : std::stoul(named[1]);
        }
    }
    return page;
}

class EveryPage : public ::testing::TestWithParam<std::string> {
protected:
    const Page page_ = Read(GetParam());
};

std::string NameOf(const ::testing::TestParamInfo<std::string>& info) {
    std::string name;
    for (const char sign : info.param) {
        name += std::isalnum(static_cast<unsigned char>(sign)) != 0 ? sign : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Pages, EveryPage, ::testing::ValuesIn(Pages()), NameOf);

// Files whose lines a page may show; all of them are built or carried out.
std::vector<std::string> Shown() {
    std::vector<std::string> files;
    for (const char* directory :
         {"docs/snippets", "examples", "protocol", "vym", "tests/wire", "packaging"}) {
        for (const auto& entry : fs::directory_iterator(std::string(kTop) + "/" + directory)) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path().string());
            }
        }
    }
    return files;
}

// The lines stand in one of the files, one after the other.
bool StandsInAFile(const std::string& lines) {
    static const std::vector<std::string> files = Shown();
    return std::any_of(files.begin(), files.end(), [&](const std::string& file) {
        return ('\n' + support::ReadFile(file)).find('\n' + lines) != std::string::npos;
    });
}

TEST_P(EveryPage, ShowsProgramsAsTheyAre) {
    for (const Block& block : page_.blocks) {
        ASSERT_NE(block.language, "") << "a block must say what it is:\n" << block.text;
        if (block.language != "console" && block.language != "text") {
            EXPECT_TRUE(StandsInAFile(block.text))
                << "these lines stand in no file that is built or run:\n"
                << block.text;
        }
    }
}

// As an analyser of links makes it of a heading: small letters, blanks as dashes.
std::string AnchorOf(const std::string& heading) {
    std::string anchor;
    for (const char sign : heading) {
        const auto byte = static_cast<unsigned char>(sign);
        if (std::isalnum(byte) != 0 || sign == '-' || sign == '_') {
            anchor += static_cast<char>(std::tolower(byte));
        } else if (sign == ' ') {
            anchor += '-';
        }
    }
    return anchor;
}

std::set<std::string> AnchorsOf(const std::string& path) {
    std::set<std::string> anchors;
    for (const std::string& line : Lines(Read(path).prose)) {
        const std::vector<std::string> heading = Match(line, "^#+ (.*)$");
        if (!heading.empty()) {
            anchors.insert(AnchorOf(heading[1]));
        }
    }
    return anchors;
}

TEST_P(EveryPage, HasLinksThatLeadSomewhere) {
    const fs::path directory = fs::path(GetParam()).parent_path();
    const std::string& prose = page_.prose;
    for (size_t at = 0; (at = prose.find("](", at)) != std::string::npos; at += 2) {
        const std::string link = prose.substr(at + 2, prose.find(')', at) - at - 2);
        if (link.find("://") != std::string::npos) {
            continue;
        }
        const size_t hash = std::min(link.find('#'), link.size());
        const std::string path =
            hash == 0 ? GetParam() : (directory / link.substr(0, hash)).lexically_normal().string();
        ASSERT_TRUE(fs::exists(std::string(kTop) + "/" + path)) << link;
        if (hash < link.size()) {
            EXPECT_EQ(AnchorsOf(path).count(link.substr(hash + 1)), 1U) << link;
        }
    }
}

TEST(Pages, AreAllNamedOnTheFirstOne) {
    const std::string first = Read("README.md").prose;
    for (const std::string& path : Pages()) {
        EXPECT_TRUE(path == "README.md" || first.find("](" + path + ")") != std::string::npos) << path;
    }
}

TEST(Pages, CarryOutEverySnippet) {
    std::string typed;
    for (const std::string& path : Pages()) {
        for (const Block& block : Read(path).blocks) {
            typed += block.language == "console" ? block.text : "";
        }
    }
    for (const char* script : {"/docs/snippets/ci.sh", "/tests/checks/cross.sh"}) {
        typed += support::ReadFile(kTop + std::string(script));
    }
    for (const auto& entry : fs::directory_iterator(std::string(kTop) + "/docs/snippets")) {
        const std::string name = entry.path().filename().string();
        const bool is_program = entry.path().extension() == ".c" || entry.path().extension() == ".cpp";
        if (name != "CMakeLists.txt") {
            EXPECT_NE(typed.find("docs/snippets/" + (is_program ? entry.path().stem().string() : name)),
                      std::string::npos)
                << name;
        }
    }
}

#if VYM_SIM_HAS_PROMPT

// Its prompt begins with the exit code of what failed.
std::vector<std::string> ShellIn(const e2e::TopDirectory& top) {
    return top.Command(
        {"PS1=${?#0}$ ", "NO_COLOR=1", "/bin/sh", "-c", "PATH=$PWD/bin:$PATH exec /bin/sh -i"});
}

// Two terminals, and what is typed at them.
class Desk {
public:
    explicit Desk(const e2e::TopDirectory& top) : one_(ShellIn(top), "$ "), two_(ShellIn(top), "$ ") {}

    // One line of a block: typed when it has a prompt, waited for when it is an answer.
    ::testing::AssertionResult Do(size_t number, const std::string& line) {
        const std::string prompt = PromptOf(line);
        if (line == "...") {
            return ::testing::AssertionSuccess();
        }
        if (line == "^C") {
            At(number).Type("\x03");
            return ::testing::AssertionSuccess();
        }
        if (prompt.empty()) {
            return Came(number, WithoutTime(line) + "\r\n");
        }
        if (!has_prompt_[number - 1]) {
            if (const auto came = Came(number, prompt); !came) {
                return ::testing::AssertionFailure() << came.message() << "\nbefore: " << line;
            }
        }
        const std::string order = line.substr(prompt.size());
        has_prompt_[number - 1] = false;
        next_prompt_[number - 1] = order == "exit" ? "$ " : prompt;
        At(number).Type(order + '\r');
        return Came(number, "\n");
    }

    // Behind a block whose last answer is not shown: what was typed must have been done before somebody
    // turns to the other terminal.
    ::testing::AssertionResult Settle(size_t number, const std::string& last_line) {
        if (last_line != "..." && PromptOf(last_line).empty()) {
            return ::testing::AssertionSuccess();
        }
        has_prompt_[number - 1] = true;
        return Came(number, next_prompt_[number - 1]);
    }

    void Leave() {
        for (const size_t number : {1U, 2U}) {
            ASSERT_TRUE(has_prompt_[number - 1] || Came(number, "$ "));
            At(number).Type("exit\r");
            EXPECT_EQ(At(number).ExitCode(), 0) << At(number).Text();
            EXPECT_TRUE(Match(At(number).Text(), "\n[1-9][0-9]*[$] ").empty())
                << "a command has failed:\n"
                << At(number).Text();
        }
    }

private:
    static std::string PromptOf(const std::string& line) {
        for (const char* prompt : {"$ ", "vym-sim> ", "vymctl> "}) {
            if (line.rfind(prompt, 0) == 0) {
                return prompt;
            }
        }
        return "";
    }

    // Records are numbered and timed anew each time.
    static std::string WithoutTime(const std::string& line) {
        const std::vector<std::string> found =
            Match(line, "^[-0-9]{10} [:.0-9]{15} +[0-9]+ ([<>] .*)$");
        return found.empty() ? line : found[1];
    }

    ::testing::AssertionResult Came(size_t number, const std::string& words) {
        if (At(number).WaitFor(words)) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure()
               << "terminal " << number << " does not say: " << words << "\nit says:\n"
               << At(number).Text();
    }

    e2e::Terminal& At(size_t number) { return number == 1 ? one_ : two_; }

    e2e::Terminal one_;
    e2e::Terminal two_;
    // The shells' first prompts are used up by their constructors.
    std::array<bool, 2> has_prompt_{true, true};
    std::array<std::string, 2> next_prompt_;
};

std::vector<std::string> PagesWithConsole() {
    std::vector<std::string> pages = Pages();
    pages.erase(std::remove_if(pages.begin(), pages.end(),
                               [](const std::string& path) {
                                   return support::ReadFile(std::string(kTop) + "/" + path)
                                              .find("\n```console\n") == std::string::npos;
                               }),
                pages.end());
    return pages;
}

class PageWithConsole : public EveryPage {};

INSTANTIATE_TEST_SUITE_P(Pages, PageWithConsole, ::testing::ValuesIn(PagesWithConsole()), NameOf);

TEST_P(PageWithConsole, IsTrueLineByLine) {
    const e2e::TopDirectory top;
    Desk desk(top);
    for (const Block& block : page_.blocks) {
        if (block.language != "console") {
            continue;
        }
        ASSERT_NE(block.terminal, 0U) << "no text says at which terminal:\n" << block.text;
        const std::vector<std::string> lines = Lines(block.text);
        for (const std::string& line : lines) {
            ASSERT_TRUE(desk.Do(block.terminal, line)) << line;
        }
        ASSERT_TRUE(desk.Settle(block.terminal, lines.back())) << lines.back();
    }
    desk.Leave();
}

#endif

} // namespace
