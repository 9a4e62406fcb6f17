// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial module without memory: nothing is sent, nothing is lost but what had no room, and nobody
// waits for it.

#include "memory/profile_memory.h"
#include "vym_rfcomm_event.h"
#include "wire/rfcomm_support.h"

#include <sys/socket.h>

namespace {

using memory::FailingAllocations;
using wire::ConnectionResult;
using wire::kPhone;
using wire::kSerialPort;
using wire::Message;
using wire::Sleeper;
using ClientSocket = vym_bluetooth_socket_t*;
using ServerSocket = vym_bluetooth_server_socket_t*;

class RfcommWithoutMemory : public wire::RfcommTest {
protected:
    void SetUp() override {
        wire::RfcommTest::SetUp();
        // The records of connections are used again, so from now on only their buffers need memory.
        ASSERT_NO_FATAL_FAILURE(Finish(Connect()));
    }
};

const memory::CommandCase kCommands[] = {
    {"connect_impl",
     [] { return vym_rfcomm_connect_impl(kPhone, kSerialPort, 5); },
     {"AT#SEA1B2C3D4E5F6FB349B5F80000080001000000111000005\r\n"}},
    {"disconnect", [] { return CALL(vym_rfcomm_disconnect)(1); }, {"AT#SF00000001\r\n"}},
    {"listen_impl",
     [] { return vym_rfcomm_listen_impl(kSerialPort, 0, nullptr); },
     {"AT#SLFB349B5F80000080001000000111000000\r\n"}},
    {"fetch_channels",
     [] { return CALL(vym_rfcomm_fetch_channels)(kPhone, kSerialPort); },
     {"AT#SMA1B2C3D4E5F6FB349B5F800000800010000001110000\r\n"}},
    {"server_disconnect", [] { return CALL(vym_rfcomm_server_disconnect)(3); }, {"AT#SN03\r\n"}},
};

TEST_F(RfcommWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectCommandsSurvive(Server(), kCommands);
}

TEST_F(RfcommWithoutMemory, NobodyWaitsForAnAnswerToWhatWasNotSent) {
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_rfcomm_connect(kPhone, kSerialPort, 5), nullptr);
        EXPECT_EQ(vym_rfcomm_listen(kSerialPort, 5, nullptr), nullptr);
    }
    Server().ExpectNothingMore();
}

TEST_F(RfcommWithoutMemory, AConnectionWithoutMemoryIsNoneAndEndsTheWait) {
    int failed = 0;
    for (int skip = 0; skip < 2; ++skip) { // the buffer and its storage
        {
            const FailingAllocations failing(skip, 1);
            Handle({ConnectionResult("00001234")});
            failed += failing.Failed();
        }
        EXPECT_EQ(vym_rfcomm_connect(kPhone, kSerialPort, 5), nullptr);
        Server().ExpectCommand("AT#SEA1B2C3D4E5F6" + wire::kSerialPortDigits + "05\r\n");
    }
    EXPECT_EQ(failed, 2);
    Finish(Connect());
}

TEST_F(RfcommWithoutMemory, AConnectionThatNobodyTookIsGivenBackWhenTheModuleStops) {
    Handle({ConnectionResult("00001234")});
    wire::RfcommProfile::Done();
    wire::RfcommProfile::Init(wire::Table::kWhole);
    const FailingAllocations failing(2); // the new connection's buffer and its storage
    Handle({ConnectionResult("00001234")});
    EXPECT_EQ(failing.Failed(), 0) << "its record is used again";
}

TEST_F(RfcommWithoutMemory, AServersConnectionWithoutMemoryEndsItsAccepts) {
    auto* const server = Listen();
    std::list<Sleeper<ClientSocket>> accepting;
    for (int i = 0; i < 2; ++i) {
        accepting.emplace_back([=] { return vym_rfcomm_accept(server); });
        EXPECT_TRUE(accepting.back().FallsAsleep());
    }
    {
        const FailingAllocations failing;
        Handle({ConnectionResult("00001234", true)});
    }
    for (auto& one : accepting) {
        EXPECT_EQ(one.Get(), nullptr);
    }
    EXPECT_EQ(vym_rfcomm_accept(server), nullptr) << "the server was given up";
    CloseServer(server);
}

TEST_F(RfcommWithoutMemory, AServerWithoutMemoryHasNothingToAcceptOn) {
    Handle({"SL0005"});
    ServerSocket server = nullptr;
    {
        const FailingAllocations failing(2, 1); // after the command and the socket
        server = vym_rfcomm_listen(kSerialPort, 0, nullptr);
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectCommand("AT#SL" + wire::kSerialPortDigits + "00\r\n");
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->server_channel, 5);
    EXPECT_EQ(vym_rfcomm_accept(server), nullptr);
    CloseServer(server);
}

