// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_sim.h"

namespace {

using std::chrono::milliseconds;

/// A NUL inside a block.
const std::string kNul = "\xDC\xDD";

/// What is told of the first, the second, the third and the last track: UID, title, artist, album,
/// time.
const std::string kTrack1 = "RJ" + kPhone + "004A5012370000000000000001" + kNul + "First Light" + kNul +
                            "The Simulators" + kNul + "Radio Silence" + kNul + "8000" + kNul;
const std::string kTrack2 = "RJ" + kPhone + "004D5012370000000000000002" + kNul + "Carrier Wave" +
                            kNul + "The Simulators" + kNul + "Radio Silence" + kNul + "187000" + kNul;
const std::string kTrack3 = "RJ" + kPhone + "0062" + "5012370000000000000003" + kNul +
                            "Gr\xC3\xBC\xC3\x9F"
                            "e aus dem \xC3\x84ther" +
                            kNul + "Frau M\xC3\xBCller & das Echo" + kNul +
                            "\xC3\x9C"
                            "berreichweite" +
                            kNul + "204000" + kNul;

const std::string kTrack4 = "RJ" + kPhone + "0047" + "5012370000000000000004" + kNul +
                            "\xE5\xA4\x9C\xE3\x81\xAE\xE9\x9B\xBB\xE6\xB3\xA2" + kNul +
                            "\xE7\x9F\xAD\xE6\xB3\xA2" + kNul +
                            "\xC3\x9C"
                            "berreichweite" +
                            kNul + "241000" + kNul;

class AvrcpSim : public PhoneSim {
public:
    explicit AvrcpSim(const sim::Pace& pace = phone_pace(),
                      const sim::World& world = sim::built_in_world())
        : PhoneSim(pace, world) {
        send("AA" + kPhone);
        until("RI");
    }

