// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands and events as a person reads them, by the description of the protocol.
#ifndef VYM_SIM_DESCRIBED_H
#define VYM_SIM_DESCRIBED_H

#include "protocol/protocol.h"

#include <string>
#include <string_view>

namespace sim {

/// "hfp dial"
std::string name_of(const protocol::Found& found);

/// One line such as `hfp dial number="+4930123"`; long values and long lines are cut, and what is wrong
/// stands at the end. The text of a command begins behind its "AT#".
std::string described(protocol::Direction direction, std::string_view text);

} // namespace sim

#endif
