// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// One command or event without what is private in it.
#ifndef VYMTRACE_SCRUB_TEXT_H
#define VYMTRACE_SCRUB_TEXT_H

#include "item.h"
#include "pseudonyms.h"

#include <string>

namespace trace {

/// With AT# and CR LF, as it was. What cannot be understood is masked as a whole.
std::string scrubbed(const Item& item, Pseudonyms& pseudonyms);

} // namespace trace

#endif
