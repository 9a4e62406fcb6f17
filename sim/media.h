// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the modules for music share: the players, and how the stream and the remote control hang
// together.
#ifndef VYM_SIM_MEDIA_H
#define VYM_SIM_MEDIA_H

#include "player.h"

#include <deque>
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
    /// The player whose folders are looked at, when the client has chosen one; else the one that it
    /// controls.
    std::optional<size_t> browsed;
    /// The album whose folder is open; the root otherwise.
    std::optional<size_t> folder;
};

struct Media {
    explicit Media(Hub& hub);

    /// Whether the peer has the remote control; logs a refusal if not.
    bool controls(Hub& hub, const Address& address) const;

    /// The one that keys go to, and that is heard.
    Player& player() { return players[addressed]; }
    Player& browsed();
    /// What one of them has to say counts while it is the one that is heard.
    void listen(const Player::Listener& listener);
    /// Turns to another player, which begins silently.
    void turn_to(size_t index);

    /// Places, not moved: timers and listeners hold on to them.
    std::deque<Player> players;
    size_t addressed = 0;
    std::optional<RemoteControl> control;
    /// Another player is the one that keys go to.
    std::function<void()> turned;
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
