// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_sim.h"

namespace {

sim::Pace audible() {
    sim::Pace pace = phone_pace();
    pace.audio_packet = std::chrono::milliseconds(1);
    return pace;
}

/// Connected, and the remote control that comes along has said all.
class A2dpSim : public PhoneSim {
public:
    explicit A2dpSim(const sim::Pace& pace = phone_pace()) : PhoneSim(pace) {
        send("AA" + kPhone);
        until("RI");
    }

    void play() { EXPECT_EQ(answers("RC" + kPhone + "4400")[0], "RA4400"); }
};

/// The next packet of the audio descriptor, with its header.
std::string packet(const sim::UniqueFd& audio) {
    std::string header = read_exactly(audio.get(), 4);
    if (header.size() < 4) {
        ADD_FAILURE() << "the stream ends";
        return header;
    }
    const auto low = static_cast<unsigned char>(header[2]);
    const auto high = static_cast<unsigned char>(header[3]);
    return header + read_exactly(audio.get(), static_cast<size_t>(high << 8 | low));
}

/// Reads on until a packet of this type; what was queued before a change comes first.
std::string packet_of(const sim::UniqueFd& audio, char type) {
    for (int i = 0; i < 10000; ++i) {
        std::string next = packet(audio);
        if (next.empty() || next[0] == type) {
            return next;
        }
    }
    ADD_FAILURE() << "no packet of type " << int{type};
    return {};
}

TEST(SimA2dp, ConnectingBringsTheConfigurationAndTheRemoteControl) {
    PhoneSim sim;
    sim.send("AA" + kPhone);
    EXPECT_EQ(sim.until("RC"),
              (Strings{"AA" + kPhone + "01", "BI00" + kPhone + "00", "AA" + kPhone + "02",
                       "AC" + kPhone + "0000AC4402", "RC01" + kPhone}));
}

TEST(SimA2dp, OnlyASourceCanBeConnected) {
    PhoneSim sim;
    EXPECT_EQ(sim.answers("AA" + kSpeaker), Strings{"AA" + kSpeaker + "00"});
    EXPECT_EQ(sim.answers("AB" + kPhone), Strings{"AA" + kPhone + "00"});
}

TEST(SimA2dp, PlayingStartsAndPausingStopsTheStream) {
    A2dpSim sim;
    EXPECT_EQ(sim.answers("RC" + kPhone + "4400"),
              (Strings{"RA4400", "AB" + kPhone + "02", "RL" + kPhone + "01"}));
    EXPECT_EQ(sim.answers("RC" + kPhone + "4600"),
              (Strings{"RA4600", "AB" + kPhone + "01", "RL" + kPhone + "02"}));
}

TEST(SimA2dp, DisconnectingPausesThePlayerAndTakesTheRemoteControlAlong) {
    A2dpSim sim;
    sim.play();
    EXPECT_EQ(sim.answers("AB" + kPhone),
              (Strings{"RL" + kPhone + "02", "RC00" + kPhone, "AA" + kPhone + "00"}));
}

TEST(SimA2dp, SwitchingOffDisconnects) {
    A2dpSim sim;
    EXPECT_EQ(sim.answers("PC"),
              (Strings{"RC00" + kPhone, "AA" + kPhone + "00", "BI00" + kPhone + "01", "PA00"}));
}

TEST(SimA2dp, MusicIsStreamedWhileATrackPlays) {
    A2dpSim sim(audible());
    EXPECT_EQ(packet(sim.audio).substr(0, 4), std::string("\x00\x01\x40\x01", 4));
    sim.play();
    const std::string music = packet_of(sim.audio, 1);
    // Type 1, codec 0, 0x0DC8 bytes; 8000 * sin(2 pi / 100 * n): 0, 502, 1003 and half of each.
    EXPECT_EQ(music.substr(0, 16),
              std::string("\x01\x00\xC8\x0D\x00\x00\x00\x00\xF6\x01\xFB\x00\xEB\x03\xF5\x01", 16));
    EXPECT_EQ(music.size(), 3532U);
    EXPECT_EQ(packet(sim.audio).substr(0, 4), std::string("\x01\x00\xC8\x0D", 4));
    EXPECT_EQ(sim.answers("RC" + kPhone + "4500")[0], "RA4500");
    EXPECT_EQ(packet_of(sim.audio, 0).size(), 324U);
}

TEST(SimA2dp, WithoutFocusThereIsNoMusic) {
    A2dpSim sim(audible());
    EXPECT_EQ(sim.answers("AC00"), Strings{});
    sim.play();
    // Everything from before is read; then nothing but voice comes.
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(packet(sim.audio)[0], 0);
    }
    EXPECT_EQ(sim.answers("AC01"), Strings{});
    EXPECT_EQ(packet_of(sim.audio, 1).size(), 3532U);
}

TEST(SimA2dp, ACallIsHeardInsteadOfMusic) {
    A2dpSim sim(audible());
    sim.play();
    EXPECT_EQ(packet_of(sim.audio, 1).size(), 3532U);
    sim.send("HA" + kPhone);
    sim.until("HX");
    sim.send("HC" + kPhone);
    EXPECT_EQ(sim.until("HB02").back(), "HB02" + kPhone);
    EXPECT_EQ(packet_of(sim.audio, 0).size(), 324U);
    EXPECT_EQ(sim.answers("HD" + kPhone), Strings{"HB00" + kPhone});
    EXPECT_EQ(packet_of(sim.audio, 1).size(), 3532U);
}

TEST(SimA2dp, GainAndHardwareAreLogged) {
    PhoneSim sim;
    EXPECT_EQ(sim.answers("AD1234"), Strings{});
    EXPECT_EQ(sim.answers("AQ02"), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("the client plays with gain 4660\n"), std::string::npos);
    EXPECT_NE(sim.log().find("music hardware in mode 2\n"), std::string::npos);
}

} // namespace
