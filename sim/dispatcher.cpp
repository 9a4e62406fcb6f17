// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "dispatcher.h"

#include "described.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

namespace sim {
namespace {

constexpr std::string_view kPrefix = "AT#";

std::string_view without_line_end(std::string_view line) {
    return line.substr(0, std::min(line.size(), line.find_last_not_of("\r\n") + 1));
}

} // namespace

void Dispatcher::add(std::vector<Command> commands) {
    for (Command& command : commands) {
        const std::string_view tag = command.tag;
        const protocol::Found found = protocol::find(protocol::Direction::Command, tag);
        if (!found || found.message->tag != tag) {
            throw std::logic_error("the protocol has no command with the tag " + std::string(tag));
        }
        if (!commands_.emplace(tag, std::move(command)).second) {
            throw std::logic_error("two commands with the tag " + std::string(tag));
        }
    }
}

std::pair<const Command*, std::string> Dispatcher::find(std::string_view text) const {
    const protocol::Found found = protocol::find(protocol::Direction::Command, text);
    const auto it = found ? commands_.find(found.message->tag) : commands_.end();
    if (it == commands_.end()) {
        return {nullptr, ""};
    }
    return {&it->second, name_of(found)};
}

void Dispatcher::run(std::string_view line) {
    // The escaping keeps CR and LF out of commands, so only the line end is stripped.
    std::string_view text = without_line_end(line);
    if (text.substr(0, kPrefix.size()) != kPrefix) {
        log_.problem("not a command, ignored: \"" + printable(text) + "\"");
        return;
    }
    text.remove_prefix(kPrefix.size());
    const auto [command, name] = find(text);
    if (command == nullptr) {
        log_.problem("unknown command, ignored: \"AT#" + printable(text) + "\"");
        return;
    }
    if (log_.shows_traffic()) {
        log_.command(described(protocol::Direction::Command, text));
    }
    try {
        Fields reader(text.substr(command->tag.size()));
        command->run(reader);
    } catch (const BadCommand& error) {
        log_.problem("malformed command, ignored: " + name + ": " + error.what());
    } catch (const std::exception& error) {
        log_.problem("command failed: " + name + ": " + error.what());
    }
}

} // namespace sim
