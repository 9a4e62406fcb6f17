// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "console/words.h"
#include "output.h"
#include "session.h"

#include <fstream>
#include <iostream>

namespace vymctl {
namespace {

struct Line {
    size_t number = 0;
    /// A failure of it does not end the script.
    bool may_fail = false;
    Words words;
};

Line read_line(const std::string& text, size_t number) {
    Line line;
    line.number = number;
    line.words = console::split_words(text);
    if (!line.words.empty() && line.words[0] == "-") {
        line.may_fail = true;
        line.words.erase(line.words.begin());
    }
    if (!line.words.empty()) {
        Session::check(line.words);
    }
    return line;
}

std::vector<Line> read_lines(std::istream& input, const std::string& name) {
    std::vector<Line> lines;
    std::string text;
    for (size_t number = 1; std::getline(input, text); ++number) {
        try {
            Line line = read_line(text, number);
            if (!line.words.empty()) {
                lines.push_back(std::move(line));
            }
        } catch (const std::runtime_error& error) {
            throw Usage(name + ':' + std::to_string(number) + ": " + error.what());
        }
    }
    return lines;
}

} // namespace

int run_script(Session& session, const std::string& path) {
    std::ifstream file;
    if (path != "-") {
        file.open(path);
        if (!file) {
            message("the script \"" + console::printable(path) + "\" cannot be read");
            return kUsage;
        }
    }
    const std::string name = path == "-" ? "standard input" : path;
    std::vector<Line> lines;
    try {
        lines = read_lines(path == "-" ? std::cin : file, name);
    } catch (const Usage& error) {
        message(error.what());
        return kUsage;
    }
    for (const Line& line : lines) {
        const int code = session.run(line.words);
        if (session.wants_to_end()) {
            break;
        }
        if (code != kDone && !line.may_fail) {
            message(name + ':' + std::to_string(line.number) + ": ended here, exit code " +
                    std::to_string(code));
            return code;
        }
    }
    return kDone;
}

} // namespace vymctl
