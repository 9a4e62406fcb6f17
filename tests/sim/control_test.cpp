// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The control language and the wire: what each verb makes the client hear.
#include "control_client.h"
#include "low_energy_sim.h"

#include <algorithm>
#include <array>
#include <set>
#include <sstream>

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

const std::string kLaptop = "2E4C70746F70";

sim::Pace still_pace() {
    sim::Pace pace = low_energy_pace();
    pace.call_step = hours(1);
    pace.serial_dial = hours(1);
    pace.serial_greeting = milliseconds(1);
    pace.serial_line = hours(1);
    pace.hid_step = hours(1);
    pace.hid_interrupt = hours(1);
    return pace;
}

class ControlSim : public PhoneSim {
public:
    explicit ControlSim(const sim::Pace& pace = still_pace()) : PhoneSim(pace), desk(dir()) {}

    /// What a line makes the client hear.
    Strings heard(const std::string& line) {
        EXPECT_EQ(desk.order(line), "ok") << line;
        return client.events_until_version();
    }

    void connect_hands_free() {
        send("HA" + kPhone);
        until("HX");
    }
    void connect_music() {
        send("AA" + kPhone);
        until("RI");
    }

    ControlClient desk;
};

/// With a call that has been answered.
class TalkingSim : public ControlSim {
public:
    TalkingSim() {
        connect_hands_free();
        EXPECT_EQ(heard("phone call +4930123456"),
                  (Strings{"HJ01", "HX06", "HB01" + kPhone, "HB02" + kPhone, "HU", "HM+4930123456"}));
        EXPECT_EQ(heard("phone answer"), (Strings{"HI01", "HJ00", "HX08"}));
    }
};

// The phone.

TEST(ControlPhone, SomebodyCallsAndHangsUp) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.heard("phone call *555#"),
              (Strings{"HJ01", "HX06", "HB01" + kPhone, "HB02" + kPhone, "HU", "HM*555#"}));
    EXPECT_EQ(sim.desk.order("phone call 123"),
              "error: the line is busy: another call is being set up");
    EXPECT_EQ(sim.heard("phone hang-up"), (Strings{"HJ00", "HX05", "HB00" + kPhone}));
    EXPECT_EQ(sim.desk.order("phone hang-up"), "error: there is no call");
}

TEST(ControlPhone, TheFarEndAnswersAnOutgoingCall) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.answers("HH123"),
              (Strings{"HQ0003", "HJ02", "HX07", "HB01" + kPhone, "HB02" + kPhone}));
    EXPECT_EQ(sim.heard("phone alert"), Strings{"HJ03"});
    EXPECT_EQ(sim.desk.order("phone alert"), "error: no call is being dialled");
    EXPECT_EQ(sim.heard("phone answer"), (Strings{"HI01", "HJ00", "HX08"}));
    EXPECT_EQ(sim.desk.order("phone answer"), "error: nobody is rung up");
}

TEST(ControlPhone, FromDialingToTheAnswerNoStepIsLeftOut) {
    ControlSim sim;
    sim.connect_hands_free();
    sim.answers("HH123");
    EXPECT_EQ(sim.heard("phone answer"), (Strings{"HJ03", "HI01", "HJ00", "HX08"}));
}

TEST(ControlPhone, CallsAreHeldSwappedJoinedAndEnded) {
    TalkingSim sim;
    EXPECT_EQ(sim.desk.order("phone swap"), "error: swapping needs a conversation and a call on hold");
    EXPECT_EQ(sim.heard("phone call 222"), (Strings{"HJ01", "HX09", "HN222"}));
    EXPECT_EQ(sim.heard("phone hold"), (Strings{"HJ00", "HK01"}));
    EXPECT_EQ(sim.heard("phone swap"), Strings{"HK01"});
    EXPECT_EQ(sim.heard("phone join"), (Strings{"HK00", "HX08"}));
    EXPECT_EQ(sim.desk.order("phone hang-up 3"), "error: there is no call 3");
    EXPECT_EQ(sim.heard("phone hang-up 1"), Strings{"HX08"});
    EXPECT_EQ(sim.heard("phone reject"), (Strings{"HI00", "HX05", "HB00" + kPhone}));
}

