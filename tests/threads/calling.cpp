// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "threads/calling.h"

namespace threads {

std::array<uint8_t, 64> plain_bytes{1};
std::array<char, 2> plain_text{'1', '\0'};

} // namespace threads
