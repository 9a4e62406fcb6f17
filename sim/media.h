// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the modules for music share: the player, and how the stream and the remote control hang
// together.
#ifndef VYM_SIM_MEDIA_H
#define VYM_SIM_MEDIA_H

#include "player.h"

#include <functional>
#include <optional>
#include <string>

namespace sim {

/// Where the phone waits for cover-art connections.
constexpr uint32_t kCoverArtPsm = 0x1003;

/// Lives as long as the remote control is connected.
struct RemoteControl {
    Address peer;
    /// The connection for cover art.
    bool cover_art = false;
    /// The album whose folder is open; the root otherwise.
    std::optional<size_t> folder;
};

struct Media {
    explicit Media(Hub& hub) : player(hub) {}

    /// Whether the peer has the remote control; logs a refusal if not.
    bool controls(Hub& hub, const Address& address) const;

    Player player;
    std::optional<RemoteControl> control;
    /// The remote control comes and goes with the stream.
    std::function<void(const Address& address, bool up)> stream_link;
};

/// Eight bytes, most significant first; tracks count from 1.
std::string track_uid(size_t track_index);
/// The same as sixteen digits.
std::string uid_text(const std::string& uid);
/// Seven digits.
std::string picture_handle(size_t track_index);

} // namespace sim

#endif