TEST(ControlPhone, AnIncomingCallIsHeldInsteadOfAnswered) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.desk.order("phone response-and-hold"), "error: there is no incoming call");
    sim.heard("phone call 222");
    EXPECT_EQ(sim.heard("phone response-and-hold"), (Strings{"HL00", "HI01", "HJ00"}));
    EXPECT_EQ(sim.heard("phone hang-up"), (Strings{"HL02", "HI00", "HX05", "HB00" + kPhone}));
}

TEST(ControlPhone, ItsStateIsToldAndRemembered) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.heard("phone battery 3"), Strings{"HG0003"});
    EXPECT_EQ(sim.heard("phone signal 0"), Strings{"HF0000"});
    EXPECT_EQ(sim.heard("phone roaming on"), Strings{"HE01"});
    EXPECT_EQ(sim.heard("phone operator \"Far Away\""), Strings{"HHFar Away"});
    EXPECT_EQ(sim.answers("HL"), (Strings{"HHFar Away", "HQ0006"}));
    EXPECT_EQ(sim.heard("phone in-band-ring off"), Strings{"HS00"});
    EXPECT_EQ(sim.heard("phone volume speaker 12"), Strings{"HP00000C"});
    EXPECT_EQ(sim.heard("phone volume microphone 0"), Strings{"HP010000"});
    EXPECT_EQ(
        sim.answers("HA" + kPhone),
        (Strings{"HA020000000000000000" + kPhone, "HA03000000FD0000002F" + kPhone, "HVSim Phone 1",
                 "HWvym", "HS00", "HD01", "HE01", "HF0000", "HG0003", "HI00", "HJ00", "HK00", "HX05"}));
}

TEST(ControlPhone, WithoutANetworkThereAreNoCalls) {
    TalkingSim sim;
    EXPECT_EQ(sim.heard("phone network off"), (Strings{"HD00", "HI00", "HX05", "HB00" + kPhone}));
    EXPECT_EQ(sim.heard("phone network off"), Strings{});
    EXPECT_EQ(sim.answers("HH123"), Strings{"HQ0103"});
    EXPECT_EQ(sim.desk.order("phone call 123"),
              "error: the phone has no network; \"phone network on\" comes first");
    EXPECT_EQ(sim.heard("phone network on"), Strings{"HD01"});
}

TEST(ControlPhone, SoundAndVoiceRecognitionAreStartedAtThePhone) {
    ControlSim sim;
    EXPECT_EQ(sim.desk.order("phone voice-recognition on"), "error: there is no hands-free connection");
    sim.connect_hands_free();
    EXPECT_EQ(sim.heard("phone voice-recognition on"),
              (Strings{"HC01", "HB01" + kPhone, "HB02" + kPhone}));
    EXPECT_EQ(sim.heard("phone voice-recognition off"), (Strings{"HC00", "HB00" + kPhone}));
    EXPECT_EQ(sim.desk.order("phone audio on"), "error: there is no call");
    sim.heard("phone call 1");
    EXPECT_EQ(sim.heard("phone audio off"), Strings{"HB00" + kPhone});
    EXPECT_EQ(sim.heard("phone audio on"), (Strings{"HB01" + kPhone, "HB02" + kPhone}));
}

// The player.

TEST(ControlPlayer, KeysAtThePhoneAreHeardOf) {
    ControlSim sim;
    sim.connect_music();
    const Strings playing = sim.heard("player play");
    EXPECT_NE(std::find(playing.begin(), playing.end(), "RL" + kPhone + "01"), playing.end());
    const Strings skipped = sim.heard("player skip");
    ASSERT_EQ(skipped.size(), 2U);
    EXPECT_NE(skipped[0].find("Carrier Wave"), std::string::npos);
    EXPECT_EQ(skipped[1], "RK" + kPhone + "0002DA7800000000");
    EXPECT_NE(sim.heard("player back").at(0).find("First Light"), std::string::npos);
    const Strings paused = sim.heard("player pause");
    EXPECT_NE(std::find(paused.begin(), paused.end(), "RL" + kPhone + "02"), paused.end());
    EXPECT_EQ(sim.heard("player stop"), Strings{"RL" + kPhone + "00"});
    EXPECT_EQ(sim.heard("player repeat all"), Strings{"RG" + kPhone + "0003\x01\x02\x03"});
    EXPECT_EQ(sim.heard("player shuffle on"), Strings{"RG" + kPhone + "0003\x01\x03\x02"});
    EXPECT_EQ(sim.heard("player volume 100"), Strings{"RH" + kPhone + "6403"});
}

