// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "sound.h"

#include "wire.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <string_view>
#include <system_error>

namespace sim {
namespace {

constexpr uint16_t kPcm = 1;
constexpr uint16_t kBits = 16;
constexpr uint32_t kHeader = 44;
constexpr uint32_t kRiffSizeAt = 4;
constexpr uint32_t kDataSizeAt = 40;
// A little over six minutes of music.
constexpr size_t kMostBytes = size_t{64} * 1024 * 1024;

std::string reason() {
    return std::generic_category().message(errno);
}

uint16_t from_le16(std::string_view bytes) {
    return static_cast<uint16_t>(static_cast<uint8_t>(bytes[0]) | static_cast<uint8_t>(bytes[1]) << 8U);
}

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw SoundError("cannot read the sound " + path + ": " + reason());
    }
    std::string text;
    file.seekg(0, std::ios::end);
    const auto size = static_cast<size_t>(std::max<std::streamoff>(file.tellg(), 0));
    if (size > kMostBytes) {
        throw SoundError(path + " has " + std::to_string(size) + " bytes; a sound has at most " +
                         std::to_string(kMostBytes) + ": cut it");
    }
    file.seekg(0);
    text.resize(size);
    file.read(text.data(), static_cast<std::streamsize>(size));
    text.resize(static_cast<size_t>(file.gcount()));
    return text;
}

} // namespace

size_t Sound::bytes_in(std::chrono::milliseconds time) const {
    return static_cast<size_t>(rate * time.count() / 1000) * frame_bytes();
}

Sound tone(uint32_t rate, uint16_t channels, double hertz, uint32_t frames) {
    constexpr double kHeight = 8000.0;
    const double step = 2.0 * 3.14159265358979323846 * hertz / rate;
    Sound sound{rate, channels, {}};
    for (uint32_t i = 0; i < frames; ++i) {
        const auto sample = static_cast<int16_t>(std::lround(kHeight * std::sin(step * i)));
        for (uint16_t channel = 0; channel < channels; ++channel) {
            // Each channel at half the height of the one before, so that they can be told apart.
            sound.samples += le16(static_cast<uint16_t>(sample / (1 << channel)));
        }
    }
    return sound;
}

Sound read_wav(const std::string& path) {
    const std::string text = content(path);
    const std::string_view bytes = text;
    if (bytes.size() < 12 || bytes.substr(0, 4) != "RIFF" || bytes.substr(8, 4) != "WAVE") {
        throw SoundError(path + " is no WAV file; convert it to one with 16-bit samples");
    }
    Sound sound;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const std::string_view kind = bytes.substr(at, 4);
        const size_t size = from_le32(bytes.substr(at + 4, 4));
        // A writer that was killed leaves a size that is wrong, and others do, too.
        const std::string_view data = bytes.substr(at + 8, size);
        if (kind == "fmt " && data.size() >= 16) {
            if (from_le16(data) != kPcm || from_le16(data.substr(14)) != kBits) {
                throw SoundError(path + " has other samples than plain ones of 16 bits; convert it");
            }
            sound.channels = from_le16(data.substr(2));
            sound.rate = from_le32(data.substr(4, 4));
        } else if (kind == "data") {
            sound.samples = data;
        }
        at += 8 + data.size() + data.size() % 2;
    }
    if (sound.rate == 0 || sound.channels == 0 || sound.samples.size() < sound.frame_bytes()) {
        throw SoundError(path + " has no sound in it; it needs a \"fmt \" and a \"data\" part");
    }
    sound.samples.resize(sound.samples.size() - sound.samples.size() % sound.frame_bytes());
    return sound;
}

std::string Playback::next(const Sound& sound, size_t count) {
    std::string bytes;
    bytes.reserve(count);
    at_ = at_ < sound.samples.size() ? at_ : 0;
    while (bytes.size() < count) {
        const size_t taken = std::min(count - bytes.size(), sound.samples.size() - at_);
        bytes.append(sound.samples, at_, taken);
        at_ = (at_ + taken) % sound.samples.size();
    }
    return bytes;
}

WavWriter::WavWriter(const std::string& path, uint32_t rate, uint16_t channels)
    : file_(path, std::ios::binary | std::ios::trunc) {
    const auto frame = static_cast<uint16_t>(2 * channels);
    file_ << "RIFF" << le32(kHeader - 8) << "WAVEfmt " << le32(16) << le16(kPcm) << le16(channels)
          << le32(rate) << le32(rate * frame) << le16(frame) << le16(kBits) << "data" << le32(0)
          << std::flush;
    if (!file_) {
        throw SoundError("cannot write the sound " + path + ": " + reason());
    }
}

void WavWriter::write(const char* bytes, size_t count) {
    // The format ends at 4 GiB.
    count = std::min<size_t>(count, UINT32_MAX - kHeader - bytes_);
    file_.write(bytes, static_cast<std::streamsize>(count));
    bytes_ += static_cast<uint32_t>(count);
    write_sizes();
}

void WavWriter::write_sizes() {
    file_.seekp(kRiffSizeAt);
    file_ << le32(kHeader - 8 + bytes_);
    file_.seekp(kDataSizeAt);
    file_ << le32(bytes_);
    file_.seekp(0, std::ios::end);
    file_ << std::flush;
}

} // namespace sim
