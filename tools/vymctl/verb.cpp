// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "verb.h"

#include <algorithm>
#include <cctype>

namespace vymctl {
namespace {

std::string shown(const Field& parameter) {
    std::string text = parameter.kind == Kind::Words ? parameter.domain() : parameter.name;
    if (parameter.kind != Kind::Words) {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    }
    return parameter.fallback ? '[' + text + ']' : text;
}

} // namespace

Outcome status_outcome(bt_status_t status) {
    static const Field s_status = read_field(VYMCTL_STATUS, {Kind::Number, 0, 255});
    return {status == BT_STATUS_SUCCESS ? "" : to_word(s_status.name_of(status)), {}};
}

std::string Verb::usage() const {
    std::string text = title();
    for (const Field& parameter : parameters) {
        text += ' ' + shown(parameter);
    }
    return text;
}

Values read_values(const Verb& verb, const std::vector<std::string>& words) {
    Values values;
    for (size_t i = 0; i < verb.parameters.size(); ++i) {
        const Field& parameter = verb.parameters[i];
        if (i >= words.size() && !parameter.fallback) {
            throw Usage(parameter.name + " is missing: " + verb.usage());
        }
        try {
            values.push_back(
                read_value(parameter, i < words.size() ? words[i] : parameter.fallback.value()));
        } catch (const Usage& error) {
            throw Usage(verb.title() + ": " + error.what());
        }
    }
    if (words.size() > values.size()) {
        throw Usage("too many words: " + verb.usage());
    }
    return values;
}

} // namespace vymctl
