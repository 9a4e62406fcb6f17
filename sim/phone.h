// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a phone has in it: its network, its music, its contacts and past calls. Plain state, part of the
// world.
#ifndef VYM_SIM_PHONE_H
#define VYM_SIM_PHONE_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

enum class NumberKind : uint8_t { Other = 0, Home = 1, Mobile = 2, Work = 3 };

struct Number {
    NumberKind kind;
    std::string digits;
};

struct Contact {
    std::string last;
    std::string first;
    std::string middle;
    std::vector<Number> numbers;
    /// A JPEG file; empty when there is none.
    std::string photo;
};

enum class PastCallKind : uint8_t { Outgoing, Missed, Incoming };

struct PastCall {
    PastCallKind kind;
    std::string last;
    std::string first;
    /// Empty when it was withheld.
    std::string number;
    /// As a vCard writes it: 20260131T235959.
    std::string time;
};

struct Track {
    std::string title;
    std::string artist;
    std::string album;
    std::string genre;
    uint32_t length_ms;
};

/// One of the phone's programs that play something.
struct MediaPlayer {
    std::string name;
    /// In the order of playing; tracks of one album stand together.
    std::vector<Track> tracks;
};

/// What becomes of calls that are placed from the phone.
enum class FarEnd : uint8_t {
    Answers,
    RingsOn, // nobody is there
    IsBusy,
};

struct Phone {
    std::string model;
    std::string manufacturer;
    std::string operator_name;
    std::string subscriber;
    std::string voice_tag_number;
    bool network = true;
    bool roaming = false;
    uint8_t signal = 0;
    uint8_t battery = 0;
    bool in_band_ring = false;
    /// Numbers for dialling from memory, location 1 first.
    std::vector<std::string> memory;

    /// Somebody calls that long after a hands-free connection came up.
    std::optional<std::chrono::milliseconds> ring_after;
    std::string ring_number;
    FarEnd far_end = FarEnd::Answers;

    /// In the order of playing; tracks of one album stand together.
    std::vector<Track> tracks;
    std::string player_name;
    /// Beside the first one, which has the name and the tracks above.
    std::vector<MediaPlayer> other_players;

    std::vector<Contact> contacts;
    std::vector<Contact> sim_contacts;
    /// The newest call first.
    std::vector<PastCall> calls;

    /// What the audio descriptor carries now: music, unless there is call audio.
    bool music_on_air = false;
    bool call_audio = false;
};

/// A phone with a network and without music, contacts and past calls.
Phone plain_phone();

/// A phone with two albums, fifty contacts of which some are nasty, and a few past calls.
Phone built_in_phone();

/// A small picture, as a JPEG file.
std::string_view picture();

} // namespace sim

#endif
