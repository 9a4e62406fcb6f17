// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Captures, written byte by byte, and what a client that follows them or not gets to see.
#include "capture.h"
#include "running_sim.h"
#include "text_file.h"

#include <asio/post.hpp>
#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/socket.h>

namespace {

using namespace std::string_literals;

const std::string kHeader = "btsnoop\0\0\0\0\1\0\0\x03\xEA"s;

const std::string kTime = "\0\xE3\0\0\0\0\0\0"s;

/// Lengths (of less than 512 bytes), flags, no drops, a time; then the packet with its type byte.
std::string record(char flags, const std::string& packet, const std::string& time = kTime) {
    std::string length = "\0\0\0\0"s;
    length[2] = static_cast<char>(packet.size() >> 8);
    length[3] = static_cast<char>(packet.size());
    return length + length + "\0\0\0"s + flags + "\0\0\0\0"s + time + packet;
}

std::string command(const std::string& piece, const std::string& time = kTime) {
    return record(2, "\x01\x01\xFC"s + static_cast<char>(piece.size()) + piece, time);
}

std::string events(const std::string& piece, const std::string& time = kTime) {
    return record(3, "\x04\xFF"s + static_cast<char>(piece.size()) + piece, time);
}

class Files {
public:
    std::string write(const std::string& bytes) const {
        std::ofstream(path(), std::ios::binary) << bytes;
        return path();
    }
    std::string path() const { return dir_.file("client_sock.log"); }

private:
    TemporaryDirectory dir_;
};

/// "record: text" of each command and event, CR LF as it is.
std::vector<std::string> read(const std::string& records) {
    const Files files;
    std::vector<std::string> texts;
    for (const sim::CapturedText& text : sim::read_capture(files.write(kHeader + records))) {
        texts.push_back((text.is_command ? "command " : "event ") + std::to_string(text.record) + ": " +
                        text.text);
    }
    return texts;
}

using Strings = std::vector<std::string>;

/// Why these bytes are no capture, without the file's name.
std::string refusal(const std::string& bytes) {
    const Files files;
    files.write(bytes);
    try {
        sim::read_capture(files.path());
    } catch (const sim::FileError& error) {
        const std::string text = error.what();
        EXPECT_EQ(text.find('\n'), std::string::npos);
        EXPECT_EQ(text.substr(0, files.path().size() + 2), files.path() + ": ");
        return text.substr(files.path().size() + 2);
    }
    return "none";
}

TEST(CaptureReader, FindsCommandsAndEventsInTheirOrder) {
    EXPECT_EQ(
        read(command("AT#PV\r\n") + events("PV1\0PA01\0"s) + command("AT#PB\r\n")),
        (Strings{"command 1: AT#PV\r\n", "event 2: PV1", "event 2: PA01", "command 3: AT#PB\r\n"}));
}

TEST(CaptureReader, JoinsThePiecesOfLongTexts) {
    const std::string line(252, 'x');
    const std::string text(253, 'y');
    EXPECT_EQ(read(command("AT#" + line) + command("zz\r\n") + events("PV" + text) + events("w\0"s)),
              (Strings{"command 2: AT#" + line + "zz\r\n", "event 4: PV" + text + "w"}));
}

TEST(CaptureReader, JoinsALineEndAcrossTwoPieces) {
    const std::string line(251, 'x');
    EXPECT_EQ(read(command("AT#" + line + "\r") + command("\n")),
              (Strings{"command 2: AT#" + line + "\r\n"}));
}

TEST(CaptureReader, TakesAnEventThatAReadHasCutOnce) {
    EXPECT_EQ(read(events("PA01\0PVab"s) + command("AT#PB\r\n") + events("PVabcd\0"s)),
              (Strings{"event 1: PA01", "command 2: AT#PB\r\n", "event 3: PVabcd"}));
}

TEST(CaptureReader, TakesAnEventThatSeveralReadsHaveCutOnce) {
    const std::string text(300, 'y');
    EXPECT_EQ(read(events("PV") + events("PVyy") +
                   // The third read: three hundred signs of the text, in two pieces.
                   events("PV" + std::string(253, 'y')) + events(std::string(47, 'y')) +
                   // The fourth repeats all of that.
                   events("PV" + std::string(253, 'y')) + events(std::string(47, 'y') + "\0"s)),
              (Strings{"event 6: PV" + text}));
}

TEST(CaptureReader, RecognisesARepeatedBeginningAlsoBehindAFullPiece) {
    const std::string full = "PA01\0"s + "PVab" + std::string(246, 'y');
    EXPECT_EQ(read(events(full) + events("PVab" + std::string(246, 'y') + "z\0"s)),
              (Strings{"event 1: PA01", "event 2: PVab" + std::string(246, 'y') + "z"}));
}

TEST(CaptureReader, PassesOverTheByteOfADescriptorAndOtherPackets) {
    EXPECT_EQ(read(events("PD0100000007\0\0PA01\0"s) + record(2, "\x01\x03\x0C\x00"s) +
                   record(1, "\x02\x01\x00\x01\x00\x41"s)),
              (Strings{"event 1: PD0100000007", "event 1: PA01"}));
}

TEST(CaptureReader, TellsTheTimeOfEachText) {
    const Files files;
    const auto texts = sim::read_capture(files.write(kHeader + events("PV1\0"s) +
                                                     // 0x00E30001'00000002 microseconds.
                                                     command("AT#PB\r\n", "\0\xE3\0\1\0\0\0\2"s)));
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[1].time_us - texts[0].time_us, 0x100000002);
}

