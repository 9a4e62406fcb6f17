// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_sim.h"

#include <sys/socket.h>

namespace {

using namespace std::string_literals;
using std::chrono::hours;
using std::chrono::milliseconds;

const std::string kReceiver = "2A474E535301";
/// The serial port service, as commands and as events write it.
const std::string kSerialPort = "FB349B5F800000800010000001110000";
const std::string kSerialPortInEvents = "0000110100001000800000805F9B34FB";
/// Longest messages and credits of both directions, and that it is no server's connection.
const std::string kAsClient = "03DE03DE101000";
const std::string kAsServer = "03DE03DE101001";
const std::string kRefused = "00000000000000";

const std::string kLinkUp = "BI00" + kPhone + "00";

/// Nobody connects or speaks by himself, unless a test lets it.
sim::Pace serial_pace() {
    sim::Pace pace = phone_pace();
    pace.serial_dial = hours(1);
    pace.serial_greeting = hours(1);
    pace.serial_line = hours(1);
    pace.serial_credit = hours(1);
    return pace;
}

sim::Pace pace_of_callers() {
    sim::Pace pace = serial_pace();
    pace.serial_dial = milliseconds(1);
    return pace;
}

class SerialSim : public PhoneSim {
public:
    explicit SerialSim(const sim::Pace& pace = serial_pace(),
                       const sim::World& world = sim::built_in_world())
        : PhoneSim(pace, world) {}

    void connect_echo() {
        send("SE" + kPhone + kSerialPort + "0B");
        EXPECT_EQ(client.events(2), (Strings{kLinkUp, "SE00" + kPhone + "0B00000001" + kAsClient}));
    }

    /// Opens a server on channel 5 and waits for who connects to it.
    void be_called() {
        send("SL" + kSerialPort + "05console");
        EXPECT_EQ(client.events(3),
                  (Strings{"SL0005", kLinkUp, "SE00" + kPhone + "0500000001" + kAsServer}));
    }

