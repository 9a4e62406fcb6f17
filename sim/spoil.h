// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// One thing in an event made wrong, found by what the description says of its fields.
#ifndef VYM_SIM_SPOIL_H
#define VYM_SIM_SPOIL_H

#include "random_event.h"

#include <string>
#include <string_view>

namespace sim {

struct Spoiled {
    /// Empty: there was nothing of the kind.
    std::string event;
    /// "says 00FF at byte 6"
    std::string what;
};

/// Too large a count of what follows, in the text or inside a block, or one that is no number.
Spoiled spoil_count(std::string_view event, Random& random);
bool has_count(std::string_view event);

/// One digit that is none.
Spoiled spoil_digit(std::string_view event, Random& random);
bool has_digit(std::string_view event);

} // namespace sim

#endif
