// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The capture as a session writes it: every command and every read, byte for byte.

#include "vym_sdk.h"

#include "internal_ev_process.h"

#include "support/capture_reader.h"
#include "support/probe_parser.h"

#include <chrono>
#include <filesystem>

namespace {

using support::Bytes;
using support::CaptureFile;
using support::CaptureRecord;
using support::Event;
using Entries = std::vector<std::string>;

void SendCommand(std::string command) {
    send_at_command(command.data(), 0);
}

class SessionCapture : public support::ProbeTest {
protected:
    CaptureFile Read() { return support::ReadCapture(Session().CapturePath()); }

    // The packets with their type bytes, and every record sound.
    Entries Packets() {
        const CaptureFile file = Read();
        EXPECT_EQ(file.rest, "");
        Entries packets;
        for (const CaptureRecord& record : file.records) {
            EXPECT_EQ(record.original_length, record.included_length);
            EXPECT_EQ(record.flags, record.IsCommand() ? 2U : 3U);
            EXPECT_EQ(record.drops, 0U);
            packets.push_back(record.packet);
        }
        return packets;
    }
};

TEST_F(SessionCapture, BeginsWithTheFormatsHeader) {
    EXPECT_TRUE(support::SameBytes(Bytes({0x62, 0x74, 0x73, 0x6E, 0x6F, 0x6F, 0x70, 0x00, 0x00, 0x00,
                                          0x00, 0x01, 0x00, 0x00, 0x03, 0xEA}),
                                   support::ReadFile(Session().CapturePath())));
}

TEST_F(SessionCapture, ACommandIsAVendorCommandPacket) {
    SendCommand("AT#PB\r\n");
    EXPECT_EQ(Packets(), (Entries{Bytes({0x01, 0x01, 0xFC, 0x07}) + "AT#PB\r\n"}));
}

TEST_F(SessionCapture, AReadIsAVendorEventPacket) {
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    EXPECT_EQ(Packets(), (Entries{Bytes({0x04, 0xFF, 0x05}) + Event("XA01")}));
}

TEST_F(SessionCapture, LengthsCountTheTypeByte) {
    SendCommand("AT#PB\r\n");
    const CaptureFile file = Read();
    ASSERT_EQ(file.records.size(), 1U);
    EXPECT_EQ(file.records[0].included_length, 11U);
}

TEST_F(SessionCapture, ALongCommandIsCutIntoPiecesOf255) {
    struct Case {
        size_t length;
        std::vector<size_t> pieces;
    };
    size_t seen = 0;
    for (const Case& one : {Case{254, {254}}, Case{255, {255}}, Case{256, {255, 1}},
                            Case{300, {255, 45}}, Case{510, {255, 255}}, Case{511, {255, 255, 1}}}) {
        std::string command = "AT#HH";
        while (command.size() < one.length - 2) {
            command.push_back(static_cast<char>('0' + command.size() % 10));
        }
        command += "\r\n";
        SendCommand(command);
        Server().ExpectCommand(command);
        const Entries packets = Packets();
        std::string joined;
        for (const size_t piece : one.pieces) {
            ASSERT_LT(seen, packets.size());
            EXPECT_EQ(packets[seen].substr(0, 4), Bytes({0x01, 0x01, 0xFC, static_cast<int>(piece)}));
            joined += packets[seen].substr(4);
            ++seen;
        }
        EXPECT_EQ(seen, packets.size());
        EXPECT_TRUE(support::SameBytes(command, joined));
    }
}

TEST_F(SessionCapture, ALongReadIsCutIntoPiecesOf255) {
    const std::string text = Event("XT05" + std::string(506, 'x')); // 511 bytes
    Server().Send(text);
    EXPECT_TRUE(Events().WaitFor(1));
    EXPECT_EQ(Packets(), (Entries{Bytes({0x04, 0xFF, 0xFF}) + text.substr(0, 255),
                                  Bytes({0x04, 0xFF, 0xFF}) + text.substr(255, 255),
                                  Bytes({0x04, 0xFF, 0x01}) + text.substr(510)}));
}

TEST_F(SessionCapture, AKeptHeadIsCapturedWithEachRead) {
    Server().Send("XB0011");
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send("2233");
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("445566"));
    EXPECT_TRUE(Events().WaitFor(1));
    EXPECT_EQ(Packets(),
              (Entries{Bytes({0x04, 0xFF, 0x06}) + "XB0011", Bytes({0x04, 0xFF, 0x0A}) + "XB00112233",
                       Bytes({0x04, 0xFF, 0x11}) + Event("XB00112233445566")}));
}

