// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What was found wrong with a file, told in one line.
#ifndef VYMTRACE_DAMAGE_H
#define VYMTRACE_DAMAGE_H

#include "capture/records.h"

#include <cstddef>
#include <iosfwd>
#include <string>

namespace trace {

class Damage {
public:
    Damage(std::string file, std::ostream& err) : file_(std::move(file)), err_(err) {}

    void note(const capture::Problem& problem);
    void note(const std::string& what) { note(capture::Problem{{}, what}); }
    /// What was noted since the last time.
    void tell();

    bool any() const { return any_; }

private:
    std::string file_;
    std::ostream& err_;
    capture::Problem first_;
    size_t untold_ = 0;
    bool any_ = false;
};

} // namespace trace

#endif