    void write(const std::string& bytes) {
        EXPECT_EQ(::send(client.serial().get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    std::string read(size_t count) { return read_exactly(client.serial().get(), count); }
};

TEST(SimSerial, ConnectsToAChannel) {
    SerialSim sim;
    sim.connect_echo();
}

TEST(SimSerial, WithoutAChannelTheServiceDecides) {
    SerialSim sim;
    sim.send("SE" + kPhone + kSerialPort + "00");
    EXPECT_EQ(sim.client.events(2), (Strings{kLinkUp, "SE00" + kPhone + "0B00000001" + kAsClient}));
}

TEST(SimSerial, AChannelIsEnoughWhateverTheService) {
    SerialSim sim;
    sim.send("SE" + kPhone + std::string(32, '0') + "0B");
    EXPECT_EQ(sim.client.events(2), (Strings{kLinkUp, "SE00" + kPhone + "0B00000001" + kAsClient}));
}

TEST(SimSerial, WhatIsNotThereIsRefused) {
    SerialSim sim;
    // No such channel, no such service, no such device.
    EXPECT_EQ(sim.answers("SE" + kPhone + kSerialPort + "0C"),
              Strings{"SE01" + kPhone + "0C00000000" + "00000000000000"});
    EXPECT_EQ(sim.answers("SE" + kPhone + "FB349B5F80000080001000000211000000"),
              Strings{"SE01" + kPhone + "0000000000" + kRefused});
    EXPECT_EQ(sim.answers("SE" + kSpeaker + kSerialPort + "00"),
              Strings{"SE01" + kSpeaker + "0000000000" + kRefused});
    EXPECT_EQ(sim.answers("SEAABBCCDDEEFF" + kSerialPort + "01"),
              Strings{"SE0AAABBCCDDEEFF0100000000" + kRefused});
}

TEST(SimSerial, AChannelHasOneConnectionAtATime) {
    sim::Pace pace = serial_pace();
    pace.profile_connect = hours(1);
    SerialSim sim(pace);
    const Strings busy{"SE04" + kPhone + "0B00000000" + "00000000000000"};
    // Already while it connects.
    EXPECT_EQ(sim.answers("SE" + kPhone + kSerialPort + "0B"), Strings{kLinkUp});
    EXPECT_EQ(sim.answers("SE" + kPhone + kSerialPort + "00"), busy);

    SerialSim other;
    other.connect_echo();
    EXPECT_EQ(other.answers("SE" + kPhone + kSerialPort + "0B"), busy);
}

TEST(SimSerial, WithoutPowerThereIsNothing) {
    SerialSim sim;
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("SE" + kPhone + kSerialPort + "0B"),
              Strings{"SE02" + kPhone + "0B00000000" + "00000000000000"});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "05console"), Strings{"SL0200"});
    EXPECT_EQ(sim.answers("SM" + kPhone + kSerialPort),
              Strings{"SN" + kPhone + kSerialPortInEvents + "00"});
}

TEST(SimSerial, EchoesEveryPayload) {
    SerialSim sim;
    sim.connect_echo();
    sim.write("\x01\x00\x00\x00\x10\x05\x00hello"s);
    EXPECT_EQ(sim.read(12), "\x01\x00\x00\x00\x01\x05\x00hello"s);
    sim.write("\x01\x00\x00\x00\x10\x04\x00\x00\r\n\xDC"s);
    EXPECT_EQ(sim.read(11), "\x01\x00\x00\x00\x01\x04\x00\x00\r\n\xDC"s);
}

TEST(SimSerial, OnlyCallersLeaveAtAWord) {
    SerialSim sim;
    sim.connect_echo();
    sim.write("\x01\x00\x00\x00\x10\x05\x00"
              "bye\r\n"s);
    EXPECT_EQ(sim.read(12), "\x01\x00\x00\x00\x01\x05\x00"
                            "bye\r\n"s);
}

TEST(SimSerial, APayloadOfTheLargestSizeComesBackInMessagesOfTheGreatestLength) {
    sim::Pace pace = serial_pace();
    pace.serial_credit = milliseconds(1);
    SerialSim sim(pace);
    sim.connect_echo();
    sim.write("\x01\x00\x00\x00\x10\xFF\xFF"s + std::string(65535, 'x'));
    // 66 whole messages and 195 bytes.
    for (int i = 0; i < 66; ++i) {
        ASSERT_EQ(sim.read(997), "\x01\x00\x00\x00"s + (i == 0 ? '\x01' : '\x00') + "\xDE\x03"s +
                                     std::string(990, 'x'));
    }
    EXPECT_EQ(sim.read(202), "\x01\x00\x00\x00\x00\xC3\x00"s + std::string(195, 'x'));
}

TEST(SimSerial, AReceiverReportsItsPositionLineAfterLine) {
    sim::Pace pace = serial_pace();
    pace.serial_line = milliseconds(1);
    SerialSim sim(pace);
    sim.send("SE" + kReceiver + kSerialPort + "00");
    EXPECT_EQ(sim.client.events(2),
              (Strings{"BI00" + kReceiver + "00", "SE00" + kReceiver + "0100000001" + kAsClient}));
    const std::string header = "\x01\x00\x00\x00\x00\x47\x00"s;
    EXPECT_EQ(sim.read(78), header + "$GPGGA,120000.00,5231.2000,N,01324.3000,E,1,08,0.9,"
                                     "34.0,M,44.0,M,,*59\r\n");
    EXPECT_EQ(sim.read(78), header + "$GPGGA,120001.00,5231.2000,N,01324.3000,E,1,08,0.9,"
                                     "34.0,M,44.0,M,,*58\r\n");
}

TEST(SimSerial, WhatTheReceiverIsToldIsTakenAndPaidBack) {
    SerialSim sim;
    sim.send("SE" + kReceiver + kSerialPort + "01");
    sim.until("SE");
    sim.write("\x01\x00\x00\x00\x10\x03\x00on?"s);
    EXPECT_EQ(sim.read(7), "\x01\x00\x00\x00\x01\x00\x00"s);
}

TEST(SimSerial, AClientThatDoesNotReadIsStillServed) {
    sim::Pace pace = serial_pace();
    pace.serial_line = milliseconds(1);
    pace.serial_credit = milliseconds(1);
    SerialSim sim(pace);
    sim.connect_echo();
    sim.send("SE" + kReceiver + kSerialPort + "01");
    sim.until("SE");
    const std::string message = "\x01\x00\x00\x00\x10\x10\x00sixteen letters."s;
    constexpr size_t kLimit = 200000;
    size_t messages = 0;
    while (messages<kLimit&& ::send(sim.client.serial().get(), message.data(), message.size(),
                                    MSG_NOSIGNAL | MSG_DONTWAIT)> 0) {
        ++messages;
    }
    EXPECT_GT(messages, 0U);
    EXPECT_EQ(sim.answers("SF00000001"), Strings{"SF0000000001"});
    EXPECT_EQ(sim.answers("SF00000002"), Strings{"SF0000000002"});
}

TEST(SimSerial, DisconnectEndsAConnection) {
    SerialSim sim;
    sim.connect_echo();
    EXPECT_EQ(sim.answers("SF00000001"), Strings{"SF0000000001"});
    EXPECT_EQ(sim.answers("SF00000001"), Strings{}) << "there is none any more";
    // The next has a handle of its own; the old one leads nowhere.
    sim.send("SE" + kPhone + kSerialPort + "0B");
    EXPECT_EQ(sim.client.event(), "SE00" + kPhone + "0B00000002" + kAsClient);
    sim.write("\x01\x00\x00\x00\x10\x03\x00old\x02\x00\x00\x00\x10\x03\x00new"s);
    EXPECT_EQ(sim.read(10), "\x02\x00\x00\x00\x01\x03\x00new"s);
}

TEST(SimSerial, OnlyHandlesThatAreInUseCanBeDisconnected) {
    sim::Pace pace = serial_pace();
    pace.profile_connect = hours(1);
    SerialSim sim(pace);
    EXPECT_EQ(sim.answers("SE" + kPhone + kSerialPort + "0B"), Strings{kLinkUp});
    EXPECT_EQ(sim.answers("SF00000000"), Strings{});
    EXPECT_EQ(sim.answers("SF00000001"), Strings{});
    EXPECT_EQ(sim.answers("SFFFFFFFFF"), Strings{});
}

TEST(SimSerial, AServerGetsTheLowestFreeChannel) {
    SerialSim sim;
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "02second"), Strings{"SL0002"});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "00any"), Strings{"SL0001"});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "00"), Strings{"SL0003"});
    EXPECT_EQ(sim.answers("SN01"), Strings{});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "00any"), Strings{"SL0001"});
}