TEST_F(SessionCapture, NulsAndUnknownTextAreCapturedToo) {
    const std::string text = std::string("\0", 1) + Event("ZZ") + Event("XA01");
    Server().Send(text);
    EXPECT_TRUE(Events().WaitFor(1));
    EXPECT_EQ(Packets(), (Entries{Bytes({0x04, 0xFF, 0x09}) + text}));
}

TEST_F(SessionCapture, AnEventIsInTheFileBeforeItsCallbackRuns) {
    std::string seen;
    Events().SetHook([&](const std::string&) { seen = Read().Events(); });
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    Events().SetHook(nullptr);
    EXPECT_TRUE(EventsAreHandled());
    EXPECT_TRUE(support::SameBytes(Event("XA01"), seen));
}

TEST_F(SessionCapture, ACommandIsInTheFileWhenTheCallReturns) {
    for (int i = 0; i < 20; ++i) {
        SendCommand("AT#PB\r\n");
        EXPECT_EQ(Read().records.size(), static_cast<size_t>(i + 1));
    }
}

TEST_F(SessionCapture, ACommandFromACallbackStandsBehindItsEvent) {
    Events().SetHook([](const std::string&) { SendCommand("AT#PB\r\n"); });
    Server().Send(Event("XA01"));
    Server().ExpectCommand("AT#PB\r\n");
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    EXPECT_TRUE(support::WaitUntil([&] { return Read().records.size() == 2; }));
    EXPECT_EQ(Packets(), (Entries{Bytes({0x04, 0xFF, 0x05}) + Event("XA01"),
                                  Bytes({0x01, 0x01, 0xFC, 0x07}) + "AT#PB\r\n"}));
}

TEST_F(SessionCapture, ACommandWhoseSendingFailedIsCaptured) {
    Server().CloseClient();
    SendCommand("AT#PB\r\n");
    EXPECT_EQ(Read().Commands(), "AT#PB\r\n");
}

TEST_F(SessionCapture, InternalMessagesAreNotCaptured) {
    vym_internal_event_register([](ev_data_t*) { support::ProbeRecord().Add("internal"); });
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
    EXPECT_TRUE(Events().WaitForEntry("internal"));
    EXPECT_TRUE(Read().records.empty());
}

TEST_F(SessionCapture, TimesAreThoseOfTheClockAndNeverFall) {
    // Microseconds between the year 0 and 1970.
    constexpr uint64_t kUnixEpoch = 0x00DCDDB30F2F8000ULL;
    const auto now = [] {
        return kUnixEpoch +
               static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                         std::chrono::system_clock::now().time_since_epoch())
                                         .count());
    };
    const uint64_t before = now();
    for (int i = 0; i < 50; ++i) {
        SendCommand("AT#PB\r\n");
        Server().Send(Event("XA01"));
    }
    EXPECT_TRUE(Events().WaitFor(50));
    uint64_t last = before;
    for (const CaptureRecord& record : Read().records) {
        EXPECT_GE(record.timestamp, last);
        last = record.timestamp;
    }
    EXPECT_LE(last, now());
}

TEST_F(SessionCapture, EndsWithTheLibrary) {
    SendCommand("AT#PB\r\n");
    Session().Stop();
    SendCommand("AT#PC\r\n");
    EXPECT_EQ(Read().Commands(), "AT#PB\r\n");
}

TEST_F(SessionCapture, AnotherStartBeginsAnotherCapture) {
    SendCommand("AT#PB\r\n");
    ASSERT_TRUE(Session().Restart());
    SendCommand("AT#PC\r\n");
    EXPECT_EQ(Read().Commands(), "AT#PC\r\n");
}

class UnconnectedCapture : public support::QuietTest {};

TEST_F(UnconnectedCapture, CommandsAreNotCaptured) {
    const support::TempDir directory;
    EXPECT_EQ(vym_sdk_init_ex(directory.Path().c_str()), -1);
    SendCommand("AT#PB\r\n");
    EXPECT_EQ(support::ReadFile(directory.Path() + "/client_sock.log").size(), 16U);
    vym_sdk_done();
}

TEST_F(UnconnectedCapture, WithoutAFileTheLibraryWorks) {
    const support::TempDir directory;
    support::FakeServer server(directory.Path());
    // A directory of that name cannot be opened as a file.
    std::filesystem::create_directory(directory.Path() + "/client_sock.log");
    ASSERT_GT(vym_sdk_init_ex(directory.Path().c_str()), 0);
    ASSERT_TRUE(server.Accept());
    SendCommand("AT#PB\r\n");
    server.ExpectCommand("AT#PB\r\n");
    vym_sdk_done();
}

} // namespace
