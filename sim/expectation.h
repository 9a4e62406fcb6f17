// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a script wants to see: a command or an event by its name, with some of its fields.
#ifndef VYM_SIM_EXPECTATION_H
#define VYM_SIM_EXPECTATION_H

#include "protocol/codec.h"
#include "verb.h"

#include <string>
#include <string_view>
#include <vector>

namespace sim {

class Expectation {
public:
    /// The words are a name ("hfp.dial") and fields ("number=+4930"). Throws Refused.
    Expectation(protocol::Direction direction, const std::vector<std::string>& words,
                const World& world);

    protocol::Direction direction() const { return direction_; }
    /// What is different about a text without prefix and end; empty when it is what is wanted.
    std::string difference(std::string_view text) const;
    /// As it was written.
    const std::string& text() const { return text_; }

    /// All names of this direction.
    static std::vector<std::string> names(protocol::Direction direction);
    /// The fields of a message, each with its "=".
    static std::vector<std::string> fields(protocol::Direction direction, const std::string& name);

private:
    struct Wanted {
        /// The names on the way to the field, from the outside in.
        std::vector<std::string> path;
        std::string value;
    };

    Wanted read_field(const std::string& word, const World& world) const;

    protocol::Direction direction_;
    const protocol::Message* message_ = nullptr;
    std::vector<Wanted> wanted_;
    std::string text_;
};

} // namespace sim

#endif