    /// Presses a key.
    Strings press(const std::string& key) { return answers("RC" + kPhone + key + "00"); }
};

std::string position(const std::string& length, const std::string& at) {
    return "RK" + kPhone + length + at;
}

TEST(SimAvrcp, TheRemoteControlComesWithTheStream) {
    PhoneSim sim;
    sim.send("AA" + kPhone);
    sim.until("AC");
    EXPECT_EQ(sim.until("RI"),
              (Strings{"RC01" + kPhone, "RD" + kPhone + "CF00001003", "RL" + kPhone + "00", kTrack1,
                       "RH" + kPhone + "4001", "RI" + kPhone + "02"}));
}

TEST(SimAvrcp, TheRemoteControlAloneIsConnectedAndDisconnected) {
    PhoneSim sim;
    sim.send("RA" + kPhone);
    EXPECT_EQ(sim.until("RI").at(1), "RC01" + kPhone);
    EXPECT_EQ(sim.answers("RB" + kPhone), Strings{"RC00" + kPhone});
    EXPECT_EQ(sim.answers("RC" + kPhone + "4400"), Strings{});
    EXPECT_EQ(sim.answers("RA" + kSpeaker), Strings{"RC00" + kSpeaker});
}

TEST(SimAvrcp, CommandsWithoutAConnectionAreRefused) {
    PhoneSim sim;
    const std::string a = kPhone;
    const Strings commands{"RC" + a + "4400",
                           "RD" + a + "0000",
                           "RE" + a + "000000",
                           "RF" + a + "000000",
                           "RG" + a + "4001",
                           "RH" + a + "0D4001",
                           "RI" + a + "0000000000000001",
                           "RJ" + a + "000000",
                           "RK" + a,
                           "RL" + a + "030000",
                           "RM" + a + "0001",
                           "RN" + a,
                           "RO" + a + "0000000000000001",
                           "RP" + a + "0001",
                           "RQ" + a + "0001",
                           "RV" + a,
                           "RZA" + a + "00001003",
                           "RZB" + a + "000000000000",
                           "RZC" + a + "00000000",
                           "RZD" + a + "000000000000000000000000"};
    for (const std::string& command : commands) {
        EXPECT_EQ(sim.answers(command), Strings{}) << command;
    }
    sim.stop();
    size_t refusals = 0;
    for (size_t at = 0; (at = sim.log().find("refused: no remote control", at)) != std::string::npos;
         ++at) {
        ++refusals;
    }
    EXPECT_EQ(refusals, commands.size());
    EXPECT_EQ(sim.log().find("vym-sim:"), std::string::npos);
}

TEST(SimAvrcp, KeysAreAnsweredAndWorkWhenPressed) {
    AvrcpSim sim;
    EXPECT_EQ(sim.press("44"), (Strings{"RA4400", "AB" + kPhone + "02", "RL" + kPhone + "01"}));
    EXPECT_EQ(sim.answers("RC" + kPhone + "4401"), Strings{"RA4401"});
    EXPECT_EQ(sim.press("44"), Strings{"RA4400"}); // it plays already
    EXPECT_EQ(sim.press("4B"), (Strings{"RA4B00", kTrack2, position("0002DA78", "00000000")}));
    EXPECT_EQ(sim.press("4C"), (Strings{"RA4C00", kTrack1, position("00001F40", "00000000")}));
    EXPECT_EQ(sim.press("45"), (Strings{"RA4500", "AB" + kPhone + "01", "RL" + kPhone + "00"}));
    EXPECT_EQ(sim.press("46"), Strings{"RA4600"}); // nothing to pause
    EXPECT_EQ(sim.press("7F"), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("the player has no key 127\n"), std::string::npos);
}

TEST(SimAvrcp, ForwardAndBackwardGoAroundTheEnds) {
    AvrcpSim sim;
    EXPECT_EQ(sim.press("4C"), (Strings{"RA4C00", kTrack4, position("0003AD68", "00000000")}));
    EXPECT_EQ(sim.press("4B")[1], kTrack1);
}

TEST(SimAvrcp, GroupKeysGoToTheFirstTrackOfAnAlbum) {
    AvrcpSim sim;
    EXPECT_EQ(sim.press("4B")[1], kTrack2);
    EXPECT_EQ(sim.answers("RD" + kPhone + "0000"),
              (Strings{"RB0000", kTrack3, position("00031CE0", "00000000")}));
    EXPECT_EQ(sim.answers("RD" + kPhone + "0001"), Strings{"RB0001"});
    EXPECT_EQ(sim.answers("RD" + kPhone + "0100"),
              (Strings{"RB0100", kTrack1, position("00001F40", "00000000")}));
    EXPECT_EQ(sim.answers("RD" + kPhone + "0200"), Strings{});
}

TEST(SimAvrcp, ThePositionIsToldEachSecondAndTheNextTrackFollows) {
    sim::Pace pace = phone_pace();
    pace.playback_second = milliseconds(1);
    AvrcpSim sim(pace);
    sim.send("RC" + kPhone + "4400");
    sim.until("RL");
    EXPECT_EQ(sim.client.events(9),
              (Strings{position("00001F40", "000003E8"), position("00001F40", "000007D0"),
                       position("00001F40", "00000BB8"), position("00001F40", "00000FA0"),
                       position("00001F40", "00001388"), position("00001F40", "00001770"),
                       position("00001F40", "00001B58"), kTrack2, position("0002DA78", "00000000")}));
    EXPECT_EQ(sim.client.event(), position("0002DA78", "000003E8"));
}

TEST(SimAvrcp, TheLastTrackEndsThePlayingUnlessItIsRepeated) {
    sim::Pace pace = phone_pace();
    pace.playback_second = milliseconds(1);
    sim::World world = sim::built_in_world();
    world.phone.tracks.resize(1);
    world.phone.tracks[0].length_ms = 2000;
    AvrcpSim sim(pace, world);
    sim.send("RC" + kPhone + "4400");
    sim.until("RL");
    EXPECT_EQ(sim.client.events(3),
              (Strings{position("000007D0", "000003E8"), "AB" + kPhone + "01", "RL" + kPhone + "00"}));
    EXPECT_EQ(sim.client.event().substr(0, 2), "RJ");
    EXPECT_EQ(sim.client.event(), position("000007D0", "00000000"));
    EXPECT_EQ(sim.answers("RF" + kPhone + "010002\x02\x02")[0], "RE" + kPhone + "01");
    sim.send("RC" + kPhone + "4400");
    sim.until("RL");
    EXPECT_EQ(sim.client.events(4),
              (Strings{position("000007D0", "000003E8"), position("000007D0", "00000000"),
                       position("000007D0", "000003E8"), position("000007D0", "00000000")}));
}

TEST(SimAvrcp, HeldKeysMoveFastAndGoBackToWhatWasBefore) {
    sim::Pace pace = phone_pace();
    pace.playback_second = milliseconds(1);
    AvrcpSim sim(pace);
    EXPECT_EQ(sim.press("4B")[1], kTrack2);
    sim.send("RC" + kPhone + "4900");
    EXPECT_EQ(sim.until("RK"), (Strings{"RA4900", "AB" + kPhone + "02", "RL" + kPhone + "03",
                                        position("0002DA78", "00002710")}));
    EXPECT_EQ(sim.client.event(), position("0002DA78", "00004E20"));
    sim.send("RC" + kPhone + "4800");
    EXPECT_EQ(sim.until("RL").back(), "RL" + kPhone + "04");
    // Back to the beginning, and not beyond it.
    EXPECT_EQ(sim.until(position("0002DA78", "00000000")).back(), position("0002DA78", "00000000"));
    EXPECT_EQ(sim.client.event(), position("0002DA78", "00000000"));
    sim.send("RC" + kPhone + "4801");
    EXPECT_EQ(sim.until("RL").back(), "RL" + kPhone + "00");
}

TEST(SimAvrcp, WithoutTracksThereIsNothingToPlay) {
    sim::World world = sim::built_in_world();
    world.phone.tracks.clear();
    PhoneSim sim(phone_pace(), world);
    sim.send("AA" + kPhone);
    EXPECT_EQ(sim.until("RJ").back(), "RJ" + kPhone + "00010");
    sim.until("RI");
    for (const char* key : {"44", "45", "46", "48", "49", "4B", "4C"}) {
        EXPECT_EQ(sim.answers("RC" + kPhone + key + "00"), Strings{std::string("RA") + key + "00"});
    }
    EXPECT_EQ(sim.answers("RD" + kPhone + "0000"), Strings{"RB0000"});
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000000000"), Strings{"RJ" + kPhone + "00010"});
}

TEST(SimAvrcp, SettingsAreReadAndChanged) {
    AvrcpSim sim;
    const Strings all{"RF" + kPhone + "0005\x02\x03\x01\x02\x03",
                      "RF" + kPhone + "0004\x03\x02\x01\x02",
                      "RG" + kPhone + "0005\x02\x02\x03\x01\x01"};
    EXPECT_EQ(sim.answers("RE" + kPhone + "000000"), all);
    EXPECT_EQ(sim.answers("RE" + kPhone + "020002\x02\x03"), all);
    // The second one is not known.
    EXPECT_EQ(sim.answers("RE" + kPhone + "020002\x03\x01"),
              (Strings{"RF" + kPhone + "0004\x03\x02\x01\x02", "RG" + kPhone + "0003\x01\x03\x01"}));
    EXPECT_EQ(sim.answers("RF" + kPhone + "020004\x02\x03\x03\x02"),
              (Strings{"RE" + kPhone + "01", "RG" + kPhone + "0005\x02\x02\x03\x03\x02"}));
    EXPECT_EQ(sim.answers("RF" + kPhone + "010002\x02\x03"), Strings{"RE" + kPhone + "01"}); // as it is
    EXPECT_EQ(sim.answers("RF" + kPhone + "010002\x02\x04"), Strings{"RE" + kPhone + "00"});
    EXPECT_EQ(sim.answers("RF" + kPhone + "010002\x01\x01"), Strings{"RE" + kPhone + "00"});
    EXPECT_EQ(sim.answers("RE" + kPhone + "010001\x02").back(), "RG" + kPhone + "0003\x01\x02\x03");
    EXPECT_EQ(sim.answers("RF" + kPhone + "020002\x02\x03"), Strings{});
    sim.stop();
    EXPECT_NE(
        sim.log().find("malformed command, ignored: avrcp set_player_app_setting: settings: the count"),
        std::string::npos);
}

TEST(SimAvrcp, VolumeAnswersAreComparedWithTheirLabels) {
    AvrcpSim sim;
    EXPECT_EQ(sim.answers("RG" + kPhone + "4001"), Strings{});
    EXPECT_EQ(sim.answers("RG" + kPhone + "4101"), Strings{});
    EXPECT_EQ(sim.answers("RH" + kPhone + "0F4202"), Strings{});
    EXPECT_EQ(sim.answers("RH" + kPhone + "0D4300"), Strings{});
    sim.stop();
    for (const char* line :
         {"   volume 64 set\n", "   volume 65 set, with a label that nobody waits for\n",
          "   volume 66 notified with type 15\n",
          "   volume 67 notified with type 13, with a label that nobody waits for\n"}) {
        EXPECT_NE(sim.log().find(line), std::string::npos) << line;
    }
}

TEST(SimAvrcp, ThePlayStatusIsRead) {
    AvrcpSim sim;
    EXPECT_EQ(sim.answers("RN" + kPhone), Strings{"RL" + kPhone + "00"});
}

TEST(SimAvrcp, AttributesAreReadByNumber) {
    AvrcpSim sim;
    EXPECT_EQ(sim.press("4B")[0], "RA4B00");
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000020002\x07\x01"),
              Strings{"RJ" + kPhone +
                      "0019271"
                      "187000" +
                      kNul + "Carrier Wave" + kNul});
    // Four bytes each, the lowest first.
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000010007\x02" + zeros(3)), Strings{"RJ" + kPhone +
                                                                                   "0012"
                                                                                   "12The Simulators" +
                                                                                   kNul});
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000000000"),
              Strings{"RJ" + kPhone +
                      "004F71234567"
                      "Carrier Wave" +
                      kNul + "The Simulators" + kNul + "Radio Silence" + kNul + "2" + kNul + "4" +
                      kNul + "Electronic" + kNul + "187000" + kNul});
    // What is not there is left out.
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000010001\x42"), Strings{"RJ" + kPhone + "00010"});
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000020003\x01\x02\x03"), Strings{});
}