TEST(SimSerial, AServerGetsTheChannelThatItAsksForOrNone) {
    SerialSim sim;
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "1Elast"), Strings{"SL001E"});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "1Eagain"), Strings{"SL0400"});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "1Fbeyond"), Strings{"SL0700"});
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "FFbeyond"), Strings{"SL0700"});
}

TEST(SimSerial, ThirtyServersAreAllThereCanBe) {
    SerialSim sim;
    std::string commands;
    for (int i = 0; i < 31; ++i) {
        commands += "AT#SL" + kSerialPort + "00n\r\n";
    }
    sim.client.send(commands);
    const Strings results = sim.client.events(31);
    EXPECT_EQ(results[0], "SL0001");
    EXPECT_EQ(results[29], "SL001E");
    EXPECT_EQ(results[30], "SL0400");
}

TEST(SimSerial, ADeviceConnectsToAServerAndGreets) {
    sim::Pace pace = pace_of_callers();
    pace.serial_greeting = milliseconds(1);
    SerialSim sim(pace);
    sim.be_called();
    EXPECT_EQ(sim.read(32), "\x01\x00\x00\x00\x00\x19\x00hello from Anna's phone\r\n"s);
}

TEST(SimSerial, ACallerEchoesAndLeavesWhenItIsToldTo) {
    SerialSim sim(pace_of_callers());
    sim.be_called();
    sim.write("\x01\x00\x00\x00\x10\x07\x00goodbye"s);
    EXPECT_EQ(sim.read(14), "\x01\x00\x00\x00\x01\x07\x00goodbye"s);
    // The end of a line that is more than the word.
    sim.write("\x01\x00\x00\x00\x10\x02\x00\r\n"s);
    EXPECT_EQ(sim.read(9), "\x01\x00\x00\x00\x01\x02\x00\r\n"s);
    sim.write("\x01\x00\x00\x00\x10\x05\x00"
              "bye\r\n"s);
    EXPECT_EQ(sim.client.event(), "SF0000000001");
}

