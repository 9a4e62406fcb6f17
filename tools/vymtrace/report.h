// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture as a page for a browser.
#ifndef VYMTRACE_REPORT_H
#define VYMTRACE_REPORT_H

#include "bars.h"
#include "item.h"
#include "times.h"

#include <set>
#include <string>

namespace trace {

/// Writes one file that needs no other: a time line with a lane for each profile, a list, and the
/// fields of the record that is clicked.
class Report : public Consumer {
public:
    /// `title` is the name of the capture, `path` that of the page.
    Report(std::string title, std::string path) : title_(std::move(title)), path_(std::move(path)) {}

    void take(const Item& item) override;
    void end() override;

private:
    std::string data() const;

    std::string title_;
    std::string path_;
    std::string records_;
    size_t count_ = 0;
    /// A browser has its limits.
    size_t left_out_ = 0;
    int64_t first_us_ = 0;
    std::set<std::string_view> profiles_;
    bool has_unknown_ = false;
    Bars bars_;
    TimeWriter times_{true, 'T'};
};

} // namespace trace

#endif