TEST(SimAvrcp, PicturesAreWrittenToFiles) {
    AvrcpSim sim;
    const TemporaryDirectory dir;
    const std::string path = dir.file("cover.jpg");
    ASSERT_LT(path.size(), 256U);
    const std::string digits = "0123456789ABCDEF";
    const std::string block =
        std::string("00") + digits[path.size() / 16] + digits[path.size() % 16] + path;
    const std::string get = "RZC" + kPhone + "00070000001" + block;
    EXPECT_EQ(sim.answers(get), Strings{"RWF" + kPhone + "01"}); // not connected
    EXPECT_EQ(sim.answers("RZA" + kPhone + "00001005"), Strings{"RWE" + kPhone + "01"});
    EXPECT_EQ(sim.answers("RZA" + kPhone + "00001003"), Strings{"RWE" + kPhone + "00"});
    EXPECT_EQ(sim.answers("RZB" + kPhone + "000000010001\x08"), Strings{"RJ" + kPhone +
                                                                        "000B"
                                                                        "180000001" +
                                                                        kNul});
    EXPECT_EQ(sim.answers(get), Strings{"RWF" + kPhone + "00"});
    const std::string thumbnail = content_of(path);
    EXPECT_EQ(thumbnail.size(), 172U);
    EXPECT_EQ(thumbnail.substr(0, 4), "\xFF\xD8\xFF\xE0");
    EXPECT_EQ(thumbnail.substr(170), "\xFF\xD9");
    EXPECT_EQ(sim.answers("RZC" + kPhone + "00070000005" + block), Strings{"RWF" + kPhone + "01"});
    EXPECT_EQ(sim.answers("RZC" + kPhone + "000700000010008/no/such"), Strings{"RWF" + kPhone + "01"});
    const std::string other = "0007"
                              "0000002"
                              "0004JPEG"
                              "0007"
                              "200*200" +
                              block;
    EXPECT_EQ(sim.answers("RZD" + kPhone + "000000AB" + other),
              Strings{"RWG" + kPhone + "01"}); // too big
    EXPECT_EQ(sim.answers("RZD" + kPhone + "000000AC" + other), Strings{"RWG" + kPhone + "00"});
    EXPECT_EQ(content_of(path), thumbnail);
    EXPECT_EQ(sim.answers("RZD" + kPhone +
                          "00000000"
                          "00070000002"
                          "0003GIF"
                          "0000" +
                          block),
              Strings{"RWG" + kPhone + "01"});
}

} // namespace
