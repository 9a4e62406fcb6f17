// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <sys/socket.h>

namespace {

/// 20 ms of 8,000 samples a second behind four bytes that say so.
constexpr size_t kVoicePacket = 4 + 320;

/// Bonds with the strap, which brings up a link.
void connect_strap(TestClient& client) {
    client.send("AT#BMC64865617274\r\n");
    EXPECT_EQ(client.events(3).back(), "BH00C6486561727402");
}

/// The server reads to the end and lets go: the next enable hands over a new descriptor.
void let_go(TestClient& client) {
    for (;;) {
        client.send("AT#PB\r\n");
        EXPECT_EQ(client.event(), "PA01");
        if (!client.events_until_version().empty()) {
            break;
        }
    }
    EXPECT_TRUE(client.descriptor());
}

bool has_input_now(int fd) {
    pollfd entry{fd, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

TEST(SimAudio, PacketsAreFramed) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    connect_strap(client);
    std::set<std::string> payloads;
    for (int i = 0; i < 20; ++i) {
        const std::string packet = read_exactly(audio.get(), kVoicePacket);
        ASSERT_EQ(packet.size(), kVoicePacket);
        ASSERT_EQ(packet.substr(0, 4), std::string("\x00\x01\x40\x01", 4));
        payloads.insert(packet.substr(4));
    }
    // A tone that goes on from packet to packet: 200 samples are 11 waves, so five packets are all
    // different.
    EXPECT_EQ(payloads.size(), 5U);
}

TEST(SimAudio, TheToneBeginsAtZeroAndRises) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    connect_strap(client);
    // 8000 * sin(2 pi 440 / 8000 * n) for n = 0, 1, 2: 0, 2710, 5099.
    EXPECT_EQ(read_exactly(audio.get(), 10),
              std::string("\x00\x01\x40\x01\x00\x00\x96\x0A\xEB\x13", 10));
}

TEST(SimAudio, WithoutALinkNothingIsStreamed) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    // Long enough for several packets: the step of a discovery is as long as a packet.
    client.send("AT#BK\r\n");
    EXPECT_EQ(client.events(5).back(), "BE00");
    EXPECT_FALSE(has_input_now(audio.get()));
    connect_strap(client);
    EXPECT_EQ(read_exactly(audio.get(), kVoicePacket).size(), kVoicePacket);
}

TEST(SimAudio, AClientThatDoesNotReadIsSparedAndTheFramingHolds) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    connect_strap(client);
    // Far more packets than the socket holds are due while this runs, and the server still answers.
    for (int i = 0; i < 100; ++i) {
        client.send("AT#BK\r\n");
        EXPECT_EQ(client.events(5).back(), "BE00");
    }
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(read_exactly(audio.get(), kVoicePacket).substr(0, 4),
                  std::string("\x00\x01\x40\x01", 4))
            << i;
    }
    sim.stop();
    EXPECT_EQ(sim.log().find(", 0 dropped,"), std::string::npos);
}

TEST(SimAudio, VoiceFromTheClientIsCounted) {
    RunningSim sim;
    TestClient client = sim.client();
    sim::UniqueFd audio = client.enable();
    const std::string voice(1000, 'v');
    ASSERT_EQ(send(audio.get(), voice.data(), voice.size(), MSG_NOSIGNAL), 1000);
    audio.reset();
    let_go(client);
    sim.stop();
    EXPECT_NE(sim.log().find("voice from the client begins\n"), std::string::npos);
    EXPECT_NE(sim.log().find("1000 voice bytes received\n"), std::string::npos);
}

TEST(SimAudio, AClientThatOnlySpeaksIsHeardToTheEnd) {
    RunningSim sim;
    TestClient client = sim.client();
    sim::UniqueFd audio = client.enable();
    ASSERT_EQ(shutdown(audio.get(), SHUT_RD), 0);
    connect_strap(client);
    // Packets that nobody takes are due while this runs.
    for (int i = 0; i < 20; ++i) {
        client.send("AT#BK\r\n");
        EXPECT_EQ(client.events(5).back(), "BE00");
    }
    ASSERT_EQ(send(audio.get(), "spoken", 6, MSG_NOSIGNAL), 6);
    audio.reset();
    let_go(client);
    sim.stop();
    EXPECT_NE(sim.log().find(" 6 voice bytes received\n"), std::string::npos) << sim.log();
}

TEST(SimAudio, ASecondClientGetsADescriptorOfItsOwn) {
    RunningSim sim;
    TestClient first = sim.client();
    const sim::UniqueFd audio = first.enable();
    connect_strap(first);
    first.close();
    TestClient second = sim.client();
    // Still on, still linked: the stream begins with the descriptor.
    const sim::UniqueFd own = second.enable();
    EXPECT_EQ(read_exactly(own.get(), kVoicePacket).size(), kVoicePacket);
    // The first client's stream has ended.
    while (read_exactly(audio.get(), kVoicePacket).size() == kVoicePacket) {
    }
    EXPECT_TRUE(has_input_now(audio.get()));
}

} // namespace
