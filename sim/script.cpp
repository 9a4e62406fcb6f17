// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "script.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <system_error>

namespace sim {
namespace {

// Longer files than this are something else.
constexpr size_t kMostLines = 100000;

std::string display_name(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

} // namespace

std::vector<std::string> read_script(const std::string& file) {
    std::ifstream opened;
    if (file != "-") {
        opened.open(file);
        if (!opened) {
            throw ScriptError(file +
                              ": cannot read the script: " + std::generic_category().message(errno));
        }
    }
    std::istream& in = file == "-" ? std::cin : opened;
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
        if (lines.size() > kMostLines) {
            throw ScriptError(display_name(file) + ": more than " + std::to_string(kMostLines) +
                              " lines; this is no script");
        }
    }
    if (in.bad()) {
        throw ScriptError(display_name(file) + ": cannot read the script; it must be a file of text");
    }
    return lines;
}

Script::Script(Control& control, const std::string& name, const std::vector<std::string>& lines)
    : name_(display_name(name)), session_(control.open_session(mark_)) {
    std::string problems;
    for (size_t i = 0; i < lines.size(); ++i) {
        try {
            if (std::optional<Step> step = control.parse(lines[i])) {
                lines_.push_back({i + 1, std::move(*step)});
            }
        } catch (const Refused& error) {
            problems += (problems.empty() ? "" : "\n") + name_ + ":" + std::to_string(i + 1) + ": " +
                        error.what();
        }
    }
    if (!problems.empty()) {
        throw ScriptError(problems);
    }
}

void Script::start(Listener listener) {
    listener_ = std::move(listener);
    go_on();
}

void Script::go_on() {
    while (next_ < lines_.size()) {
        const std::optional<Result> result =
            session_->run(lines_[next_].step, [this](const Result& later) {
                if (take(later)) {
                    go_on();
                }
            });
        if (!result || !take(*result)) {
            return;
        }
    }
    listener_.end(true);
}

bool Script::take(const Result& result) {
    const Line& line = lines_[next_++];
    if (!result.problem.empty()) {
        listener_.failure(name_ + ":" + std::to_string(line.number) + ": " + line.step.line + ": " +
                          result.problem);
        for (const std::string& more : result.lines) {
            listener_.failure("    " + more);
        }
        listener_.end(false);
        return false;
    }
    for (const std::string& answer : result.lines) {
        listener_.answer(answer);
    }
    if (result.afterwards) {
        result.afterwards();
        // The server ends; what follows "exit" is not for now.
        return false;
    }
    return true;
}

} // namespace sim