TEST(SimSerial, TheWordMayComeInPieces) {
    SerialSim sim(pace_of_callers());
    sim.be_called();
    sim.write("\x01\x00\x00\x00\x10\x05\x00x\r\nby"s);
    EXPECT_EQ(sim.read(12), "\x01\x00\x00\x00\x01\x05\x00x\r\nby"s);
    sim.write("\x01\x00\x00\x00\x10\x03\x00"
              "e\r\n"s);
    EXPECT_EQ(sim.client.event(), "SF0000000001");
}

TEST(SimSerial, ACallersChannelIsTakenUntilItLeaves) {
    SerialSim sim(pace_of_callers());
    sim.be_called();
    EXPECT_EQ(sim.answers("SN05"), Strings{}) << "the connection stays";
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "05console"), Strings{"SL0400"});
    EXPECT_EQ(sim.answers("SF00000001"), Strings{"SF0000000001"});
    sim.send("SL" + kSerialPort + "05console");
    EXPECT_EQ(sim.client.events(2), (Strings{"SL0005", "SE00" + kPhone + "0500000002" + kAsServer}));
}

TEST(SimSerial, NobodyConnectsToAClosedServer) {
    SerialSim sim(pace_of_callers());
    // In one piece, so that nobody has the time to call. The second server's caller comes after the
    // first one's would have.
    sim.client.send("AT#SL" + kSerialPort + "05console\r\nAT#SN05\r\nAT#SL" + kSerialPort +
                    "06console\r\n");
    EXPECT_EQ(sim.client.events(4),
              (Strings{"SL0005", "SL0006", kLinkUp, "SE00" + kPhone + "0600000001" + kAsServer}));
    EXPECT_EQ(sim.answers("SN05"), Strings{}) << "closed already";
}

TEST(SimSerial, WithoutADeviceThatCallsServersWait) {
    sim::World world = sim::built_in_world();
    for (sim::Device& device : world.devices) {
        device.dials_serial_servers = false;
    }
    SerialSim sim(pace_of_callers(), world);
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "05console"), Strings{"SL0005"});
    // Several times as long as a caller takes.
    sim.send("BK");
    EXPECT_EQ(sim.until("BE00").size(), 5U);
}

TEST(SimSerial, ChannelsAreListedForAService) {
    sim::World world = sim::built_in_world();
    sim::Device& phone = world.devices[0];
    phone.serial_services.push_back({phone.serial_services[0].uuid, 12, sim::SerialTalk::Echo});
    phone.serial_services.push_back({sim::uuid_from_16bit(0x1103), 13, sim::SerialTalk::Echo});
    SerialSim sim(serial_pace(), world);
    const std::string there = kPhone + kSerialPortInEvents;
    EXPECT_EQ(sim.answers("SM" + kPhone + kSerialPort),
              (Strings{"SM" + there + "0B", "SM" + there + "0C", "SN" + there + "00"}));
    EXPECT_EQ(sim.answers("SM" + kSpeaker + kSerialPort),
              Strings{"SN" + kSpeaker + kSerialPortInEvents + "00"});
    EXPECT_EQ(sim.answers("SMAABBCCDDEEFF" + kSerialPort),
              Strings{"SNAABBCCDDEEFF" + kSerialPortInEvents + "00"});
}

TEST(SimSerial, AllEndsWithPower) {
    sim::Pace pace = pace_of_callers();
    SerialSim sim(pace);
    sim.be_called();
    sim.send("SE" + kPhone + kSerialPort + "0B");
    EXPECT_EQ(sim.client.event(), "SE00" + kPhone + "0B00000002" + kAsClient);
    EXPECT_EQ(sim.answers("PC"),
              (Strings{"SF0200000001", "SF0200000002", "BI00" + kPhone + "01", "PA00"}));
    EXPECT_EQ(sim.read(1), "") << "the descriptor has ended";
    // Nothing is left of it: the same channels are free.
    sim.audio = sim.client.enable();
    EXPECT_EQ(sim.answers("SL" + kSerialPort + "05console")[0], "SL0005");
}

