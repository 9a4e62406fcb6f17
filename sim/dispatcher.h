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
#include <utility>
#include <vector>

namespace sim {

class Dispatcher {
public:
    explicit Dispatcher(Log& log) : log_(log) {}

    /// Throws std::logic_error when a tag is there already or the protocol has no such command.
    void add(std::vector<Command> commands);

    /// Carries out one line (with or without its CR LF). What is no command, not known or malformed is
    /// reported in one line of the log; nothing that a client sends makes this throw.
    void run(std::string_view line);

private:
    /// The command and its name for people.
    std::pair<const Command*, std::string> find(std::string_view text) const;

    Log& log_;
    std::map<std::string_view, Command> commands_;
};

} // namespace sim

#endif
