// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulator's own prompt, with line editing, history and completion.
#ifndef VYM_SIM_PROMPT_H
#define VYM_SIM_PROMPT_H

#include "control.h"

#include <asio/io_context.hpp>
#include <functional>
#include <memory>

namespace sim {

class Prompt {
public:
    virtual ~Prompt() = default;
};

/// Reads from standard input, which must be a terminal; `end` is called when the user has no more to
/// say. Throws std::runtime_error when it cannot be, and when this build has no prompt.
std::unique_ptr<Prompt> make_prompt(asio::io_context& loop, Control& control,
                                    const std::function<void()>& end);

} // namespace sim

#endif