TEST(SimSerial, AConnectionThatIsNotThereYetFailsWithPower) {
    sim::Pace pace = serial_pace();
    pace.profile_connect = hours(1);
    SerialSim sim(pace);
    EXPECT_EQ(sim.answers("SE" + kPhone + kSerialPort + "0B"), Strings{kLinkUp});
    EXPECT_EQ(sim.answers("PC"), (Strings{"SE02" + kPhone + "0B00000000" + "00000000000000",
                                          "BI00" + kPhone + "01", "PA00"}));
}

TEST(SimSerial, ALostLinkEndsWhatRanOverIt) {
    sim::World world = sim::built_in_world();
    world.bonded.push_back(world.devices[0].address);
    SerialSim sim(serial_pace(), world);
    sim.connect_echo();
    sim.send("SE" + kReceiver + kSerialPort + "01");
    sim.until("SE");
    EXPECT_EQ(sim.answers("BO" + kPhone),
              (Strings{"SF0A00000001", "BI00" + kPhone + "01", "BH00" + kPhone + "00"}));
    EXPECT_EQ(sim.answers("SF00000002"), Strings{"SF0000000002"}) << "another device's stays";
}

TEST(SimSerial, AClientThatLeavesTakesEverythingWithIt) {
    SerialSim sim(pace_of_callers());
    sim.be_called();
    sim.send("SE" + kPhone + kSerialPort + "0B");
    sim.until("SE");
    sim.client.close();
    TestClient second = static_cast<RunningSim&>(sim).client();
    const sim::UniqueFd audio = second.enable();
    second.send("AT#SE" + kPhone + kSerialPort + "0B\r\n");
    EXPECT_EQ(second.event(), "SE00" + kPhone + "0B00000003" + kAsClient);
    second.send("AT#SL" + kSerialPort + "05console\r\n");
    EXPECT_EQ(second.events(2), (Strings{"SL0005", "SE00" + kPhone + "0500000004" + kAsServer}));
}

TEST(SimSerial, AClosedDescriptorIsHandedOverAnewForTheNextConnection) {
    SerialSim sim;
    sim.connect_echo();
    sim.client.close_serial();
    // The server learns of it in its own time.
    std::string handle = "00000001";
    Strings events;
    do {
        EXPECT_EQ(sim.answers("SF" + handle), Strings{"SF00" + handle});
        sim.send("SE" + kPhone + kSerialPort + "0B");
        events = sim.until("SE");
        handle = events.back().substr(18, 8);
    } while (events.size() == 1);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].substr(0, 4), "PD00");
    const sim::UniqueFd fresh = sim.client.descriptor();
    const std::string number = {static_cast<char>(std::stoul(handle, nullptr, 16)), 0, 0, 0};
    const std::string message = number + "\x10\x02\x00ok"s;
    ASSERT_EQ(::send(fresh.get(), message.data(), message.size(), MSG_NOSIGNAL), 9);
    EXPECT_EQ(read_exactly(fresh.get(), 9), number + "\x01\x02\x00ok"s);
}

TEST(SimSerial, MalformedCommandsAreNamedInTheLog) {
    SerialSim sim;
    for (const char* command : {"SE", "SE2A416E6E6101", "SF0000000", "SF000000011", "SL00", "SM", "SN",
                                "SN1", "SN001", "SFxxxxxxxx"}) {
        EXPECT_EQ(sim.answers(command), Strings{}) << command;
    }
    sim.stop();
    const std::string log = sim.log();
    size_t malformed = 0;
    for (size_t at = log.find("malformed command"); at != std::string::npos;
         at = log.find("malformed command", at + 1)) {
        ++malformed;
    }
    EXPECT_EQ(malformed, 10U);
}

} // namespace