TEST(ControlPlayer, TheVolumeNeedsSomebodyToSetItAt) {
    ControlSim sim;
    EXPECT_EQ(sim.desk.order("player volume 1"), "error: there is no remote control connection");
}

// Devices.

TEST(ControlDevice, WhoWalksAwayIsLostAndCannotBeReached) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.heard("device \"Anna's phone\" out-of-range"),
              (Strings{"HA000000000000000000" + kPhone, "BI00" + kPhone + "01"}));
    EXPECT_EQ(sim.desk.order("device 2A:41:6E:6E:61:01 out-of-range"),
              "error: \"Anna's phone\" is out of range already");
    EXPECT_EQ(sim.answers("HA" + kPhone), Strings{"HA000000000000000000" + kPhone});
    EXPECT_EQ(sim.answers("BM" + kPhone), Strings{"BH0A" + kPhone + "00"});
    sim.send("BK");
    const Strings found = sim.until("BE00");
    EXPECT_TRUE(std::none_of(found.begin(), found.end(), [](const std::string& event) {
        return event.rfind("BD" + kPhone, 0) == 0;
    }));
    EXPECT_EQ(sim.heard("device \"Anna's phone\" back"), Strings{});
    EXPECT_EQ(sim.desk.order("device \"Anna's phone\" back"), "error: \"Anna's phone\" is in range");
    sim.connect_hands_free();
}

TEST(ControlDevice, APatientConnectionIsMadeWhenTheDeviceIsBack) {
    ControlSim sim;
    EXPECT_EQ(sim.answers("KA" + kAppInCommand), Strings{"KA0001" + kAppInEvent});
    sim.heard("device \"Heart strap\" out-of-range");
    EXPECT_EQ(sim.answers("KE01" + kStrap + "0002"), Strings{});
    EXPECT_EQ(sim.desk.order("device \"Heart strap\" back"), "ok");
    EXPECT_EQ(sim.client.events(2), (Strings{"BI00" + kStrap + "00", "KE01000100" + kStrap}));
}

TEST(ControlDevice, ItsSignalStrengthIsSet) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.heard("device \"Anna's phone\" rssi -90"), Strings{});
    EXPECT_EQ(sim.answers("BTB" + kPhone), Strings{"BS" + kPhone + "00A6"});
}

TEST(ControlDevice, ItAsksToBePaired) {
    ControlSim sim;
    EXPECT_EQ(sim.heard("device \"Kitchen speaker\" pair"),
              (Strings{"BH00" + kSpeaker + "01", "BF" + kSpeaker + "0024041400Kitchen speaker"}));
    EXPECT_EQ(sim.desk.order("device Tablet pair"), "error: another pairing is under way");
    EXPECT_EQ(sim.answers("BR" + kSpeaker + "0100040000"),
              (Strings{"BI00" + kSpeaker + "00", "BH00" + kSpeaker + "02"}));
    EXPECT_EQ(sim.desk.order("device \"Kitchen speaker\" pair"),
              "error: \"Kitchen speaker\" is bonded already");
}

TEST(ControlDevice, APairingEndsWhenTheDeviceWalksAway) {
    ControlSim sim;
    sim.heard("device \"Kitchen speaker\" pair");
    EXPECT_EQ(sim.heard("device \"Kitchen speaker\" out-of-range"), Strings{"BH0A" + kSpeaker + "00"});
    EXPECT_EQ(sim.desk.order("device \"Kitchen speaker\" pair"),
              "error: \"Kitchen speaker\" is out of range");
}

TEST(ControlDevice, TheWorldIsShownALineForEach) {
    ControlSim sim;
    sim.heard("device Tablet out-of-range");
    sim.desk.say("world show\n");
    EXPECT_EQ(sim.desk.answer(),
              (Strings{"adapter 00:1A:7D:DA:71:13 \"vym-sim\" on, scan mode 0",
                       "device 2A:41:6E:6E:61:01 \"Anna's phone\" -52 dBm",
                       "device 11:22:33:44:55:66 \"Kitchen speaker\" -67 dBm",
                       "device C6:48:65:61:72:74 \"Heart strap\" -74 dBm",
                       "device 2E:43:61:72:4B:74 \"Car kit\" -58 dBm, bonded",
                       "device 26:4B:65:79:62:64 \"Office keyboard\" -61 dBm, bonded",
                       "device 2A:47:4E:53:53:01 \"GNSS receiver\" -55 dBm",
                       "device 2E:4C:70:74:6F:70 \"Work laptop\" -49 dBm, bonded",
                       "device E2:43:6C:69:6D:61 \"Climate sensor\" -81 dBm",
                       "device D2:54:61:62:6C:74 \"Tablet\" -49 dBm, out of range",
                       "phone battery 5, signal 4, network on, operator \"Sim Mobile\"", "ok"}));
}

