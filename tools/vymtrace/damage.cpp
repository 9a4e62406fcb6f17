// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "damage.h"

#include <ostream>

namespace trace {

void Damage::note(const capture::Problem& problem) {
    if (untold_ == 0) {
        first_ = problem;
    }
    ++untold_;
    any_ = true;
}

void Damage::tell() {
    if (untold_ == 0) {
        return;
    }
    err_ << file_ << ": " << capture::to_text(first_);
    if (untold_ > 1) {
        err_ << " (and " << untold_ - 1 << " more damaged places behind it)";
    }
    err_ << std::endl;
    untold_ = 0;
}

} // namespace trace
