// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The verbs of this program itself.
#include "session.h"

#include "console/words.h"
#include "output.h"

#include <algorithm>

namespace vymctl {

namespace {

/// Throws Usage for what is neither a profile nor an event.
std::set<std::string> topics(const Words& words) {
    std::set<std::string> found;
    for (const std::string& word : words) {
        const bool is_profile = std::any_of(profiles().begin(), profiles().end(),
                                            [&word](const Profile& one) { return one.name == word; });
        found.insert(is_profile ? word : event_type(word).name);
    }
    if (found.empty()) {
        found.insert("*");
    }
    return found;
}

std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

Condition condition_of(const Words& words) {
    std::string text = joined(words);
    // As it is written for a shell.
    if (text.size() > 1 && text.front() == '\'' && text.back() == '\'') {
        text = text.substr(1, text.size() - 2);
    }
    return read_condition(text);
}

std::chrono::milliseconds time_of(const Words& words) {
    try {
        return console::to_duration(words[0]);
    } catch (const console::Refused& error) {
        throw Usage(error.what());
    }
}

void check_topics(const Words& words) {
    topics(words);
}
void check_condition(const Words& words) {
    condition_of(words);
}
void check_time(const Words& words) {
    time_of(words);
}

} // namespace

const std::vector<Session::OwnVerb>& Session::own_verbs() {
    constexpr size_t kAny = 1000;
    static const std::vector<OwnVerb> s_verbs = {
        {"help", "[PROFILE [VERB]]", "lists the verbs, or those of a profile, or explains one", 0, 2,
         &Session::help},
        {"monitor", "[PROFILE|EVENT ...]", "shows events until it is stopped; with --timeout that long",
         0, kAny, &Session::monitor, check_topics},
        {"wait-for", "CONDITION", "waits until it is true: 'hfp.call.state==active', or hfp.ring", 1,
         kAny, &Session::wait_for, check_condition},
        {"pause", "TIME", "does nothing for that long (2s, 200ms)", 1, 1, &Session::pause, check_time},
        {"state", "[PROFILE|EVENT ...]", "shows the last event of each kind in this session", 0, kAny,
         &Session::state, check_topics},
        {"answer", "yes|no|SECRET", "answers a device that wants to pair", 1, 1, &Session::answer},
        {"doctor", "", "looks at directory, socket, server and capture: one page for a bug report", 0,
         0, &Session::doctor},
        {"save-book", "outgoing|missed|incoming|sim|phone|calls FILE",
         "downloads a phone book into a .vcf or .json file", 2, 2, &Session::save_book,
         check_book_file},
        {"record", "voice|music FILE TIME", "writes that much of the sound received to a .wav file", 3,
         3, &Session::record, check_recording},
        {"exit", "", "ends the session", 0, 0, &Session::end},
    };
    return s_verbs;
}

int Session::help(const Words& arguments, Deadline /*deadline*/) {
    if (arguments.empty()) {
        output().line(help_text());
        return kDone;
    }
    bool found = false;
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            if (verb.group != arguments[0] || (arguments.size() > 1 && verb.name != arguments[1])) {
                continue;
            }
            found = true;
            output().line(verb.usage() + "\n    " + verb.help);
            for (const Field& parameter : verb.parameters) {
                if (arguments.size() > 1) {
                    output().line("    " + parameter.name + ": " + parameter.domain() +
                                  (parameter.fallback.value_or("").empty()
                                       ? ""
                                       : " (" + *parameter.fallback + ")"));
                }
            }
            if (arguments.size() > 1) {
                output().line("    function: " + joined(verb.functions) +
                              (verb.ends.empty() ? "" : "\n    waits for: " + verb.ends));
            }
        }
    }
    for (const OwnVerb& own : own_verbs()) {
        if (own.name == arguments[0] && arguments.size() == 1) {
            found = true;
            output().line(own.usage() + "\n    " + own.help);
        }
    }
    if (!found) {
        throw Usage("there is no verb \"" + console::printable(joined(arguments)) +
                    "\" (vymctl help lists them)");
    }
    return kDone;
}

int Session::monitor(const Words& arguments, Deadline deadline) {
    const std::set<std::string> wanted = topics(arguments);
    connect();
    std::set<std::string> before;
    hub().change([&] {
        before = std::exchange(shown_, wanted);
        show_time_ = true;
    });
    // A server that serves somebody else would be silent for ever.
    const int silent = confirm(deadline);
    const Wait result = silent != kDone ? Wait::Met : wait(has_time_ ? deadline : Deadline::max(), [] {
        return !output().is_open();
    });
    hub().change([&] {
        shown_ = before;
        show_time_ = false;
    });
    if (result == Wait::Interrupted) {
        hub().take_interrupt();
    }
    return result == Wait::ServerGone ? failure(result, "monitor") : silent;
}

int Session::wait_for(const Words& arguments, Deadline deadline) {
    const Condition condition = condition_of(arguments);
    connect();
    const Wait result = wait(deadline, [&condition] { return hub().is_true(condition); });
    return result == Wait::Met ? kDone : failure(result, "wait-for " + joined(arguments));
}

int Session::pause(const Words& arguments, Deadline /*deadline*/) {
    const Wait result =
        wait(std::chrono::steady_clock::now() + time_of(arguments), [] { return false; });
    return result == Wait::TimedOut ? kDone : failure(result, "pause");
}

int Session::state(const Words& arguments, Deadline /*deadline*/) {
    const std::set<std::string> wanted = topics(arguments);
    for (const Event& event : hub().latest()) {
        const std::string& name = event.type->name;
        if (wanted.count("*") + wanted.count(name) + wanted.count(name.substr(0, name.find('.'))) > 0) {
            show(event);
        }
    }
    return kDone;
}

int Session::answer(const Words& arguments, Deadline /*deadline*/) {
    const std::optional<Event> request = hub().take_question();
    if (!request) {
        message("answer: nobody has asked");
        return kFailed;
    }
    Pairing::answer(*request, arguments[0]);
    return kDone;
}

int Session::end(const Words& /*arguments*/, Deadline /*deadline*/) {
    end_ = true;
    return kDone;
}

} // namespace vymctl