// Low Energy.

TEST(ControlPeripheral, AValueIsSetAndNotified) {
    ControlSim sim;
    EXPECT_EQ(sim.answers("KA" + kAppInCommand), Strings{"KA0001" + kAppInEvent});
    sim.send("KE01" + kStrap + "0102");
    sim.until("KE");
    EXPECT_EQ(sim.desk.order("peripheral \"Heart strap\" notify 2A37 0040"),
              "error: nobody listens: the client has not registered for 2A37, or not switched it on in "
              "its configuration");
    const std::string pulse = "000000" + in_command("180D") + "0000" + in_command("2A37");
    sim.answers("KQ01" + kStrap + pulse + "01");
    sim.send("KO0001" + pulse + "0000" + in_command("2902") + "02000003\x01\xDC\xDD");
    sim.until("KQ");
    EXPECT_EQ(sim.heard("peripheral \"Heart strap\" notify 2A37 40"),
              Strings{"KD0001" + kStrap + "000000" + in_event("180D") + "0000" + in_event("2A37") +
                      "010001@"});
    EXPECT_EQ(sim.desk.order("peripheral \"Heart strap\" notify 2A00 00"),
              "error: \"Heart strap\" has no characteristic 2A00");
}

/// A server with a service at 0020 whose value at 0022 can be read and written.
class ServingSim : public ControlSim {
public:
    ServingSim() {
        EXPECT_EQ(answers("JA" + kAppInCommand), Strings{"JA0001" + kAppInEvent});
        answers("JF01000000" + in_command("180F") + "06");
        answers("JH010020" + in_command("2A19") + "0A0011");
    }

    /// Takes a request, unless that is done, and refuses it.
    void refuse(const std::string& transaction, bool take_it = true) {
        if (take_it && transaction != "0001") {
            EXPECT_EQ(client.event().substr(0, 2), transaction == "0004" ? "JM" : "JL");
        }
        send("JO010001" + transaction + "800022" + "000000" + "0000");
        EXPECT_EQ(client.event(), "JJ000022");
    }
};

TEST(ControlTablet, ItComesReadsWritesAndGoes) {
    ServingSim sim;
    EXPECT_EQ(sim.desk.order("tablet connect"), "error: the client has started no service");
    EXPECT_EQ(sim.desk.order("tablet disconnect"), "error: the tablet is not connected");
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    EXPECT_EQ(sim.desk.order("tablet read 34"),
              "error: the tablet is not connected to the server of this attribute");
    EXPECT_EQ(sim.desk.order("tablet connect"), "ok");
    EXPECT_EQ(sim.client.events(4), (Strings{"BI00" + kTablet + "00", "JB" + kTablet + "01000101",
                                             "JP000100F7", "JK" + kTablet + "000100010022000000"}));
    EXPECT_EQ(sim.desk.order("tablet connect"), "error: the tablet is connected already");
    EXPECT_EQ(sim.desk.order("tablet write 34 4142"), "ok");
    EXPECT_EQ(sim.desk.order("tablet read 34"), "ok");
    EXPECT_EQ(sim.desk.order("tablet read 999"), "error: the client has no attribute 999");
    // Its own requests come first: a read, a write, and a long write that ends with its first piece.
    for (const char* transaction : {"0001", "0002", "0003", "0004"}) {
        sim.refuse(transaction);
    }
    EXPECT_EQ(sim.client.event(), "JL" + kTablet + "00010005002200000100" + "0002AB");
    sim.refuse("0005", false);
    EXPECT_EQ(sim.client.event(), "JK" + kTablet + "000100060022000000");
    EXPECT_EQ(sim.heard("tablet disconnect"),
              (Strings{"JB" + kTablet + "00000101", "BI00" + kTablet + "01"}));
}

