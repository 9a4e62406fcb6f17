// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands and events for people: one line each.
#ifndef VYMTRACE_LINES_H
#define VYMTRACE_LINES_H

#include "item.h"
#include "output.h"
#include "times.h"

namespace trace {

class Lines : public Consumer {
public:
    struct Style {
        bool utc = false;
        bool colour = false;
    };
    Lines(Output& out, Style style) : out_(out), style_(style), times_(style.utc) {}

    void take(const Item& item) override;
    void flush() override { out_.flush(); }
    void end() override { out_.flush(); }

private:
    Output& out_;
    Style style_;
    TimeWriter times_;
};

/// Control characters as \xHH, and quotation marks around it.
std::string in_quotes(std::string_view text);

} // namespace trace

#endif
