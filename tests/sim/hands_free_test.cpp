// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_sim.h"

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

/// What the phone says of itself, last of all that it stands by.
const Strings kPhoneReport{"HVSim Phone 1", "HWvym", "HS01", "HD01", "HE00", "HF0004",
                           "HG0005",        "HI00",  "HJ00", "HK00", "HX05"};

sim::World world_with_caller(milliseconds after = milliseconds(0)) {
    sim::World world = sim::built_in_world();
    world.phone.ring_after = after;
    return world;
}

sim::Pace slow_calls() {
    sim::Pace pace = phone_pace();
    pace.call_step = hours(1);
    return pace;
}

class HandsFreeSim : public PhoneSim {
public:
    explicit HandsFreeSim(const sim::Pace& pace = phone_pace(),
                          const sim::World& world = sim::built_in_world())
        : PhoneSim(pace, world) {
        connect();
    }

    void connect() {
        send("HA" + kPhone);
        until("HX");
    }
};

/// With somebody on the line who is heard already.
class RingingSim : public HandsFreeSim {
public:
    explicit RingingSim(const sim::Pace& pace = phone_pace())
        : HandsFreeSim(pace, world_with_caller()) {
        EXPECT_EQ(until("HM"),
                  (Strings{"HJ01", "HX06", "HB01" + kPhone, "HB02" + kPhone, "HU", "HM+4930123456"}));
    }
};

TEST(SimHandsFree, ConnectingTellsTheLinkAndThenThePhone) {
    PhoneSim sim;
    sim.send("HA" + kPhone);
    Strings expected{"HA010000000000000000" + kPhone, "BI00" + kPhone + "00",
                     "HA020000000000000000" + kPhone, "HA03000000FD0000002F" + kPhone};
    expected.insert(expected.end(), kPhoneReport.begin(), kPhoneReport.end());
    EXPECT_EQ(sim.until("HX"), expected);
}

TEST(SimHandsFree, WhoConnectsAgainHearsEverythingAgain) {
    HandsFreeSim sim;
    Strings expected{"HA020000000000000000" + kPhone, "HA03000000FD0000002F" + kPhone};
    expected.insert(expected.end(), kPhoneReport.begin(), kPhoneReport.end());
    EXPECT_EQ(sim.answers("HA" + kPhone), expected);
}

TEST(SimHandsFree, TheConnectionOutlivesTheClient) {
    HandsFreeSim sim;
    sim.client.close();
    sim.client = static_cast<RunningSim&>(sim).client();
    EXPECT_EQ(sim.answers("HA" + kPhone).front(), "HA020000000000000000" + kPhone);
}

TEST(SimHandsFree, OnlyAPhoneThatIsNearCanBeConnected) {
    PhoneSim sim;
    EXPECT_EQ(sim.answers("HA" + kSpeaker), Strings{"HA000000000000000000" + kSpeaker});
    EXPECT_EQ(sim.answers("HA999999999999"), Strings{"HA000000000000000000999999999999"});
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("HA" + kPhone), Strings{"HA000000000000000000" + kPhone});
    sim.stop();
    for (const char* reason : {"no hands-free connection to 112233445566: the device does not offer it",
                               "no hands-free connection to 999999999999: no such device is near",
                               "no hands-free connection to 2A416E6E6101: the adapter is off"}) {
        EXPECT_NE(sim.log().find(reason), std::string::npos) << reason;
    }
}

TEST(SimHandsFree, ARefusedSecondDeviceDoesNotDisturbTheFirst) {
    RingingSim sim;
    EXPECT_EQ(sim.answers("HA" + kSpeaker), Strings{"HA000000000000000000" + kSpeaker});
    EXPECT_EQ(sim.answers("HB" + kSpeaker), Strings{"HA000000000000000000" + kSpeaker});
    EXPECT_EQ(sim.answers("HJ0700"), (Strings{"HQ0005", "HI01", "HJ00", "HX08"}));
}

TEST(SimHandsFree, DisconnectingTakesTheCallAudioAlong) {
    RingingSim sim;
    const Strings down{"HB00" + kPhone, "HA000000000000000000" + kPhone};
    EXPECT_EQ(sim.answers("HB" + kPhone), down);
    EXPECT_EQ(sim.answers("HB" + kPhone), Strings{"HA000000000000000000" + kPhone});
}

TEST(SimHandsFree, SwitchingOffDisconnectsBeforeTheLinkDrops) {
    HandsFreeSim sim;
    EXPECT_EQ(sim.answers("PC"),
              (Strings{"HA000000000000000000" + kPhone, "BI00" + kPhone + "01", "PA00"}));
}

