// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "dispatcher.h"

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
        longest_tag_ = std::max(longest_tag_, command.tag.size());
        const std::string_view tag = command.tag;
        if (!commands_.emplace(tag, std::move(command)).second) {
            throw std::logic_error("two commands with the tag " + std::string(tag));
        }
    }
}

const Command* Dispatcher::find(std::string_view text) const {
    for (size_t length = std::min(longest_tag_, text.size()); length > 0; --length) {
        const auto it = commands_.find(text.substr(0, length));
        if (it != commands_.end()) {
            return &it->second;
        }
    }
    return nullptr;
}

void Dispatcher::run(std::string_view line) {
    // The escaping keeps CR and LF out of commands, so only the line end is stripped.
    std::string_view text = without_line_end(line);
    if (text.substr(0, kPrefix.size()) != kPrefix) {
        log_.problem("not a command, ignored: \"" + printable(text) + "\"");
        return;
    }
    text.remove_prefix(kPrefix.size());
    const Command* command = find(text);
    if (command == nullptr) {
        log_.problem("unknown command, ignored: \"AT#" + printable(text) + "\"");
        return;
    }
    const std::string_view fields = text.substr(command->tag.size());
    const std::string title = std::string(command->tag).append(" ").append(command->name);
    log_.command(fields.empty() ? title : title + " " + printable(fields));
    try {
        Fields reader(fields);
        command->run(reader);
    } catch (const BadCommand& error) {
        log_.problem("malformed command, ignored: " + title + ": " + error.what());
    } catch (const std::exception& error) {
        log_.problem("command failed: " + title + ": " + error.what());
    }
}

} // namespace sim
