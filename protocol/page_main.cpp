// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Writes docs/protocol.md to standard output.

#include "page.h"

#include <cstdio>

int main() {
    const std::string text = protocol::page();
    const bool is_written = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    if (!is_written) {
        std::perror("vym_protocol_page: cannot write to standard output");
    }
    return is_written ? 0 : 1;
}