TEST(CaptureReader, SaysWhatIsNoCapture) {
    EXPECT_EQ(refusal(""), "is empty; expected a capture (client_sock.log)");
    EXPECT_EQ(refusal("{ \"adapter\": 1 }"),
              "at byte 0: this is no capture; expected the library's client_sock.log");
    EXPECT_EQ(refusal("AT#"), "at byte 0: this is no capture; expected the library's client_sock.log");
    EXPECT_EQ(refusal("btsnoop\0\0\0\0\1\0\0\x03\xE9"s),
              "at byte 8: this is another kind of capture; expected version 1 and link type 1002");
    EXPECT_EQ(refusal(kHeader), "holds no command and no event; expected a recorded conversation");
    try {
        sim::read_capture("/nowhere/client_sock.log");
        FAIL() << "read a file that is not there";
    } catch (const sim::FileError& error) {
        EXPECT_STREQ(error.what(), "/nowhere/client_sock.log: cannot be read: No such file or "
                                   "directory; expected a capture");
    }
}

TEST(CaptureReader, SaysWhereACaptureIsCutOff) {
    const std::string whole = kHeader + command("AT#PV\r\n") + events("PV1\0"s);
    EXPECT_EQ(refusal(whole), "none");
    // A record begins at 16 (24 + 11 bytes) and at 51 (24 + 7).
    ASSERT_EQ(whole.size(), 82U);
    EXPECT_EQ(refusal(whole.substr(0, 9)),
              "at byte 9: the capture is cut off in its header; expected 16 bytes");
    EXPECT_EQ(refusal(whole.substr(0, 20)), "at byte 16: record 1 is cut off: 4 bytes of a header of "
                                            "24; expected a whole capture");
    EXPECT_EQ(refusal(whole.substr(0, 81)), "at byte 51: record 2 is cut off: 6 bytes of a packet of "
                                            "7; expected a whole capture");
    for (size_t size = 17; size < whole.size(); ++size) {
        EXPECT_EQ(refusal(whole.substr(0, size)) == "none", size == 51) << size;
    }
}

TEST(CaptureReader, SaysWhichRecordIsDamaged) {
    std::string longer = kHeader + command("AT#PV\r\n");
    longer[16] = longer[20] = '\x7F';
    EXPECT_EQ(refusal(longer),
              "at byte 16: record 1 has a wrong length (2130706443 of 2130706443 bytes); "
              "the capture is damaged");
    std::string counted = kHeader + command("AT#PV\r\n");
    counted[16 + 24 + 3] = 8;
    EXPECT_EQ(refusal(counted),
              "at byte 40: record 1 is not as long as it says; the capture is damaged");
}