TEST_F(RfcommWithoutMemory, ASocketOfAServerWithoutMemoryIsNone) {
    Handle({"SL0005"});
    {
        const FailingAllocations failing(1, 1);
        EXPECT_EQ(vym_rfcomm_listen(kSerialPort, 0, nullptr), nullptr);
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectCommand("AT#SL" + wire::kSerialPortDigits + "00\r\n");
}

TEST_F(RfcommWithoutMemory, AWriteFailsAndTheNextSucceeds) {
    const support::SocketPair& end = HandOver();
    auto* const sock = Connect();
    {
        const FailingAllocations failing;
        EXPECT_EQ(Write(sock, "lost"), -1);
    }
    EXPECT_EQ(Credit(sock), 6);
    EXPECT_EQ(Write(sock, "sent"), 4);
    EXPECT_EQ(support::ReadBytes(end.Near(), 11), Message(0x1234, 3, "sent"));
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AMessageWithoutMemoryEndsTheChannel) {
    const support::SocketPair& end = HandOver();
    auto* const sock = Connect();
    {
        const FailingAllocations failing;
        Feed(end, Message(0x1234, 9, "lost"));
        EXPECT_TRUE(Output().WaitForOut("data_transport_thread_proc quit.\n"));
        EXPECT_EQ(failing.Failed(), 1);
    }
    EXPECT_EQ(Credit(sock), 7);
    EXPECT_EQ(Write(sock, "x"), -1);
    const support::SocketPair& next = HandOver();
    Feed(next, Message(0x1234, 9, "data"));
    EXPECT_EQ(Read(sock), "data");
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AHandOverWithoutMemoryIsClosed) {
    auto* const sock = Connect();
    {
        const FailingAllocations failing(0, 1);
        const support::SocketPair& end = HandOver();
        EXPECT_EQ(failing.Failed(), 1);
        EXPECT_TRUE(support::ReadsEndOfStream(end.Near()));
    }
    EXPECT_EQ(Write(sock, "x"), -1);
    const support::SocketPair& next = HandOver();
    EXPECT_EQ(Write(sock, "x"), 1);
    EXPECT_EQ(support::ReadBytes(next.Near(), 8), Message(0x1234, 3, "x"));
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AHandOverWithoutAThreadCanBeWrittenTo) {
    auto* const sock = Connect();
    const memory::FailingThreads failing;
    const support::SocketPair& end = HandOver();
    EXPECT_EQ(failing.Failed(), 1);
    EXPECT_EQ(Write(sock, "x"), 1);
    EXPECT_EQ(support::ReadBytes(end.Near(), 8), Message(0x1234, 3, "x"));
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_rfcomm_event_parser);
}

TEST_F(RfcommWithoutMemory, InitMayFailAndBeRepeated) {
    static rfcomm_callback_t table = wire::RfcommTable();
    const std::string digits = "000102030405060708090A0B0C0D0E0F";
    memory::ExpectInitSurvives(CALL(vym_rfcomm_init), &table, CALL(vym_rfcomm_done), [&](bool heard) {
        Handle({"SMA1B2C3D4E5F6" + digits + "1E"});
        EXPECT_EQ(wire::ProfileRecord().Take(),
                  heard ? wire::Texts{"channel(A1B2C3D4E5F6, " + digits + ", 30)"} : wire::Texts{});
    });
}

/** One connection accepted, one made, data both ways, all closed again; one allocation fails. */
class Conversation : public wire::RfcommTest {
protected:
    // Makes the call, whose first allocation is that of its command.
    template <class Call>
    auto Command(const std::string& line, Call call) {
        const bool is_sent = failing_->Asked() != skip_;
        const auto result = call();
        if (is_sent) {
            Server().ExpectCommand(line);
        }
        return result;
    }

    [[nodiscard]] bool Failed() const { return failing_->Failed() > 0; }

    ClientSocket AcceptOne(ServerSocket server, bool is_listed) {
        if (is_listed) {
            Handle({ConnectionResult("00001234", true)});
        }
        auto* const sock = CALL(vym_rfcomm_accept)(server);
        EXPECT_TRUE(sock != nullptr || Failed());
        return sock;
    }

