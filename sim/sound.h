// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is played and recorded: samples, and the WAV files that they come from and go to.
#ifndef VYM_SIM_SOUND_H
#define VYM_SIM_SOUND_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>

namespace sim {

/// A file that cannot be used; the text is one line that says why and what to do.
class SoundError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Signed samples of 16 bits, low byte first, the channels of a frame side by side.
struct Sound {
    uint32_t rate = 0;
    uint16_t channels = 1;
    std::string samples;

    size_t frame_bytes() const { return size_t{2} * channels; }
    /// The bytes of whole frames that are played in that time.
    size_t bytes_in(std::chrono::milliseconds time) const;
};

/// A sine wave of whole periods, to be repeated without a click.
Sound tone(uint32_t rate, uint16_t channels, double hertz, uint32_t frames);

/// Reads a WAV file of 16-bit samples. Throws SoundError.
Sound read_wav(const std::string& path);

/// Plays a sound over and over.
class Playback {
public:
    /// The next bytes of it.
    std::string next(const Sound& sound, size_t count);

private:
    size_t at_ = 0;
};

/// Writes a WAV file. What has been written can be played at any time, also when the program is killed.
class WavWriter {
public:
    /// Throws SoundError.
    WavWriter(const std::string& path, uint32_t rate, uint16_t channels);

    void write(const char* bytes, size_t count);

private:
    void write_sizes();

    std::ofstream file_;
    uint32_t bytes_ = 0;
};

} // namespace sim

#endif