TEST(ControlTablet, ItIsNamedWhenThereAreSeveral) {
    ServingSim sim;
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    EXPECT_EQ(sim.desk.order("tablet connect \"Heart strap\""), "error: \"Heart strap\" is no tablet");
    EXPECT_EQ(sim.desk.order("tablet connect Tablet"), "ok");
    EXPECT_EQ(sim.client.events(2).back(), "JB" + kTablet + "01000101");
    EXPECT_EQ(sim.desk.order("tablet disconnect " + kTablet), "ok");
}

TEST(ControlTablet, ItSendsBytesAndIsCongested) {
    ServingSim sim;
    EXPECT_EQ(sim.desk.order("tablet send 41"), "error: the tablet is not connected");
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    EXPECT_EQ(sim.desk.order("tablet connect"), "ok");
    sim.client.events(4);
    EXPECT_EQ(sim.heard("tablet send 410A"), Strings{"KS0001" + kTablet + "0003A\xDC\xDF"});
    EXPECT_EQ(sim.heard("tablet congestion on"), Strings{"JO000101"});
    EXPECT_EQ(sim.heard("tablet congestion on"), Strings{}) << "it is already";
    EXPECT_EQ(sim.heard("tablet congestion off"), Strings{"JO000100"});
}

TEST(ControlPeripheral, ItTakesNoCommandsWhileItIsCongested) {
    ControlSim sim;
    const std::string sensor = "E2436C696D61";
    EXPECT_EQ(sim.desk.order("peripheral \"Climate sensor\" congestion on"),
              "error: the client is not connected to \"Climate sensor\"");
    EXPECT_EQ(sim.answers("KA" + kAppInCommand), Strings{"KA0001" + kAppInEvent});
    sim.send("KE01" + sensor + "0102");
    sim.until("KE");
    EXPECT_EQ(sim.heard("peripheral \"Climate sensor\" congestion on"), Strings{"KZI0000000101"});
    // A write that nobody answers, to the marker in its logbook.
    const std::string write = "KM0001010000696E75676E6967676F4C796D0000457F"
                              "0000696E75676E6967676F4C796D0200457F01000001A";
    EXPECT_EQ(sim.answers(write)[0].substr(0, 8), "KN00018F");
    EXPECT_EQ(sim.heard("peripheral \"Climate sensor\" congestion off"), Strings{"KZI0000000100"});
    EXPECT_EQ(sim.answers(write)[0].substr(0, 8), "KN000100");
}

// Serial connections and the computer.

TEST(ControlSerial, ADeviceConnectsSpeaksAndLeaves) {
    ControlSim sim;
    const std::string port = "FB349B5F800000800010000001110000";
    EXPECT_EQ(sim.desk.order("serial \"Anna's phone\" send hello"),
              "error: \"Anna's phone\" has no serial connection");
    EXPECT_EQ(sim.desk.order("serial \"Anna's phone\" connect 5"),
              "error: the client has no serial server on channel 5");
    EXPECT_EQ(sim.answers("SL" + port + "05console"), Strings{"SL0005"});
    EXPECT_EQ(sim.heard("serial \"Anna's phone\" connect 5"),
              (Strings{"BI00" + kPhone + "00", "SE00" + kPhone + "050000000103DE03DE101001"}));
    EXPECT_EQ(sim.desk.order("serial \"Anna's phone\" connect 5"),
              "error: \"Anna's phone\" is connected to this channel already");
    const int data = sim.client.serial().get();
    EXPECT_EQ(read_exactly(data, 7 + 25).substr(7), "hello from Anna's phone\r\n");
    EXPECT_EQ(sim.desk.order("serial \"Anna's phone\" send \"one\\r\\n\""), "ok");
    EXPECT_EQ(read_exactly(data, 7 + 5), std::string("\x01\0\0\0\0\x05\0", 7) + "one\r\n");
    EXPECT_EQ(sim.heard("serial \"Anna's phone\" disconnect"), Strings{"SF0000000001"});
}

