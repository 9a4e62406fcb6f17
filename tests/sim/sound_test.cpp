// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "sound.h"

#include "running_sim.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

using namespace std::string_literals;
using sim::Sound;

const std::string kFormat = "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x80\x3E\0\0\x02\0\x10\0"s;

std::string riff(const std::string& parts) {
    return "RIFF" + std::string("\0\0\0\0", 4) + "WAVE" + parts;
}

class SimSound : public ::testing::Test {
protected:
    std::string file(const std::string& bytes) const {
        std::ofstream(dir_.file("sound.wav"), std::ios::binary) << bytes;
        return dir_.file("sound.wav");
    }

    void expect_refused(const std::string& bytes, const std::string& why) const {
        const std::string path = file(bytes);
        try {
            sim::read_wav(path);
            ADD_FAILURE() << why;
        } catch (const sim::SoundError& error) {
            EXPECT_EQ(error.what(), path + why);
        }
    }

    TemporaryDirectory dir_;
};

TEST_F(SimSound, AWavFileIsRead) {
    const Sound sound = sim::read_wav(file(riff(kFormat + "data\x04\0\0\0abcd"s)));
    EXPECT_EQ(sound.rate, 8000U);
    EXPECT_EQ(sound.channels, 1U);
    EXPECT_EQ(sound.samples, "abcd");
}

TEST_F(SimSound, OtherPartsAndHalfFramesAreSkipped) {
    const Sound sound =
        sim::read_wav(file(riff("LIST\x03\0\0\0xyz\0"s + kFormat + "data\x05\0\0\0abcde\0"s)));
    EXPECT_EQ(sound.samples, "abcd");
}

TEST_F(SimSound, AFileThatWasCutIsReadAsFarAsItGoes) {
    EXPECT_EQ(sim::read_wav(file(riff(kFormat + "data\xFF\xFF\xFF\xFF"s + "abcdef"))).samples,
              "abcdef");
}

TEST_F(SimSound, WhatIsNoSoundIsRefusedInOneLine) {
    expect_refused("", " is no WAV file; convert it to one with 16-bit samples");
    expect_refused("RIFF....AVI ", " is no WAV file; convert it to one with 16-bit samples");
    expect_refused(riff(""), " has no sound in it; it needs a \"fmt \" and a \"data\" part");
    expect_refused(riff(kFormat + "data\x01\0\0\0a"s),
                   " has no sound in it; it needs a \"fmt \" and a \"data\" part");
    std::string eight_bits = kFormat;
    eight_bits[22] = 8;
    expect_refused(riff(eight_bits + "data\x04\0\0\0abcd"s),
                   " has other samples than plain ones of 16 bits; convert it");
    EXPECT_THROW(sim::read_wav(dir_.file("none.wav")), sim::SoundError);
}

TEST_F(SimSound, PlaybackBeginsAgainAtTheEnd) {
    const Sound sound{8000, 1, "abcdef"};
    sim::Playback playback;
    EXPECT_EQ(playback.next(sound, 4), "abcd");
    EXPECT_EQ(playback.next(sound, 10), "efabcdefab");
    EXPECT_EQ(playback.next(sound, 2), "cd");
}

TEST_F(SimSound, TimeIsWholeFrames) {
    using std::chrono::milliseconds;
    EXPECT_EQ((Sound{8000, 1, {}}.bytes_in(milliseconds(20))), 320U);
    EXPECT_EQ((Sound{44100, 2, {}}.bytes_in(milliseconds(20))), 3528U);
    EXPECT_EQ((Sound{11025, 2, {}}.bytes_in(milliseconds(1))), 44U);
}

TEST_F(SimSound, WhatIsWrittenCanBeReadAtAnyTime) {
    sim::WavWriter writer(dir_.file("out.wav"), 16000, 2);
    writer.write("abcd", 4);
    EXPECT_EQ(sim::read_wav(dir_.file("out.wav")).samples, "abcd");
    writer.write("efghijkl", 8);
    const Sound sound = sim::read_wav(dir_.file("out.wav"));
    EXPECT_EQ(sound.samples, "abcdefghijkl");
    EXPECT_EQ(sound.rate, 16000U);
    EXPECT_EQ(sound.channels, 2U);
    EXPECT_EQ(content_of(dir_.file("out.wav")).size(), 44U + 12U);
}

TEST_F(SimSound, AFileThatCannotBeWrittenIsSaidAtOnce) {
    EXPECT_THROW(sim::WavWriter(dir_.file("none/out.wav"), 8000, 1), sim::SoundError);
}

TEST_F(SimSound, TheClientHearsTheWorldsVoiceAndItsOwnIsRecorded) {
    sim::World world = sim::built_in_world();
    world.voice = {8000, 1, "abcdefgh"};
    world.voice_recording = dir_.file("record.wav");
    RunningSim sim(world);
    TestClient client = sim.client();
    sim::UniqueFd audio = client.enable();
    client.send("AT#BMC64865617274\r\n");
    EXPECT_EQ(client.events(3).back(), "BH00C6486561727402");
    EXPECT_EQ(read_exactly(audio.get(), 16), "\x00\x01\x40\x01"s + "abcdefghabcd");
    ASSERT_EQ(send(audio.get(), "spoken", 6, MSG_NOSIGNAL), 6);
    audio.reset();
    while (content_of(world.voice_recording).size() < 44 + 6) {
        client.send("AT#PV\r\n");
        client.event();
    }
    sim.stop();
    EXPECT_EQ(sim::read_wav(world.voice_recording).samples, "spoken");
}

} // namespace