TEST(SimHandsFree, ForgettingThePhoneDisconnectsIt) {
    HandsFreeSim sim;
    EXPECT_EQ(sim.answers("BO" + kPhone), (Strings{"HA000000000000000000" + kPhone,
                                                   "BI00" + kPhone + "01", "BH00" + kPhone + "00"}));
}

TEST(SimHandsFree, ADialledCallIsAnsweredAndEnded) {
    HandsFreeSim sim;
    sim.send("HH+4930#1*2");
    EXPECT_EQ(sim.until("HX08"), (Strings{"HQ0003", "HJ02", "HX07", "HB01" + kPhone, "HB02" + kPhone,
                                          "HJ03", "HI01", "HJ00", "HX08"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01000000+4930#1*2", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0800"), (Strings{"HQ0005", "HI00", "HX05", "HB00" + kPhone}));
    EXPECT_EQ(sim.answers("HK"), Strings{"HQ0015"});
}

TEST(SimHandsFree, ACallIsEndedWhileItDials) {
    HandsFreeSim sim(slow_calls());
    EXPECT_EQ(sim.answers("HH123"),
              (Strings{"HQ0003", "HJ02", "HX07", "HB01" + kPhone, "HB02" + kPhone}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01000200123", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0801"), (Strings{"HQ0005", "HJ00", "HX05", "HB00" + kPhone}));
}

TEST(SimHandsFree, ABusyNumberIsNotReached) {
    sim::World world = sim::built_in_world();
    world.phone.far_end = sim::FarEnd::IsBusy;
    HandsFreeSim sim(phone_pace(), world);
    sim.send("HH123");
    EXPECT_EQ(sim.until("HB00"), (Strings{"HQ0003", "HJ02", "HX07", "HB01" + kPhone, "HB02" + kPhone,
                                          "HJ00", "HX05", "HB00" + kPhone}));
    EXPECT_EQ(sim.answers("HK"), Strings{"HQ0015"});
}

TEST(SimHandsFree, WhereNobodyAnswersItRingsOn) {
    sim::World world = sim::built_in_world();
    world.phone.far_end = sim::FarEnd::RingsOn;
    HandsFreeSim sim(phone_pace(), world);
    sim.send("HH123");
    EXPECT_EQ(sim.until("HJ03"),
              (Strings{"HQ0003", "HJ02", "HX07", "HB01" + kPhone, "HB02" + kPhone, "HJ03"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01000300123", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0800"), (Strings{"HQ0005", "HJ00", "HX05", "HB00" + kPhone}));
}

TEST(SimHandsFree, NumbersComeFromTheMemoryAndTheLastCall) {
    HandsFreeSim sim(slow_calls());
    EXPECT_EQ(sim.answers("HH"), Strings{"HQ0103"}); // nobody was called yet
    EXPECT_EQ(sim.answers("HI02")[0], "HQ0004");
    EXPECT_EQ(sim.answers("HK")[0], "HO01000200+491711112223");
    EXPECT_EQ(sim.answers("HJ0800")[0], "HQ0005");
    EXPECT_EQ(sim.answers("HH")[0], "HQ0003");
    EXPECT_EQ(sim.answers("HK")[0], "HO01000200+491711112223");
}

TEST(SimHandsFree, WhatCannotBeDialledIsRefused) {
    HandsFreeSim sim(slow_calls());
    EXPECT_EQ(sim.answers("HHhello"), Strings{"HQ0103"});
    EXPECT_EQ(sim.answers("HI00"), Strings{"HQ0104"});
    EXPECT_EQ(sim.answers("HI03"), Strings{"HQ0104"});
    EXPECT_EQ(sim.answers("HH1")[0], "HQ0003");
    EXPECT_EQ(sim.answers("HH2"), Strings{"HQ0103"}); // one at a time
}

TEST(SimHandsFree, AnIncomingCallIsAnsweredHeldResumedAndEnded) {
    RingingSim sim;
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010400+4930123456", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0700"), (Strings{"HQ0005", "HI01", "HJ00", "HX08"}));
    EXPECT_EQ(sim.answers("HJ0200"), (Strings{"HQ0005", "HK02", "HX0A"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010100+4930123456", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0200"), (Strings{"HQ0005", "HK00", "HX08"}));
    EXPECT_EQ(sim.answers("HJ0501"), (Strings{"HQ0005", "HI00", "HX05", "HB00" + kPhone}));
}

TEST(SimHandsFree, AnIncomingCallIsRejected) {
    RingingSim sim;
    EXPECT_EQ(sim.answers("HJ0800"), (Strings{"HQ0005", "HJ00", "HX05", "HB00" + kPhone}));
}

TEST(SimHandsFree, ThePhoneRingsAgainAndAgain) {
    sim::Pace pace = phone_pace();
    pace.ring_period = milliseconds(1);
    RingingSim sim(pace);
    EXPECT_EQ(sim.client.events(4), (Strings{"HU", "HM+4930123456", "HU", "HM+4930123456"}));
    sim.send("HJ0700");
    sim.until("HX08");
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010000+4930123456", "HQ0015"}));
}

TEST(SimHandsFree, AnUnansweredCallIsMissed) {
    sim::Pace pace = phone_pace();
    pace.ring_timeout = milliseconds(1);
    RingingSim sim(pace);
    EXPECT_EQ(sim.client.events(3), (Strings{"HJ00", "HX05", "HB00" + kPhone}));
    EXPECT_EQ(sim.answers("HK"), Strings{"HQ0015"});
}

TEST(SimHandsFree, WithoutInBandRingTheAudioComesWithTheAnswer) {
    sim::World world = world_with_caller();
    world.phone.in_band_ring = false;
    HandsFreeSim sim(phone_pace(), world);
    EXPECT_EQ(sim.until("HM"), (Strings{"HJ01", "HX06", "HU", "HM+4930123456"}));
    EXPECT_EQ(sim.answers("HJ0700"),
              (Strings{"HQ0005", "HI01", "HJ00", "HX08", "HB01" + kPhone, "HB02" + kPhone}));
}

/// In a call, and a second caller waits: the caller comes once for each connection, and calls stay when
/// the connection goes.
class WaitingSim : public RingingSim {
public:
    WaitingSim() {
        EXPECT_EQ(answers("HJ0700")[0], "HQ0005");
        EXPECT_EQ(answers("HB" + kPhone).back(), "HA000000000000000000" + kPhone);
        connect();
        EXPECT_EQ(until("HN"),
                  (Strings{"HB01" + kPhone, "HB02" + kPhone, "HJ01", "HX09", "HN+4930123456"}));
    }
};

TEST(SimHandsFree, AWaitingCallIsAcceptedSwappedJoinedAndParted) {
    WaitingSim sim;
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010000+4930123456", "HO02010500+4930123456", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0200"), (Strings{"HQ0005", "HJ00", "HK01"}));
    // The indicator stays, and is told all the same.
    EXPECT_EQ(sim.answers("HJ0200"), (Strings{"HQ0005", "HK01"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010000+4930123456", "HO02010100+4930123456", "HQ0015"}));
    EXPECT_EQ(sim.answers("HJ0300"), (Strings{"HQ0005", "HK00", "HX08"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010001+4930123456", "HO02010001+4930123456", "HQ0015"}));
    // No indicator moves, so the state is told again.
    EXPECT_EQ(sim.answers("HJ0502"), (Strings{"HQ0005", "HX08"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO01010000+4930123456", "HQ0015"}));
}

TEST(SimHandsFree, AWaitingCallReplacesTheConversation) {
    WaitingSim sim;
    EXPECT_EQ(sim.answers("HJ0100"), (Strings{"HQ0005", "HJ00", "HX08"}));
    EXPECT_EQ(sim.answers("HK"), (Strings{"HO02010000+4930123456", "HQ0015"}));
}

TEST(SimHandsFree, AWaitingCallIsRejected) {
    WaitingSim sim;
    EXPECT_EQ(sim.answers("HJ0000"), (Strings{"HQ0005", "HJ00", "HX08"}));
}

TEST(SimHandsFree, WhoWaitedRingsWhenTheConversationEnds) {
    WaitingSim sim;
    EXPECT_EQ(sim.answers("HJ0800"), (Strings{"HQ0005", "HI00", "HX06", "HU", "HM+4930123456"}));
}

TEST(SimHandsFree, ActionsThatDoNotFitAreCompletedAsFailed) {
    HandsFreeSim sim;
    for (const char* action :
         {"00", "01", "02", "03", "04", "05", "06", "07", "08", "09", "0A", "0B", "0C", "FF"}) {
        EXPECT_EQ(sim.answers(std::string("HJ") + action + "00"), Strings{"HQ0105"}) << action;
    }
}

TEST(SimHandsFree, WithoutAConnectionThePhoneIsNotReached) {
    PhoneSim sim;
    const std::vector<std::pair<std::string, std::string>> cases{
        {"HE", "HQ0101"},   {"HF", "HQ0101"},     {"HG00000F", "HQ0102"}, {"HH1", "HQ0103"},
        {"HI01", "HQ0104"}, {"HJ0800", "HQ0105"}, {"HK", "HQ0115"},       {"HL", "HQ0106"},
        {"HM", "HQ0107"},   {"HN31", "HQ0108"},   {"HO", "HQ0109"},       {"HP000100020003x", "HQ010A"},
    };
    for (const auto& [command, answer] : cases) {
        EXPECT_EQ(sim.answers(command), Strings{answer}) << command;
    }
    EXPECT_EQ(sim.answers("HC" + kPhone), Strings{"HB00" + kPhone});
    EXPECT_EQ(sim.answers("HD" + kPhone), Strings{"HB00" + kPhone});
}

TEST(SimHandsFree, TheVolumeIsEchoed) {
    HandsFreeSim sim;
    EXPECT_EQ(sim.answers("HG01000F"), (Strings{"HQ0002", "HP01000F"}));
    EXPECT_EQ(sim.answers("HG000000"), (Strings{"HQ0002", "HP000000"}));
    EXPECT_EQ(sim.answers("HG000010"), Strings{"HQ0102"});
    EXPECT_EQ(sim.answers("HG020001"), Strings{"HQ0102"});
}

TEST(SimHandsFree, ThePhoneAnswersQuestions) {
    HandsFreeSim sim;
    EXPECT_EQ(sim.answers("HL"), (Strings{"HHSim Mobile", "HQ0006"}));
    EXPECT_EQ(sim.answers("HM"), (Strings{"HR01+491701234567", "HQ0007"}));
    EXPECT_EQ(sim.answers("HO"), (Strings{"HT+4930111222", "HQ0009"}));
    EXPECT_EQ(sim.answers("HP0001FFFF0003hello"), Strings{"HQ010A"});
    sim.stop();
    EXPECT_NE(sim.log().find("the phone does not know command 1 (65535, 3, \"hello\")\n"),
              std::string::npos);
}

TEST(SimHandsFree, TonesNeedACall) {
    HandsFreeSim sim;
    EXPECT_EQ(sim.answers("HN35"), Strings{"HQ0108"});
    sim.send("HH1");
    sim.until("HX08");
    EXPECT_EQ(sim.answers("HN35"), Strings{"HQ0008"});
    EXPECT_EQ(sim.answers("HN23"), Strings{"HQ0008"});
    EXPECT_EQ(sim.answers("HN00"), Strings{"HQ0108"});
    sim.stop();
    EXPECT_NE(sim.log().find("   tone 5\n"), std::string::npos);
    EXPECT_NE(sim.log().find("   tone #\n"), std::string::npos);
}

TEST(SimHandsFree, CallAudioComesAndGoesOnRequest) {
    RingingSim sim;
    EXPECT_EQ(sim.answers("HC" + kPhone), Strings{"HB02" + kPhone}); // the ringing is heard already
    EXPECT_EQ(sim.answers("HD" + kPhone), Strings{"HB00" + kPhone});
    EXPECT_EQ(sim.answers("HD" + kPhone), Strings{"HB00" + kPhone});
    // Answering does not bring back what was moved away.
    EXPECT_EQ(sim.answers("HJ0700"), (Strings{"HQ0005", "HI01", "HJ00", "HX08"}));
    EXPECT_EQ(sim.answers("HC" + kPhone), (Strings{"HB01" + kPhone, "HB02" + kPhone}));
}

TEST(SimHandsFree, VoiceRecognitionOpensTheAudio) {
    HandsFreeSim sim;
    EXPECT_EQ(sim.answers("HF"), Strings{"HQ0101"}); // it was not on
    EXPECT_EQ(sim.answers("HE"), (Strings{"HQ0001", "HC01", "HB01" + kPhone, "HB02" + kPhone}));
    EXPECT_EQ(sim.answers("HE"), Strings{"HQ0101"});
    EXPECT_EQ(sim.answers("HF"), (Strings{"HQ0001", "HC00", "HB00" + kPhone}));
}

TEST(SimHandsFree, ACallEndsVoiceRecognition) {
    HandsFreeSim sim(slow_calls());
    EXPECT_EQ(sim.answers("HE")[0], "HQ0001");
    EXPECT_EQ(sim.answers("HH1"), (Strings{"HQ0003", "HJ02", "HX07", "HC00"}));
    EXPECT_EQ(sim.answers("HE"), Strings{"HQ0101"});
}

TEST(SimHandsFree, LocalSwitchesAreLogged) {
    PhoneSim sim;
    EXPECT_EQ(sim.answers("HQ01"), Strings{});
    EXPECT_EQ(sim.answers("HR01"), Strings{});
    EXPECT_EQ(sim.answers("HR00"), Strings{});
    sim.stop();
    for (const char* line : {"call audio hardware on\n", "microphone muted\n", "microphone open\n"}) {
        EXPECT_NE(sim.log().find(line), std::string::npos) << line;
    }
}

} // namespace
