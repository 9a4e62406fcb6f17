// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "audio.h"

#include "transport.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>

namespace sim {
namespace {

constexpr uint8_t kTransportAudio = 1;
constexpr char kStreamVoice = 0;
constexpr char kStreamMusic = 1;
constexpr char kCodecCvsd = 1;
constexpr char kCodecSamples = 0;
/// How much sound is in a packet.
constexpr std::chrono::milliseconds kPacket{20};
// Room for a fraction of a second: a client that stops reading finds fresh packets when it returns, not
// old ones.
constexpr int kSendBuffer = 16 * 1024;

std::string packet(char stream, char codec, const Sound& sound, Playback& playback) {
    const size_t count = sound.bytes_in(kPacket);
    return std::string{stream, codec} + le16(static_cast<uint16_t>(count)) +
           playback.next(sound, count);
}

} // namespace

Audio::Audio(Hub& hub) : hub_(hub), timer_(hub.loop) {
    const std::string& path = hub.world.voice_recording;
    if (!path.empty()) {
        recording_.emplace(path, hub.world.voice.rate, hub.world.voice.channels);
    }
}

void Audio::open() {
    TransportPair pair = make_transport(hub_.log, "audio", kSendBuffer);
    if (!pair) {
        return;
    }
    close();
    fd_.emplace(hub_.loop, pair.ours.release());
    ++run_;
    sent_packets_ = dropped_packets_ = voice_bytes_ = 0;
    await_voice();
    due_ = Clock::of(hub_.loop).now() + hub_.pace.audio_packet;
    timer_.start_at(due_, [this] { tick(); });
    hub_.out.hand_over(kTransportAudio, std::move(pair.clients));
}

void Audio::close() {
    if (!fd_) {
        return;
    }
    timer_.stop();
    fd_.reset();
    unsent_.clear();
    hub_.log.note("audio closed: " + std::to_string(sent_packets_) + " packets sent, " +
                  std::to_string(dropped_packets_) + " dropped, " + std::to_string(voice_bytes_) +
                  " voice bytes received");
}

void Audio::tick() {
    if (hub_.world.adapter.powered && hub_.world.any_link() && !stream_one()) {
        return;
    }
    // Paced from the last due time, so that late wake-ups do not add up; after a long stop there is no
    // burst.
    const auto now = Clock::of(hub_.loop).now();
    due_ += hub_.pace.audio_packet;
    if (due_ < now - 10 * hub_.pace.audio_packet) {
        due_ = now;
    }
    timer_.start_at(due_, [this] { tick(); });
}

bool Audio::stream_one() {
    const bool whole = unsent_.empty();
    if (whole) {
        const Phone& phone = hub_.world.phone;
        const bool music = phone.music_on_air && !phone.call_audio;
        unsent_ = music ? packet(kStreamMusic, kCodecSamples, hub_.world.music, music_)
                        : packet(kStreamVoice, kCodecCvsd, hub_.world.voice, voice_);
    }
    const ssize_t count =
        send(fd_->native_handle(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
        sent_packets_ += whole ? 1 : 0;
        unsent_.erase(0, static_cast<size_t>(count));
    } else if (errno == EAGAIN || errno == EINTR || errno == ENOBUFS) {
        ++dropped_packets_;
        if (whole) {
            unsent_.clear();
        }
    } else {
        // What the client said last is still to be read; reading meets the end of the stream and
        // closes.
        return false;
    }
    return true;
}

void Audio::await_voice() {
    fd_->async_wait(asio::posix::stream_descriptor::wait_read,
                    [this, run = run_](const asio::error_code& error) {
                        if (!error) {
                            Clock::of(hub_.loop).take_turn(Clock::Turn::Data, [this, run] {
                                if (fd_ && run == run_) {
                                    read_voice();
                                }
                            });
                        }
                    });
}

void Audio::read_voice() {
    std::array<char, 4096> chunk{};
    const ssize_t count = recv(fd_->native_handle(), chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (count > 0) {
        if (voice_bytes_ == 0) {
            hub_.log.note("voice from the client begins");
        }
        voice_bytes_ += static_cast<size_t>(count);
        if (recording_) {
            recording_->write(chunk.data(), static_cast<size_t>(count));
        }
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
        // The client has ended its side; the next enable hands over a new descriptor.
        close();
        return;
    }
    await_voice();
}

} // namespace sim