/// A server that plays a capture, on a thread of its own.
class Replaying {
public:
    explicit Replaying(const std::string& records, std::chrono::minutes grace = {},
                       sim::LogLevel log = sim::LogLevel::Problems) {
        sim::Options options;
        options.dir = dir_.path();
        options.log = log;
        options.replay_grace = grace;
        options.replay_file = files_.write(kHeader + records);
        server_ = std::make_unique<sim::Server>(loop_, sim::built_in_world(), options, log_);
        thread_ = std::thread([this] { loop_.run(); });
    }
    ~Replaying() {
        if (thread_.joinable()) {
            asio::post(loop_, [this] { server_->stop(); });
            thread_.join();
        }
    }
    Replaying(const Replaying&) = delete;
    Replaying& operator=(const Replaying&) = delete;

    TestClient client() const { return TestClient(dir_.path()); }
    /// Waits for the end of the server.
    int result() {
        thread_.join();
        return server_->result();
    }
    /// What it said, without the name of the file. To be looked at when it has ended.
    std::string said() const {
        const std::string text = log_.str();
        EXPECT_EQ(text.substr(0, files_.path().size()), files_.path().substr(0, text.size()));
        return text.empty() ? text : text.substr(files_.path().size());
    }
    std::string log() const { return log_.str(); }

private:
    Files files_;
    TemporaryDirectory dir_;
    std::ostringstream log_;
    asio::io_context loop_{1};
    std::unique_ptr<sim::Server> server_;
    std::thread thread_;
};

TEST(Replay, PlaysTheEventsBehindTheirCommands) {
    Replaying sim(events("PA01\0"s) + command("AT#PV\r\n") + events("PVmine\0PA00\0"s) +
                  command("AT#PB\r\n") + events("PA01\0"s));
    TestClient client = sim.client();
    EXPECT_EQ(client.event(), "PA01");
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.events(2), (Strings{"PVmine", "PA00"}));
    client.send("AT#PB\r\n");
    EXPECT_EQ(client.event(), "PA01");
    client.close();
    EXPECT_EQ(sim.result(), 0);
    EXPECT_EQ(sim.said(), "");
}

TEST(Replay, AClientMayHaveItsCommandsInALittleOtherOrder) {
    Replaying sim(command("AT#PV\r\n") + command("AT#PB\r\n") + events("PVmine\0"s) +
                  command("AT#PC\r\n") + events("PA00\0"s));
    TestClient client = sim.client();
    client.send("AT#PC\r\nAT#PB\r\nAT#PV\r\n");
    EXPECT_EQ(client.events(2), (Strings{"PVmine", "PA00"}));
    client.close();
    EXPECT_EQ(sim.result(), 0);
}

/// No client is that slow: an event that is kept so long is never sent before its command.
constexpr std::chrono::minutes kLong{60};

/// Log lines of commands and events only.
std::vector<std::string> traffic(const std::string& log) {
    std::vector<std::string> lines;
    std::istringstream in(log);
    for (std::string line; std::getline(in, line);) {
        if (line.substr(0, 3) == "<- " || line.substr(0, 3) == "-> ") {
            lines.push_back(line);
        }
    }
    return lines;
}

// Microseconds: a second, and one more.
const std::string kLater = "\0\xE3\0\0\0\x0F\x42\x41"s;

TEST(Replay, AnAnswerRecordedBeforeItsCommandComesBehindIt) {
    Replaying sim(events("PVmine\0"s) + command("AT#PV\r\n") + events("PA01\0"s, kLater) +
                      command("AT#PB\r\n", kLater),
                  kLong, sim::LogLevel::All);
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVmine");
    client.send("AT#PB\r\n");
    EXPECT_EQ(client.event(), "PA01");
    client.close();
    EXPECT_EQ(sim.result(), 0);
    EXPECT_EQ(traffic(sim.log()),
              (Strings{"<- bluetooth get_version", "-> bluetooth onBtVersion version=\"mine\"",
                       "<- bluetooth enable", "-> bluetooth onStateChanged state=1"}));
}