TEST(ControlHid, TheComputerAsksTellsAndUnplugs) {
    ControlSim sim;
    EXPECT_EQ(sim.desk.order("hid get-report input 1"), "error: no HID host is connected");
    sim.answers("DA40"
                "0000"
                "0000"
                "0000"
                "0001x"
                "0000"
                "0000");
    sim.send("DG" + kLaptop);
    sim.until("DC");
    EXPECT_EQ(sim.heard("hid get-report feature 7"), Strings{"DC030700000040"});
    EXPECT_EQ(sim.heard("hid set-report output 1 0241"), Strings{"DE02010002\x02"
                                                                 "A"});
    EXPECT_EQ(sim.heard("hid interrupt 2 00"), Strings{"DG020002\xDC\xDD"});
    EXPECT_EQ(sim.heard("hid set-protocol boot"), Strings{"DF00"});
    EXPECT_EQ(sim.heard("hid unplug"), (Strings{"DH", "DB" + kLaptop + "00000002"}));
}

// The server itself.

TEST(ControlServer, ARawEventIsSentAsItIs) {
    ControlSim sim;
    EXPECT_EQ(sim.desk.order("event \"ZZ\\x01 any\""), "ok");
    EXPECT_EQ(sim.client.event(), "ZZ\x01 any");
    // Two at once, and the first half of one.
    EXPECT_EQ(sim.desk.order("event PA01\\x00PA00"), "ok");
    EXPECT_EQ(sim.client.events(2), (Strings{"PA01", "PA00"}));
    sim.client.close();
    EXPECT_EQ(sim.desk.order("wait client gone"), "ok");
    EXPECT_EQ(sim.desk.order("event PA01"), "error: no client is connected");
}

TEST(ControlServer, TheClientIsDroppedAndTheNextOneServed) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.desk.order("server close"), "ok");
    EXPECT_EQ(read_exactly(sim.client.fd(), 1), "");
    EXPECT_EQ(sim.desk.order("wait client gone"), "ok");
    EXPECT_EQ(sim.desk.order("server close"), "error: no client is connected");
    TestClient next = static_cast<RunningSim&>(sim).client();
    EXPECT_EQ(sim.desk.order("wait client"), "ok");
    next.send("AT#HA" + kPhone + "\r\n");
    EXPECT_EQ(next.event(), "HA020000000000000000" + kPhone);
}

TEST(ControlServer, NothingCrossesTheSocketOfAStalledServer) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.desk.order("server stall 1h"), "error: \"1h\" is no time such as 5s, 1.5s or 200ms");
    EXPECT_EQ(sim.desk.order("server stall 3600"), "ok");
    EXPECT_EQ(sim.desk.order("phone battery 1"), "ok");
    sim.send("HL");
    // The server is alive and has done what it could do by now.
    EXPECT_EQ(sim.desk.order("wait command hfp.query_current_operator_name within 50ms"),
              "error: it did not come within 50 ms");
    EXPECT_EQ(recv(sim.client.fd(), std::array<char, 1>{}.data(), 1, MSG_PEEK | MSG_DONTWAIT), -1);
    EXPECT_EQ(sim.desk.order("server stall 0"), "ok");
    EXPECT_EQ(sim.client.events(3), (Strings{"HG0001", "HHSim Mobile", "HQ0006"}));
}

// Waiting.

TEST(ControlWait, ACommandIsRecognisedByItsFields) {
    ControlSim sim;
    EXPECT_EQ(sim.desk.order("phone battery 5"), "ok");
    sim.answers("HH555");
    sim.answers("HA" + kPhone);
    EXPECT_EQ(sim.desk.order("wait command hfp.connect address=\"Anna's phone\""), "ok");
    EXPECT_EQ(sim.desk.order("wait command hfp.dial within 0s"), "error: it did not come within 0 s");
    EXPECT_EQ(sim.desk.order("phone battery 4"), "ok");
    sim.answers("HJ0801");
    EXPECT_EQ(sim.desk.order("wait command hfp.handle_call_action action=0x8 index=1"), "ok");
    sim.answers("KA" + kAppInCommand);
    EXPECT_EQ(
        sim.desk.order("wait command gatt_client.register uuid=00001234-4556-7800-1011-202130314041"),
        "ok");
    sim.answers("BR" + kSpeaker + "0100041234");
    EXPECT_EQ(sim.desk.order("wait command bluetooth.pin_reply pin=31:32:33:34 accept=1"), "ok");
}

