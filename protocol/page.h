// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// docs/protocol.md, made of the description.
#ifndef VYM_PROTOCOL_PAGE_H
#define VYM_PROTOCOL_PAGE_H

#include <string>

namespace protocol {

std::string page();

} // namespace protocol

#endif