TEST(Replay, AnEventWaitsForEachCommandThatItMayAnswer) {
    Replaying sim(events("PA01\0"s) + command("AT#PV\r\n") + events("PVmine\0"s) + command("AT#PB\r\n"),
                  kLong, sim::LogLevel::All);
    TestClient client = sim.client();
    client.send("AT#PV\r\nAT#PB\r\n");
    EXPECT_EQ(client.events(2), (Strings{"PA01", "PVmine"}));
    client.close();
    EXPECT_EQ(sim.result(), 0);
    EXPECT_EQ(traffic(sim.log()), (Strings{"<- bluetooth get_version", "<- bluetooth enable",
                                           "-> bluetooth onStateChanged state=1",
                                           "-> bluetooth onBtVersion version=\"mine\""}));
}

TEST(Replay, AClientThatWaitsForAnEventGetsItBeforeItsNextCommand) {
    Replaying sim(events("PA01\0PC00\0"s) + events("PA00\0"s) + command("AT#PV\r\n") +
                  events("PA01\0"s) + command("AT#PB\r\n"));
    TestClient client = sim.client();
    EXPECT_EQ(client.events(3), (Strings{"PA01", "PC00", "PA00"}));
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PA01");
    client.send("AT#PB\r\n");
    client.close();
    EXPECT_EQ(sim.result(), 0);
    EXPECT_EQ(sim.said(), "");
}

TEST(Replay, AnEventLongBeforeACommandIsNoAnswerToIt) {
    Replaying sim(events("PA01\0"s) + command("AT#PV\r\n", kLater), kLong);
    TestClient client = sim.client();
    EXPECT_EQ(client.event(), "PA01");
}

TEST(Replay, TimesMayBeNonsense) {
    Replaying sim(command("AT#PV\r\n", "\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF") +
                  events("PVmine\0"s, "\x80\0\0\0\0\0\0\0"s) +
                  command("AT#PB\r\n", "\0\0\0\0\0\0\0\0"s) + events("PA01\0"s));
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVmine");
    client.send("AT#PB\r\n");
    EXPECT_EQ(client.event(), "PA01");
    client.close();
    EXPECT_EQ(sim.result(), 0);
}

TEST(Replay, AnEventManyRecordsBeforeACommandIsNoAnswerToIt) {
    std::string records = events("PA01\0"s);
    for (int i = 0; i < 8; ++i) {
        records += events("PA00\0"s);
    }
    Replaying sim(records + command("AT#PV\r\n"), kLong);
    TestClient client = sim.client();
    EXPECT_EQ(client.event(), "PA01");
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.events(8), Strings(8, "PA00"));
}

TEST(Replay, AnEventBehindTheLastCommandWaitsForNothing) {
    Replaying sim(command("AT#PV\r\n") + events("PVmine\0"s) + events("PA00\0"s), kLong);
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.events(2), (Strings{"PVmine", "PA00"}));
}

TEST(Replay, SaysWhichCommandIsMissingWhileAnEventWaits) {
    const std::string records = events("PVmine\0"s) + command("AT#PV\r\n");
    Replaying left(records, kLong);
    left.client().close();
    EXPECT_EQ(left.result(), 1);
    EXPECT_EQ(left.said(), ": record 2: expected bluetooth get_version, but the client left\n");

    Replaying other(records, kLong);
    TestClient client = other.client();
    client.send("AT#PB\r\n");
    EXPECT_EQ(other.result(), 1);
    EXPECT_EQ(other.said(), ": record 2: expected bluetooth get_version, came bluetooth enable\n");
}

