// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands and events for programs: JSON Lines.
#ifndef VYMTRACE_JSON_LINES_H
#define VYMTRACE_JSON_LINES_H

#include "item.h"
#include "output.h"
#include "times.h"

namespace trace {

/// Appends {"time":...,"record":...,"offset":...,"direction":...,"profile":...,"name":...,"tag":...,
/// "fields":{...}}, of an unknown tag "text" instead of the last four, and where need be "surplus" and
/// "problem".
void append_json(std::string* json, const Item& item, TimeWriter* times);

class JsonLines : public Consumer {
public:
    explicit JsonLines(Output& out) : out_(out) {}

    void take(const Item& item) override {
        append_json(&out_.line(), item, &times_);
        out_.end_line();
    }
    void flush() override { out_.flush(); }
    void end() override { out_.flush(); }

private:
    Output& out_;
    TimeWriter times_{true, 'T'};
};

} // namespace trace

#endif
