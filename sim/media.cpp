// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "media.h"

namespace sim {

Media::Media(Hub& hub) {
    const Phone& phone = hub.world.phone;
    players.emplace_back(hub, phone.player_name, phone.tracks);
    for (const MediaPlayer& other : phone.other_players) {
        players.emplace_back(hub, other.name, other.tracks);
    }
}

Player& Media::browsed() {
    return players[control && control->browsed ? *control->browsed : addressed];
}

void Media::listen(const Player::Listener& listener) {
    for (Player& each : players) {
        const auto when_heard = [this, &each](const std::function<void()>& function) {
            return [this, &each, function] {
                if (&each == &player() && function) {
                    function();
                }
            };
        };
        each.listen(
            {when_heard(listener.status), when_heard(listener.track), when_heard(listener.position)});
    }
}

void Media::turn_to(size_t index) {
    if (index == addressed) {
        return;
    }
    player().pause();
    addressed = index;
    if (control && !control->browsed) {
        control->folder.reset();
    }
    turned();
}

bool Media::controls(Hub& hub, const Address& address) const {
    const bool yes = control && control->peer == address;
    if (!yes) {
        hub.log.note("refused: no remote control connection to " + to_string(address));
    }
    return yes;
}

std::string track_uid(size_t track_index) {
    std::string uid;
    for (int shift = 56; shift >= 0; shift -= 8) {
        uid += static_cast<char>((uint64_t{track_index} + 1) >> shift & 0xFF);
    }
    return uid;
}

std::string uid_text(const std::string& uid) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : uid) {
        const auto octet = static_cast<uint8_t>(c);
        text += kDigits[octet >> 4];
        text += kDigits[octet & 0xF];
    }
    return text;
}

std::string picture_handle(size_t track_index) {
    const std::string digits = std::to_string(track_index + 1);
    return std::string(7 - std::min<size_t>(digits.size(), 7), '0') + digits;
}

} // namespace sim
