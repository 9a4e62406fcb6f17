// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial module for tests: its callbacks record, and the far end of its data channel is a socket.
#ifndef VYM_TESTS_WIRE_RFCOMM_SUPPORT_H
#define VYM_TESTS_WIRE_RFCOMM_SUPPORT_H

#include "support/record_text.h"
#include "vym_rfcomm.h"
#include "vym_rfcomm_impl.h"
#include "wire/profile_conformance.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <fstream>
#include <future>
#include <list>
#include <string>
#include <vector>

#include <unistd.h>

namespace wire {

using Texts = std::vector<std::string>;
using support::Bytes;
using support::Event;

constexpr bt_bdaddr_t kPhone = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};
constexpr bt_bdaddr_t kOther = {{1, 2, 3, 4, 5, 6}};
/** The serial port service. */
constexpr bt_uuid_t kSerialPort = {
    {0x00, 0x00, 0x11, 0x01, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB}};
inline const std::string kSerialPortDigits = "FB349B5F800000800010000001110000";

inline std::string UuidText(const bt_uuid_t& uuid) {
    std::string text;
    for (const uint8_t byte : uuid.uu) {
        std::array<char, 3> digits{};
        snprintf(digits.data(), digits.size(), "%02X", byte);
        text += digits.data();
    }
    return text;
}

inline rfcomm_callback_t RfcommTable() {
    rfcomm_callback_t table = {};
    table.rfcomm_fetch_channels_cb = [](bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
        ProfileRecord().Add("channel(" + support::ValueText(address) + ", " + UuidText(uuid) + ", " +
                            std::to_string(channel) + ")");
    };
    table.rfcomm_fetch_channels_end_cb = [](bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
        ProfileRecord().Add("end(" + support::ValueText(address) + ", " + UuidText(uuid) + ", " +
                            std::to_string(channel) + ")");
    };
    return table;
}