TEST(ControlWait, EventsAreAwaitedToo) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.desk.order("phone call 777"), "ok");
    EXPECT_EQ(sim.desk.order("wait event hfp.onClip number=777"), "ok");
    EXPECT_EQ(sim.desk.order("phone battery 2"), "ok");
    EXPECT_EQ(sim.desk.order("expect event hfp.onBatteryLevel level=3"), "error: another event came");
    EXPECT_EQ(sim.desk.order("phone battery 3"), "ok");
    EXPECT_EQ(sim.desk.order("expect event hfp.onBatteryLevel level=3"), "ok");
}

TEST(ControlWait, AnswersToAnOrderAreFoundHoweverEarlyTheyCome) {
    ControlSim sim;
    sim.connect_hands_free();
    EXPECT_EQ(sim.desk.order("phone call 777"), "ok");
    sim.answers("HJ0700");
    // Another program asks, a little later.
    ControlClient second(sim.dir());
    EXPECT_EQ(second.order("expect command hfp.handle_call_action action=7"), "ok");
}

TEST(ControlWait, WhatIsNotUnderstoodIsRefused) {
    ControlSim sim;
    const std::vector<std::pair<std::string, std::string>> cases{
        {"wait", "after \"wait\": expected command, event or client, found the end of the line"},
        {"expect client", "after \"expect\": expected command or event, found \"client\""},
        {"wait client here", "after \"wait client\": expected gone, within or nothing more, found "
                             "\"here\""},
        {"wait command", "expected the name of a command such as hfp.dial, found the end of the line"},
        {"wait command dial",
         "expected the name of a command such as hfp.dial, found \"dial\"; the profiles are bluetooth, "
         "rfcomm, hfp, a2dp, avrcp, pbap, gatt_client, gatt_server, hid"},
        {"wait command a2dp.play",
         "a2dp has no command \"play\", only connect, disconnect, "
         "inform_audio_focus_state, inform_audio_trace_gain, switch_audio_hw"},
        {"wait event hfp.onRingIndication x=1", "expected no field, found \"x=1\""},
        {"wait command hfp.dial number", "expected FIELD=VALUE with a field out of number, found "
                                         "\"number\""},
        {"wait command hfp.handle_call_action action=x",
         "action is a number, decimal or with 0x, not \"x\""},
        {"wait command hfp.connect address=Anna",
         "address is an address or the name of a device, not \"Anna\""},
        {"wait command hfp.dial within",
         "after \"within\": expected a time such as 5s, found the end of the line"},
        {"pause", "after \"pause\": expected one time such as 2s"},
    };
    for (const auto& [line, problem] : cases) {
        EXPECT_EQ(sim.desk.order(line), "error: " + problem) << line;
    }
}

// For people.

TEST(ControlHelp, ListsWhatBeginsSo) {
    ControlSim sim;
    sim.desk.say("help phone in-band-ring\nhelp pause\nhelp nothing such\n");
    EXPECT_EQ(sim.desk.answer(),
              (Strings{"phone in-band-ring on|off  whether its own ring tone is heard", "ok"}));
    EXPECT_EQ(sim.desk.answer(),
              (Strings{"pause SECONDS  do nothing for that long (2s, 200ms)", "ok"}));
    EXPECT_EQ(sim.desk.answer(),
              Strings{"error: nothing begins with \"nothing such\"; help alone lists everything"});
}

TEST(ControlHelp, TheGuideHasEveryVerbAndNoOther) {
    ControlSim sim;
    sim.desk.say("help\n");
    std::set<std::string> known;
    for (const std::string& line : sim.desk.answer()) {
        const size_t gap = line.find("  ");
        if (gap != std::string::npos) {
            const size_t text = line.find_first_not_of(' ', gap);
            known.insert("| `" + line.substr(0, gap) + "` | " + line.substr(text) + " |");
        }
    }
    std::set<std::string> described;
    std::istringstream guide(content_of(VYM_SIM_GUIDE));
    std::string line;
    while (std::getline(guide, line) && line != "## Driving it") {
    }
    while (std::getline(guide, line) && line.rfind("## ", 0) != 0) {
        // In a table of Markdown the sign between alternatives is escaped.
        for (size_t at = line.find("\\|"); at != std::string::npos; at = line.find("\\|")) {
            line.erase(at, 1);
        }
        if (line.rfind("| `", 0) == 0) {
            described.insert(line);
        }
    }
    EXPECT_EQ(described, known);
}

} // namespace
