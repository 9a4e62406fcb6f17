// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// One of the phone's players: what is played, how far it is, and who wants to know.
#ifndef VYM_SIM_PLAYER_H
#define VYM_SIM_PLAYER_H

#include "module.h"
#include "timer.h"

#include <functional>
#include <map>
#include <vector>

namespace sim {

enum class PlayStatus : uint8_t { Stopped = 0, Playing = 1, Paused = 2, SeekForward = 3, SeekBack = 4 };

/// Settings and their values, as the remote-control profile numbers them.
enum PlayerSetting : uint8_t { kRepeat = 2, kShuffle = 3 };
enum RepeatValue : uint8_t { kRepeatOff = 1, kRepeatTrack = 2, kRepeatAll = 3 };

class Player {
public:
    struct Listener {
        std::function<void()> status;
        std::function<void()> track;
        std::function<void()> position;
    };

    Player(Hub& hub, const std::string& name, const std::vector<Track>& tracks)
        : hub_(hub), name_(name), tracks_(tracks), second_(hub.loop) {}

    const std::string& name() const { return name_; }
    const std::vector<Track>& tracks() const { return tracks_; }
    /// Whether it is on the phone; programs come and go.
    bool is_installed() const { return installed_; }
    void install(bool yes) { installed_ = yes; }

    void listen(Listener listener) { listeners_.push_back(std::move(listener)); }

    PlayStatus status() const { return status_; }
    /// Whether sound comes out.
    bool is_sounding() const { return status_ != PlayStatus::Stopped && status_ != PlayStatus::Paused; }
    /// The current track, or nullptr when the player has none at all.
    const Track* track() const;
    size_t index() const { return index_; }
    uint32_t position_ms() const { return position_ms_; }

    void play();
    void pause();
    void stop();
    /// Forward or backward by one, around the ends.
    void skip(bool forward);
    /// To the first track of the next or the previous album.
    void skip_album(bool forward);
    void play_track(size_t index);
    /// Fast motion lasts until end_seek(), and goes back to what was before.
    void seek(bool forward);
    void end_seek();

    /// The values that a setting may have; empty for an unknown setting.
    static const std::vector<uint8_t>& values_of(uint8_t setting);
    static std::vector<uint8_t> settings();
    uint8_t value_of(uint8_t setting) const { return settings_.at(setting); }
    void set(uint8_t setting, uint8_t value) { settings_[setting] = value; }

private:
    void set_status(PlayStatus status);
    void go_to(size_t index);
    void start_second();
    void second_passed();
    void track_ended();
    void notify(std::function<void()> Listener::*what);

    Hub& hub_;
    const std::string& name_;
    const std::vector<Track>& tracks_;
    Timer second_;
    std::vector<Listener> listeners_;
    bool installed_ = true;
    PlayStatus status_ = PlayStatus::Stopped;
    PlayStatus before_seek_ = PlayStatus::Stopped;
    size_t index_ = 0;
    uint32_t position_ms_ = 0;
    std::map<uint8_t, uint8_t> settings_{{kRepeat, kRepeatOff}, {kShuffle, 1}};
};

} // namespace sim

#endif