struct RfcommProfile {
    static void Init(Table kind) {
        static rfcomm_callback_t whole = RfcommTable();
        static rfcomm_callback_t empty = {};
        vym_rfcomm_init(kind == Table::kNone ? nullptr : (kind == Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_rfcomm_done(); }
    static std::vector<std::string> Unknown() {
        return {"SA01", "SG", "SZ0001", "sl0001", "Sl0001", " SL0001"};
    }
    static std::vector<ProfileEvent> Events() {
        return {
            {"SMA1B2C3D4E5F6000102030405060708090A0B0C0D0E0F1E", 46,
             "channel(A1B2C3D4E5F6, 000102030405060708090A0B0C0D0E0F, 30)"},
            {"SNA1B2C3D4E5F6F00102030405060708090A0B0C0D0E0Fff", 46,
             "end(A1B2C3D4E5F6, F00102030405060708090A0B0C0D0E0F, 255)"},
            {"SE01A1B2C3D4E5F605000012340001000203040A", 32, ""},
            {"SF0000001234", 10, ""},
            {"SL0005", 4, ""},
        };
    }
};

/** A message on the data channel with its header, from numbers that fit. */
inline std::string Message(uint32_t handle, int credit, const std::string& data) {
    const auto part = [](size_t value, unsigned shift) {
        return static_cast<int>(value >> shift & 0xFF);
    };
    return Bytes({part(handle, 0), part(handle, 8), part(handle, 16), part(handle, 24), credit,
                  part(data.size(), 0), part(data.size(), 8)}) +
           data;
}

/** A result of a connection with asymmetric values: 0xTTTT sent, 0xRRRR received at most, credits 3, 7.
 */
inline std::string ConnectionResult(const std::string& handle, bool is_server = false,
                                    const std::string& channel = "05",
                                    const std::string& device = "A1B2C3D4E5F6",
                                    const std::string& status = "00") {
    return "SE" + status + device + channel + handle + "03F102A50307" + (is_server ? "01" : "00");
}

/** How often a sleeping thread has slept, as text; empty while it is awake. */
inline std::string SleepOf(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/status");
    std::string times;
    bool asleep = false;
    for (std::string line; std::getline(file, line);) {
        asleep = asleep || line.rfind("State:\tS", 0) == 0;
        times += line.find("ctxt_switches") != std::string::npos ? line : "";
    }
    return asleep ? times : "";
}

/** Waits until the thread sleeps and goes on sleeping: it is where it waits for an event. */
inline bool FallsAsleep(const std::atomic<pid_t>& thread) {
    std::string last;
    int times = 0;
    return support::WaitUntil([&] {
        const std::string now = SleepOf(thread);
        times = !now.empty() && now == last ? times + 1 : 0;
        last = now;
        return times >= 20;
    });
}

/** A call on a thread of its own, whose sleep can be seen from outside. */
template <class Result>
class Sleeper {
public:
    template <class Call>
    explicit Sleeper(Call call) {
        result_ = std::async(std::launch::async, [this, call] {
            id_ = gettid();
            return call();
        });
    }

    [[nodiscard]] bool FallsAsleep() { return wire::FallsAsleep(id_); }
    [[nodiscard]] bool IsAsleep() { return !SleepOf(id_).empty(); }

    /** What the call returned; aborts the test program when it does not return. */
    Result Get() {
        if (result_.wait_for(2 * support::TimeLimit()) != std::future_status::ready) {
            ADD_FAILURE() << "still blocked";
            std::abort(); // the thread cannot be joined any more
        }
        return result_.get();
    }

private:
    std::atomic<pid_t> id_{0};
    std::future<Result> result_;
};

class RfcommTest : public support::AdapterTest {
protected:
    void SetUp() override {
        support::AdapterTest::SetUp();
        RfcommProfile::Init(Table::kWhole);
    }
    void TearDown() override {
        RfcommProfile::Done();
        ends_.clear();
        support::AdapterTest::TearDown();
        ProfileRecord().Reset();
    }

    void Handle(const Texts& events) {
        Server().SendEvents(events);
        EXPECT_TRUE(Session().EventsAreHandled());
    }

    size_t Printed(const std::string& part) { return support::LinesWith(Output().Out(), part).size(); }

    /** A connection as a client; its result is there before the call, which ends the wait at once. */
    vym_bluetooth_socket_t* Connect(const std::string& handle = "00001234") {
        Handle({ConnectionResult(handle)});
        vym_bluetooth_socket_t* sock = vym_rfcomm_connect(kPhone, kSerialPort, 5);
        Server().ExpectCommand("AT#SEA1B2C3D4E5F6" + kSerialPortDigits + "05\r\n");
        EXPECT_NE(sock, nullptr);
        return sock;
    }

    /** Hands one end of a new pair over; the other is the server's. */
    support::SocketPair& HandOver() {
        support::SocketPair& pair = ends_.emplace_back();
        Server().Send(Event("PD0000000007"));
        Server().SendDescriptor(pair.Far());
        pair.CloseFar();
        EXPECT_TRUE(Session().EventsAreHandled());
        return pair;
    }

    static void Feed(const support::SocketPair& pair, const std::string& bytes) {
        EXPECT_TRUE(support::WriteBytes(pair.Near(), bytes));
    }

    static int Available(vym_bluetooth_socket_t* sock) { return sock->buffer->avail(sock->buffer); }
    static int Credit(vym_bluetooth_socket_t* sock) {
        return __atomic_load_n(&sock->outgoing_credit, __ATOMIC_RELAXED);
    }
    static bool IsConnected(vym_bluetooth_socket_t* sock) {
        return __atomic_load_n(&sock->connected, __ATOMIC_RELAXED) != 0;
    }

    /** Feeds messages and waits until the module has taken them all. */
    static void Deliver(const support::SocketPair& pair, vym_bluetooth_socket_t* sock,
                        const std::string& messages) {
        const int before = Credit(sock);
        Feed(pair, messages + Message(static_cast<uint32_t>(sock->handle), 1, ""));
        EXPECT_TRUE(support::WaitUntil([=] { return Credit(sock) == (before + 1) % 256; }));
    }

    /** What one read gives, or "-1 <error>". */
    static std::string Read(vym_bluetooth_socket_t* sock, size_t most = 1000) {
        std::string room(most, '\xEE');
        const ssize_t count = vym_rfcomm_read(sock, room.data(), most);
        return count < 0 ? "-1 " + std::to_string(vym_rfcomm_read_error())
                         : room.substr(0, static_cast<size_t>(count));
    }

    static ssize_t Write(vym_bluetooth_socket_t* sock, const std::string& data) {
        return vym_rfcomm_write(sock, data.data(), data.size());
    }

    /** Ends a connection and reads its socket to the end. */
    void Finish(vym_bluetooth_socket_t* sock, const std::string& handle = "00001234") {
        Handle({"SF00" + handle});
        std::string got;
        while ((got = Read(sock)) != "-1 10") {
            ASSERT_NE(got, "-1 7");
        }
    }

    vym_bluetooth_server_socket_t* Listen(const std::string& channel = "05") {
        Handle({"SL00" + channel});
        char name[] = "SPP";
        vym_bluetooth_server_socket_t* server = vym_rfcomm_listen(kSerialPort, 0, name);
        Server().ExpectCommand("AT#SL" + kSerialPortDigits + "00SPP\r\n");
        EXPECT_NE(server, nullptr);
        return server;
    }

    void CloseServer(vym_bluetooth_server_socket_t* server, const std::string& channel = "05") {
        EXPECT_EQ(vym_rfcomm_server_close(server), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#SN" + channel + "\r\n");
    }

    std::list<support::SocketPair> ends_;
};

} // namespace wire

#endif
