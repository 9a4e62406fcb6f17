// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the next word may be.
#include "console/words.h"
#include "session.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vymctl {
namespace {

/// Services that people ask for most (Assigned Numbers).
constexpr std::array kUsualUuids{"1101", "180D", "180F", "181A", "2902", "2A37", "2A19"};

void add_if_begun(Words& found, const std::string& word, const std::string& begun) {
    if (word.rfind(begun, 0) == 0 && std::find(found.begin(), found.end(), word) == found.end()) {
        found.push_back(word);
    }
}

Words first_words() {
    Words words;
    for (const Session::OwnVerb& own : Session::own_verbs()) {
        words.push_back(own.name);
    }
    for (const Profile& profile : profiles()) {
        words.push_back(profile.name);
    }
    return words;
}

Words verbs_of(const std::string& group) {
    Words words;
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            if (verb.group == group) {
                words.push_back(verb.name);
            }
        }
    }
    return words;
}

Words topics(bool with_fields) {
    Words words;
    for (const Profile& profile : profiles()) {
        if (!with_fields) {
            words.push_back(profile.name);
        }
        for (const EventRow& row : profile.events) {
            words.push_back(row.type.name);
            for (const Field& field : row.type.fields) {
                if (with_fields) {
                    words.push_back(row.type.name + '.' + field.name + "==");
                }
            }
        }
    }
    return words;
}

Words values_of(const Field& parameter) {
    Words words;
    for (const auto& entry : parameter.words) {
        words.push_back(entry.first);
    }
    if (parameter.kind == Kind::Address || parameter.kind == Kind::Uuid) {
        const std::set<std::string> known = hub().known(parameter.kind);
        words.assign(known.begin(), known.end());
    }
    if (parameter.kind == Kind::Uuid) {
        words.insert(words.end(), kUsualUuids.begin(), kUsualUuids.end());
    }
    return words;
}

Words candidates(const Words& before) {
    if (before.empty()) {
        return first_words();
    }
    if (before[0] == "help") {
        return before.size() == 1 ? first_words() : before.size() == 2 ? verbs_of(before[1]) : Words();
    }
    if (before[0] == "monitor" || before[0] == "state" || before[0] == "wait-for") {
        return topics(before[0] == "wait-for");
    }
    if (before[0] == "save-book" || before[0] == "record") {
        return before.size() > 1       ? Words()
               : before[0] == "record" ? Words{"voice", "music"}
                                       : values_of(find_verb("pbap", "size")->parameters[0]);
    }
    if (before.size() == 1) {
        return verbs_of(before[0]);
    }
    const Verb* verb = find_verb(before[0], before[1]);
    const size_t place = before.size() - 2;
    return verb != nullptr && place < verb->parameters.size() ? values_of(verb->parameters[place])
                                                              : Words();
}

} // namespace

std::vector<std::string> complete(const std::string& line) {
    Words words;
    try {
        words = console::split_words(line);
    } catch (const console::Refused&) {
        return {};
    }
    const bool begun = !line.empty() && line.back() != ' ' && !words.empty();
    const std::string beginning = begun ? words.back() : "";
    if (begun) {
        words.pop_back();
    }
    Words found;
    for (const std::string& word : candidates(words)) {
        add_if_begun(found, word, beginning);
    }
    return found;
}

std::string complete_command_line(const std::string& line) {
    // What stands before the word that is completed, without the options.
    std::string rest;
    const OptionRow* open = nullptr;
    const bool begun = !line.empty() && line.back() != ' ';
    const std::vector<std::string> words = split_row(line);
    const std::string last = begun && !words.empty() ? words.back() : "";
    for (size_t i = 0; i + (begun ? 1 : 0) < words.size(); ++i) {
        const auto row = std::find_if(option_rows().begin(), option_rows().end(),
                                      [&](const OptionRow& one) { return one.name == words[i]; });
        if (open != nullptr) {
            open = nullptr;
        } else if (row == option_rows().end()) {
            rest += words[i] + ' ';
        } else if (row->argument != nullptr) {
            open = &*row;
        }
    }
    Words found;
    if (open != nullptr) {
        std::string choices = open->choices == nullptr ? "" : open->choices;
        std::replace(choices.begin(), choices.end(), '|', ' ');
        for (const std::string& choice : split_row(choices)) {
            add_if_begun(found, choice, last);
        }
    } else if (!last.empty() && last[0] == '-') {
        for (const OptionRow& row : option_rows()) {
            add_if_begun(found, row.name, last);
        }
    } else {
        found = complete(rest + last);
    }
    std::string text;
    for (const std::string& word : found) {
        text += (text.empty() ? "" : "\n") + word;
    }
    return text;
}

} // namespace vymctl