    void Close(ClientSocket sock, const std::string& handle) {
        if (sock != nullptr) {
            EXPECT_EQ(Command("AT#SF" + handle + "\r\n", [=] { return CALL(vym_rfcomm_close)(sock); }),
                      BT_STATUS_SUCCESS);
            Finish(sock, handle);
        }
    }

    void Serve() {
        Handle({"SL0005"});
        char name[] = "SPP";
        const int without_entry = failing_->Asked() + 2; // after the command and the socket
        auto* const server = Command("AT#SL" + wire::kSerialPortDigits + "00SPP\r\n",
                                     [&name] { return CALL(vym_rfcomm_listen)(kSerialPort, 0, name); });
        if (server == nullptr) {
            EXPECT_TRUE(Failed());
            return;
        }
        Close(AcceptOne(server, skip_ != without_entry), "00001234");
        EXPECT_EQ(Command("AT#SN05\r\n", [=] { return CALL(vym_rfcomm_server_close)(server); }),
                  BT_STATUS_SUCCESS);
    }

    void ExpectWritten(ClientSocket sock, const support::SocketPair& end) {
        const ssize_t sent = CALL(vym_rfcomm_write)(sock, "sent", 4);
        if (sent == 4) {
            EXPECT_EQ(support::ReadBytes(end.Near(), 11), Message(0x5678, 3, "sent"));
        } else {
            EXPECT_EQ(sent, -1);
            EXPECT_TRUE(Failed());
        }
        char more = 0;
        EXPECT_LE(recv(end.Near(), &more, 1, MSG_DONTWAIT), 0) << "half a message";
    }

    void ExpectRead(ClientSocket sock, const support::SocketPair& end) {
        const size_t ends = Printed(kReaderEnds);
        Feed(end, Message(0x5678, 9, "data"));
        EXPECT_TRUE(
            support::WaitUntil([&] { return Available(sock) == 4 || Printed(kReaderEnds) > ends; }));
        char room[8] = {};
        if (Available(sock) == 4) {
            EXPECT_EQ(CALL(vym_rfcomm_read)(sock, room, sizeof room), 4);
            EXPECT_STREQ(room, "data");
        } else {
            EXPECT_TRUE(Failed());
        }
    }

    void Talk() {
        Handle({ConnectionResult("00005678")});
        ClientSocket sock = Command("AT#SEA1B2C3D4E5F6" + wire::kSerialPortDigits + "05\r\n",
                                    [] { return CALL(vym_rfcomm_connect)(kPhone, kSerialPort, 5); });
        if (sock == nullptr) {
            EXPECT_TRUE(Failed());
            sock = vym_rfcomm_find_client(kPhone, 5); // when only the command was missing
        }
        if (sock == nullptr) {
            return;
        }
        EXPECT_EQ(support::ValueText(CALL(vym_rfcomm_get_address)(sock)), "A1B2C3D4E5F6");
        const size_t ends = Printed(kReaderEnds);
        const int without_channel = failing_->Asked();
        const support::SocketPair& end = HandOver();
        if (skip_ == without_channel) {
            EXPECT_TRUE(support::ReadsEndOfStream(end.Near()));
            EXPECT_EQ(Write(sock, "x"), -1);
        } else {
            ExpectWritten(sock, end);
            ExpectRead(sock, end);
            ends_.clear();
            EXPECT_TRUE(support::WaitUntil([&] { return Printed(kReaderEnds) > ends; }));
        }
        Close(sock, "00005678");
    }

    bool Run(int skip) {
        const FailingAllocations failing(skip, 1);
        failing_ = &failing;
        skip_ = skip;
        Serve();
        Talk();
        Server().ExpectNothingMore();
        return Failed();
    }

    static constexpr const char* kReaderEnds = "data_transport_thread_proc quit.";
    const FailingAllocations* failing_ = nullptr;
    int skip_ = 0;
};

TEST_F(Conversation, SurvivesTheLossOfAnyAllocation) {
    int failures = 0;
    memory::ForEachFailure([&](int skip) {
        const bool failed = Run(skip);
        failures += failed ? 1 : 0;
        return failed;
    });
    EXPECT_GE(failures, 13);
}

TEST_F(Conversation, LeavesNothingWhateverFails) {
    Run(FailingAllocations::kAll);
    // The records of connections are kept and used again.
    const size_t held = memory::BlocksHeld();
    memory::ForEachFailure([&](int skip) {
        const bool failed = Run(skip);
        Run(FailingAllocations::kAll);
        EXPECT_EQ(memory::BlocksHeld(), held);
        return failed;
    });
}

} // namespace
