// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What happened: every callback of every profile, as a name with fields.
#ifndef VYM_VYMCTL_EVENT_H
#define VYM_VYMCTL_EVENT_H

#include "field.h"

#include <chrono>
#include <map>

namespace vymctl {

/// The name is "<profile>.<event>"; it and the names of the fields never change.
struct EventType {
    std::string name;
    std::vector<Field> fields;

    /// The place of a field; nothing when there is none.
    std::optional<size_t> find(std::string_view field) const;
};

struct Event {
    const EventType* type = nullptr;
    /// One for each field.
    std::vector<Json> values;
    std::chrono::system_clock::time_point time;

    /// Null when there is no such field.
    Json value(std::string_view field) const;
    /// "hfp.call index=1 state=active number=+4930".
    std::string text() const;
    /// {"event":"hfp.call","time":1700000000.123,"index":1,...}
    Json json() const;
    /// What it tells about: a later event of the same subject takes its place.
    std::string subject() const;
};

enum class Comparison { Equal, Unequal, Less, More };

/// "state==active"
struct Test {
    std::string field;
    Comparison comparison = Comparison::Equal;
    std::string wanted;

    bool holds(const Json& value) const;
};

/// An event and what must be true of its fields: "hfp.call.state==active && hfp.call.index==1".
struct Condition {
    const EventType* type = nullptr;
    std::vector<Test> tests;

    bool holds(const Event& event) const;
};

/// Throws Usage.
Test read_test(const EventType& type, const std::string& text);
Condition read_condition(const std::string& text);

} // namespace vymctl

#endif
