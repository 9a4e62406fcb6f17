// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// For builds without a library for line editing.
#include "console/line_editor.h"

#include <stdexcept>

namespace console {

std::unique_ptr<LineEditor> make_line_editor(const std::string& /*program*/, std::FILE* /*out*/,
                                             // NOLINTNEXTLINE(performance-unnecessary-value-param)
                                             Completer /*complete*/) {
    throw std::runtime_error(
        "this build has no prompt: install libedit-dev, configure and build again");
}

} // namespace console
