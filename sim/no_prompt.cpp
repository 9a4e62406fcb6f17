// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// For builds without a library for line editing.
#include "prompt.h"

#include <stdexcept>

namespace sim {

std::unique_ptr<Prompt> make_prompt(asio::io_context& /*loop*/, Control& /*control*/,
                                    const std::function<void()>& /*end*/) {
    throw std::runtime_error(
        "this build has no prompt: install libedit-dev, configure and build again, "
        "or use vym-sim ctl");
}

} // namespace sim
