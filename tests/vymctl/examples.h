// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_VYMCTL_EXAMPLES_H
#define VYM_TESTS_VYMCTL_EXAMPLES_H

#include "verb.h"

#include <algorithm>

/// Words that a verb takes.
inline std::vector<std::string> example_arguments(const vymctl::Verb& verb) {
    // What only the function itself looks at.
    static const std::map<std::string, std::vector<std::string>> s_special = {
        {"hfp dtmf", {"5"}},
        {"adapter bond-with-data", {"2A:41:6E:6E:61:01", "le", "00"}},
        {"avrcp set-settings", {"2A:41:6E:6E:61:01", "0202"}},
        {"core packet", {"01030C00", "sent"}},
        {"core packet-command", {"030C00", "sent"}},
        {"core packet-acl", {"01000000", "sent"}},
        {"core packet-sco", {"010000", "sent"}},
        {"core packet-event", {"0E00", "sent"}},
    };
    if (const auto it = s_special.find(verb.title()); it != s_special.end()) {
        return it->second;
    }
    std::vector<std::string> words;
    for (const vymctl::Field& parameter : verb.parameters) {
        switch (parameter.kind) {
        case vymctl::Kind::Address:
            words.emplace_back("2A:41:6E:6E:61:01");
            break;
        case vymctl::Kind::Uuid:
            words.emplace_back("1101");
            break;
        case vymctl::Kind::Words:
            words.push_back(parameter.words.front().first);
            break;
        case vymctl::Kind::Text:
            words.emplace_back("example");
            break;
        case vymctl::Kind::Bytes:
            words.emplace_back(std::string(2 * static_cast<size_t>(parameter.low), '0'));
            break;
        default:
            words.push_back(std::to_string(std::max<int64_t>(parameter.low, 1)));
        }
    }
    return words;
}

#endif
