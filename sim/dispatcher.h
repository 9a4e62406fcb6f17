// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// From the text of a command to the function that carries it out.
#ifndef VYM_SIM_DISPATCHER_H
#define VYM_SIM_DISPATCHER_H

#include "log.h"
#include "module.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

class Dispatcher {
public:
    explicit Dispatcher(Log& log) : log_(log) {}

    /// Throws std::logic_error when a tag is there already.
    void add(std::vector<Command> commands);

    /// Carries out one line (with or without its CR LF). What is no command, not known or malformed is
    /// reported in one line of the log; nothing that a client sends makes this throw.
    void run(std::string_view line);

private:
    /// Tags end where fields begin, and fields may begin with letters: the longest known tag is meant.
    const Command* find(std::string_view text) const;

    Log& log_;
    std::map<std::string_view, Command> commands_;
    size_t longest_tag_ = 0;
};

} // namespace sim

#endif
