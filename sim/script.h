// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A file of the control language, carried out from its first line to its last.
#ifndef VYM_SIM_SCRIPT_H
#define VYM_SIM_SCRIPT_H

#include "control.h"

#include <functional>
#include <istream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sim {

/// What is wrong with a script, one line for each of its lines: "FILE:LINE: ...".
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The lines of a file; "-" is standard input. Throws ScriptError.
std::vector<std::string> read_script(const std::string& file);

class Script {
public:
    struct Listener {
        /// Answers of verbs, and what a failure has to say.
        std::function<void(const std::string& line)> answer;
        std::function<void(const std::string& line)> failure;
        /// The last line is done, or one has failed.
        std::function<void(bool good)> end;
    };

    /// Understands all lines before any is carried out. `name` is how messages call it. Throws
    /// ScriptError.
    Script(Control& control, const std::string& name, const std::vector<std::string>& lines);

    void start(Listener listener);

private:
    struct Line {
        size_t number;
        Step step;
    };

    void go_on();
    /// False when it is not to go on.
    bool take(const Result& result);

    std::string name_;
    std::vector<Line> lines_;
    size_t next_ = 0;
    Mark mark_;
    std::shared_ptr<Session> session_;
    Listener listener_;
};

} // namespace sim

#endif