// The thread that receives asks on from within its callback, while the one that asked first has not
// recorded that yet.
TEST(Replay, CommandsOfOneKindMayHaveAnotherOrder) {
    Replaying sim(events("PVa\0"s) + command("AT#HH+4931\r\n") + events("PVb\0"s) +
                  command("AT#HH+4930\r\n") + events("PVc\0"s));
    TestClient client = sim.client();
    client.send("AT#HH+4930\r\n");
    EXPECT_EQ(client.event(), "PVa");
    client.send("AT#HH+4931\r\n");
    EXPECT_EQ(client.events(2), (Strings{"PVb", "PVc"}));
    client.close();
    EXPECT_EQ(sim.result(), 0);
    EXPECT_EQ(sim.said(), "");
}

TEST(Replay, SaysWhichLaterCommandCameWithoutTheExpectedOne) {
    Replaying sim(command("AT#HH+4930\r\n") + command("AT#PV\r\n") + command("AT#HH+4931\r\n") +
                  events("PA00\0"s));
    TestClient client = sim.client();
    client.send("AT#HH+4931\r\n");
    client.close();
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.said(), ": record 1: expected hfp dial number=\"+4930\", but the client left; "
                          "already here: record 3, hfp dial number=\"+4931\"\n");
}

TEST(Replay, ACommandCountsOnce) {
    Replaying sim(command("AT#PV\r\n") + command("AT#PB\r\n"));
    TestClient client = sim.client();
    client.send("AT#PB\r\nAT#PB\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.said(), ": record 1: expected bluetooth get_version, came bluetooth enable; "
                          "already here: record 2, bluetooth enable\n");
}

TEST(Replay, ACommandFarAheadIsADifference) {
    std::string records;
    for (int i = 0; i < 32; ++i) {
        records += command("AT#PV\r\n");
    }
    Replaying sim(records + command("AT#PB\r\n"));
    TestClient client = sim.client();
    client.send("AT#PB\r\n");
    EXPECT_EQ(sim.result(), 1);
}

TEST(Replay, SaysWhatTheClientDoesOtherwise) {
    Replaying sim(command("AT#PV\r\n") + events("PVmine\0"s) + command("AT#HH+4930\r\n"));
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVmine");
    client.send("AT#HH+4931\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.said(),
              ": record 3: expected hfp dial number=\"+4930\", came hfp dial number=\"+4931\"\n");
}

TEST(Replay, SaysWhereLongCommandsDiffer) {
    const std::string digits(200, '5');
    Replaying sim(command("AT#HH" + digits + "1\r\n"));
    TestClient client = sim.client();
    client.send("AT#HH" + digits + "2\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_NE(sim.said().find(" (they differ from character 206 on)\n"), std::string::npos);
}

TEST(Replay, ACommandBehindTheEndIsADifference) {
    Replaying sim(command("AT#PV\r\n") + events("PVmine\0"s));
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVmine");
    client.send("nonsense\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.said(), ": behind the last record: expected no command, came unknown: nonsense\n");
}

TEST(Replay, AClientThatLeavesEarlyIsADifference) {
    Replaying sim(command("AT#PV\r\n") + events("PVmine\0"s) + command("AT#PB\r\n"));
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVmine");
    client.close();
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.said(), ": record 3: expected bluetooth enable, but the client left\n");
}

TEST(Replay, HandsOverADescriptorThatTakesEverything) {
    Replaying sim(command("AT#PB\r\n") + events("PD0100000007\0\0PA01\0"s));
    TestClient client = sim.client();
    client.send("AT#PB\r\n");
    EXPECT_EQ(client.event().substr(0, 4), "PD01");
    EXPECT_EQ(client.event(), "PA01");
    const sim::UniqueFd transport = client.descriptor();
    // More than a socket holds: somebody reads it.
    const std::string bytes(size_t{1024} * 1024, 'x');
    EXPECT_EQ(send(transport.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
    char c = 0;
    EXPECT_EQ(recv(transport.get(), &c, 1, MSG_DONTWAIT), -1) << "it is silent and open";
    client.close();
    EXPECT_EQ(sim.result(), 0);
}

} // namespace
