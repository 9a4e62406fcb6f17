// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "player.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint32_t kSecond = 1000;
/// Fast motion is that much faster.
constexpr uint32_t kSeekFactor = 10;

} // namespace

const Track* Player::track() const {
    return tracks().empty() ? nullptr : &tracks()[index_];
}

void Player::notify(std::function<void()> Listener::*what) {
    for (const Listener& listener : listeners_) {
        const std::function<void()>& function = listener.*what;
        if (function) {
            function();
        }
    }
}

void Player::set_status(PlayStatus status) {
    if (status_ == status) {
        return;
    }
    const bool sounded = is_sounding();
    status_ = status;
    notify(&Listener::status);
    if (!is_sounding()) {
        second_.stop();
    } else if (!sounded) {
        start_second();
    }
}

void Player::start_second() {
    second_.start(hub_.pace.playback_second, [this] { second_passed(); });
}

void Player::play() {
    if (!tracks().empty()) {
        set_status(PlayStatus::Playing);
    }
}

void Player::pause() {
    if (is_sounding()) {
        set_status(PlayStatus::Paused);
    }
}

void Player::stop() {
    set_status(PlayStatus::Stopped);
    position_ms_ = 0;
}

void Player::go_to(size_t index) {
    index_ = index;
    position_ms_ = 0;
    notify(&Listener::track);
}

void Player::skip(bool forward) {
    const size_t count = tracks().size();
    if (count > 0) {
        go_to((index_ + (forward ? 1 : count - 1)) % count);
    }
}

void Player::skip_album(bool forward) {
    const size_t count = tracks().size();
    if (count == 0) {
        return;
    }
    const size_t step = forward ? 1 : count - 1;
    const auto album = [this](size_t i) -> const std::string& { return tracks()[i].album; };
    size_t next = index_;
    do {
        next = (next + step) % count;
    } while (next != index_ && album(next) == album(index_));
    while (next > 0 && album(next - 1) == album(next)) {
        --next;
    }
    go_to(next);
}

void Player::play_track(size_t index) {
    go_to(index);
    play();
}

void Player::seek(bool forward) {
    if (tracks().empty()) {
        return;
    }
    if (status_ != PlayStatus::SeekForward && status_ != PlayStatus::SeekBack) {
        before_seek_ = status_;
    }
    set_status(forward ? PlayStatus::SeekForward : PlayStatus::SeekBack);
}

void Player::end_seek() {
    if (status_ == PlayStatus::SeekForward || status_ == PlayStatus::SeekBack) {
        set_status(before_seek_);
    }
}

void Player::second_passed() {
    start_second();
    if (status_ == PlayStatus::SeekBack) {
        position_ms_ -= std::min(position_ms_, kSecond * kSeekFactor);
    } else {
        position_ms_ += status_ == PlayStatus::SeekForward ? kSecond * kSeekFactor : kSecond;
    }
    if (position_ms_ >= track()->length_ms) {
        track_ended();
    } else {
        notify(&Listener::position);
    }
}

void Player::track_ended() {
    const uint8_t repeat = value_of(kRepeat);
    if (repeat == kRepeatTrack) {
        position_ms_ = 0;
        notify(&Listener::position);
        return;
    }
    if (repeat == kRepeatOff && index_ + 1 == tracks().size()) {
        stop();
    }
    skip(true);
}

const std::vector<uint8_t>& Player::values_of(uint8_t setting) {
    static const std::map<uint8_t, std::vector<uint8_t>> values{
        {kRepeat, {kRepeatOff, kRepeatTrack, kRepeatAll}}, {kShuffle, {1, 2}}};
    static const std::vector<uint8_t> none;
    const auto it = values.find(setting);
    return it == values.end() ? none : it->second;
}

std::vector<uint8_t> Player::settings() {
    return {kRepeat, kShuffle};
}

} // namespace sim
