// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The audio descriptor: a paced stream of framed packets to the client, and its voice bytes back.
#ifndef VYM_SIM_AUDIO_H
#define VYM_SIM_AUDIO_H

#include "module.h"
#include "sound.h"
#include "timer.h"

#include <asio/posix/stream_descriptor.hpp>
#include <cstdint>
#include <optional>
#include <string>

namespace sim {

class Audio {
public:
    /// Throws SoundError when the voice of the client is to be recorded and cannot be.
    explicit Audio(Hub& hub);

    bool is_open() const { return fd_.has_value(); }
    /// Makes a new pair, hands one end to the client and streams on the other while a link is up.
    void open();
    void close();

private:
    void tick();
    /// False when nobody listens any more.
    bool stream_one();
    void await_voice();
    void read_voice();

    Hub& hub_;
    Timer timer_;
    Clock::time_point due_;
    std::optional<asio::posix::stream_descriptor> fd_;
    /// Counts the descriptors, so that a wait for an old one is recognised when it ends.
    uint64_t run_ = 0;
    Playback voice_;
    Playback music_;
    std::optional<WavWriter> recording_;
    /// The end of a packet that the socket took only in part: it goes first, or the stream loses its
    /// framing.
    std::string unsent_;
    uint64_t sent_packets_ = 0;
    uint64_t dropped_packets_ = 0;
    uint64_t voice_bytes_ = 0;
};

} // namespace sim

#endif
