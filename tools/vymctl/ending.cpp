// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "ending.h"

#include "profiles.h"

#include <algorithm>
#include <array>

namespace vymctl {
namespace {

// What an answer has in common with its question.
constexpr std::array kCommon{"address", "conn_id", "server_if", "client_if", "book"};

std::string shown(const Field& field, const Value& value) {
    switch (field.kind) {
    case Kind::Address:
        return to_text(value.address);
    case Kind::Uuid:
        return to_text(value.uuid);
    default:
        return to_word(field.name_of(value.number));
    }
}

} // namespace

Ending::Ending(const Verb& verb, const Values& values) {
    const std::vector<std::string> parts = split_row(verb.ends);
    if (parts.empty()) {
        return;
    }
    type_ = &event_type(parts[0]);
    for (size_t i = 1; i < parts.size(); ++i) {
        const bool bad = parts[i][0] == '!';
        (bad ? bad_ : good_).push_back(read_test(*type_, parts[i].substr(bad ? 1 : 0)));
    }
    for (size_t i = 0; i < values.size(); ++i) {
        const Field& parameter = verb.parameters[i];
        if (type_->find(parameter.name) &&
            std::find(kCommon.begin(), kCommon.end(), parameter.name) != kCommon.end()) {
            mine_.push_back({parameter.name, Comparison::Equal, shown(parameter, values[i])});
        }
    }
}

Ending::Verdict Ending::judge(const Event& event) const {
    const auto holds = [&event](const Test& test) { return test.holds(event.value(test.field)); };
    if (event.type != type_ || !std::all_of(mine_.begin(), mine_.end(), holds)) {
        return Verdict::Open;
    }
    const bool failed = type_->find("status") && event.value("status") != "success";
    if (failed || std::any_of(bad_.begin(), bad_.end(), holds)) {
        return Verdict::Failed;
    }
    return std::all_of(good_.begin(), good_.end(), holds) ? Verdict::Done : Verdict::Open;
}

void Ending::see(const Event& event) {
    if (verdict_ == Verdict::Open) {
        verdict_ = judge(event);
        if (verdict_ != Verdict::Open) {
            event_ = event;
        }
    }
}

} // namespace vymctl
