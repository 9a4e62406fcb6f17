// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace trace {
namespace {

constexpr const char* kVersion = "vymtrace 1.0";

std::string profile_names() {
    std::string names;
    for (const protocol::Profile* profile : protocol::profiles()) {
        names += (names.empty() ? "" : ", ") + std::string(profile->name);
    }
    return names;
}

std::string why_no_profile(const std::string& text) {
    for (const protocol::Profile* profile : protocol::profiles()) {
        if (profile->name == text) {
            return "";
        }
    }
    return "there is no profile \"" + text + "\"; the profiles are " + profile_names();
}

std::string why_no_name(const std::string& text) {
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Messages& messages : {profile->commands, profile->events}) {
            if (std::any_of(
                    messages.begin(), messages.end(),
                    [&text](const protocol::Message& message) { return message.name == text; })) {
                return "";
            }
        }
    }
    return "no command and no event is called \"" + text + "\"";
}

std::string why_no_tag(const std::string& text) {
    const bool good =
        !text.empty() && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;
    return good ? "" : "\"" + text + "\" is no tag; a tag is two to four capital letters, such as HH";
}

std::string why_no_address(const std::string& text) {
    return parse_address(text)
               ? ""
               : "\"" + text + "\" is no address; an address looks like 00:1A:7D:DA:71:13";
}

std::string why_no_time(const std::string& text) {
    return parse_time(text, false) ? ""
                                   : "\"" + text +
                                         "\" is no time; a time is a time of day like 14:03 or "
                                         "14:03:07.5, such a time behind a date and a space, or "
                                         "seconds from the first record on, like +12.5";
}

/// What the options say as text.
struct Words {
    std::vector<std::string> addresses;
    std::string direction;
    std::string since;
    std::string until;
    bool stats = false;
    bool scrub = false;
    std::string emit;
};

void add_filters(CLI::App& app, Conditions& conditions, Words& words) {
    constexpr const char* kGroup = "Filters (of one kind: any of them; of several kinds: all)";
    const auto add = [&](const char* name, auto& value, const char* help, const char* type) {
        return app.add_option(name, value, help)->type_name(type)->group(kGroup);
    };
    add("--profile", conditions.profiles, "Only this profile", "PROFILE")->check(why_no_profile);
    add("--name", conditions.names, "Only the command or event of this name", "NAME")
        ->check(why_no_name);
    add("--tag", conditions.tags, "Only commands and events that begin with this tag", "TAG")
        ->check(why_no_tag);
    add("--address", words.addresses, "Only what carries this device's address", "ADDRESS")
        ->check(why_no_address);
    add("--direction", words.direction, "Only commands, or only events", "command|event")
        ->check(CLI::IsMember({"command", "event"}));
    add("--since", words.since, "Nothing before this time: 14:03, 2026-11-22 14:03:07.5, +12.5", "TIME")
        ->check(why_no_time);
    add("--until", words.until, "Nothing after this time", "TIME")->check(why_no_time);
}

/// One value for each use of an option: what follows is the file.
void take_one_each(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        if (option->get_items_expected_max() > 1) {
            option->allow_extra_args(false);
        }
    }
}

/// "vymtrace scrub FROM TO" has nothing in common with the rest.
void add_scrub(CLI::App& app, Options& options, Words& words) {
    auto* scrub = app.add_subcommand(
        "scrub", "Write the capture again with pseudonyms for addresses, names, numbers, phone-book "
                 "text, PINs and keys, so that it can be given to others");
    scrub->add_option("from", options.file, "The capture")->type_name("FROM")->required();
    scrub->add_option("to", options.to, "The file to be written")->type_name("TO")->required();
    scrub->callback([&words] { words.scrub = true; });
}

Task task_of(const Options& options, const Words& words) {
    if (words.scrub) {
        return Task::Scrub;
    }
    if (!words.emit.empty()) {
        return Task::Dissector;
    }
    if (!options.to.empty()) {
        return Task::Html;
    }
    return words.stats ? Task::Stats : options.json ? Task::Json : Task::Lines;
}

Conditions to_conditions(Conditions conditions, const Words& words) {
    for (const std::string& address : words.addresses) {
        conditions.addresses.push_back(*parse_address(address));
    }
    if (!words.direction.empty()) {
        conditions.direction =
            words.direction == "command" ? protocol::Direction::Command : protocol::Direction::Event;
    }
    conditions.since = parse_time(words.since, conditions.utc);
    conditions.until = parse_time(words.until, conditions.utc);
    return conditions;
}

} // namespace

Options parse_options(int argc, const char* const* argv) {
    CLI::App app("Reads a capture of the library, client_sock.log, as a person would.", "vymtrace");
    Options options;
    Words words;
    app.add_option("file", options.file, "The capture; - is standard input")->type_name("FILE");
    auto* follow = app.add_flag("-f,--follow", options.follow,
                                "Go on with what is added to the file, until Ctrl-C");
    app.add_flag("--json", options.json, "One JSON object a line");
    app.add_flag("--stats", words.stats, "Only counts, rates, round trips and gaps")->excludes(follow);
    app.add_flag("--utc", options.conditions.utc, "Times in UTC instead of the local time zone");
    app.set_version_flag("--version", kVersion);
    app.add_option("--html", options.to,
                   "Write a page for a browser: a time line, a list, each record's fields")
        ->type_name("PAGE")
        ->excludes(follow);
    app.add_option("--emit", words.emit,
                   "Write a plug-in for Wireshark and tshark to standard output, and do nothing else")
        ->type_name("lua")
        ->check(CLI::IsMember({"lua"}));
    add_filters(app, options.conditions, words);
    take_one_each(app);
    add_scrub(app, options, words);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            throw UsageError(error.what());
        }
        options.task = Task::Done;
        options.text = error.get_name() == "CallForHelp" ? app.help() : std::string(kVersion) + '\n';
        return options;
    }
    options.task = task_of(options, words);
    if (options.file.empty() && options.task != Task::Dissector) {
        throw UsageError("a capture is needed, client_sock.log; - is standard input");
    }
    options.conditions = to_conditions(std::move(options.conditions), words);
    return options;
}

} // namespace trace
