// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function of the serial channels and of the HID device, against the simulated world.

#include "e2e/every_function.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::Bytes;
using e2e::kLaptop;
using e2e::kPhone;
using e2e::kReceiver;

constexpr bt_uuid_t kSerialPort = GATT_UUID_FROM_16(0x1101);

class EverySerialFunction : public e2e::EveryFunction {
protected:
    /** What comes up to the end of this line. */
    static std::string ReadLine(vym_bluetooth_socket_t* socket) {
        std::string line;
        char byte = 0;
        while (line.find('\n') == std::string::npos && vym_rfcomm_read(socket, &byte, 1) == 1) {
            line += byte;
        }
        return line;
    }

    /** The server has ended the connection, and reading comes to its end. */
    ::testing::AssertionResult Ends(vym_bluetooth_socket_t* socket) {
        const ::testing::AssertionResult ended =
            Notes("-> rfcomm onRfcommDisconnectionResult status=0");
        char piece[64];
        while (ended && vym_rfcomm_read(socket, piece, sizeof piece) > 0) {
        }
        return ended;
    }
};

TEST_F(EverySerialFunction, FindsServices) {
    EXPECT_EQ(CALL(vym_rfcomm_fetch_channels)(kPhone, kSerialPort), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("rfcomm.rfcomm_fetch_channels", kPhone, kSerialPort, 11));
    EXPECT_TRUE(Hears("rfcomm.rfcomm_fetch_channels_end", kPhone, kSerialPort, 0));
}

TEST_F(EverySerialFunction, TalksToAService) {
    vym_bluetooth_socket_t* phone = CALL(vym_rfcomm_connect)(kPhone, kSerialPort, 11);
    ASSERT_NE(phone, nullptr);
    EXPECT_EQ(support::ValueText(CALL(vym_rfcomm_get_address)(phone)), "2A416E6E6101");
    const char text[] = "hello, phone\n";
    EXPECT_EQ(CALL(vym_rfcomm_write)(phone, text, strlen(text)), static_cast<ssize_t>(strlen(text)));
    char heard[sizeof text] = {};
    size_t length = 0;
    while (length < strlen(text)) {
        const ssize_t count = CALL(vym_rfcomm_read)(phone, heard + length, sizeof heard - 1 - length);
        ASSERT_GT(count, 0);
        length += static_cast<size_t>(count);
    }
    EXPECT_STREQ(heard, text) << "it echoes";
    EXPECT_EQ(CALL(vym_rfcomm_close)(phone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Ends(phone));

    vym_bluetooth_socket_t* receiver = vym_rfcomm_connect(kReceiver, kSerialPort, 1);
    ASSERT_NE(receiver, nullptr);
    EXPECT_EQ(ReadLine(receiver).substr(0, 6), "$GPGGA");
    EXPECT_EQ(CALL(vym_rfcomm_disconnect)(receiver->handle), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Ends(receiver));
    EXPECT_EQ(vym_rfcomm_connect(kReceiver, kSerialPort, 2), nullptr) << "there is no such channel";
}

TEST_F(EverySerialFunction, OffersAServiceAndEndsIt) {
    char name[] = "Echo";
    vym_bluetooth_server_socket_t* server = CALL(vym_rfcomm_listen)(kSerialPort, 5, name);
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->server_channel, 5);
    EXPECT_TRUE(Notes("offered as \"Echo\"\n"));
    vym_bluetooth_socket_t* caller = CALL(vym_rfcomm_accept)(server);
    ASSERT_NE(caller, nullptr);
    EXPECT_EQ(ReadLine(caller), "hello from Anna's phone\r\n");
    // Whoever is told this hangs up, perhaps before the call returns, which is then -1.
    vym_rfcomm_write(caller, "bye\r\n", 5);
    EXPECT_TRUE(Ends(caller));

    EXPECT_EQ(CALL(vym_rfcomm_server_close)(server), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("<- rfcomm server_disconnect channel=5\n"));
    EXPECT_EQ(Order("serial \"Anna's phone\" connect 5"),
              "error: the client has no serial server on channel 5\n");
    EXPECT_EQ(CALL(vym_rfcomm_server_disconnect)(5), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("no serial server has this channel\n"));
}

constexpr int kRegistered = 1;
constexpr int kNotRegistered = 0;
enum HidState { kHidConnected, kHidConnecting, kHidDisconnected, kHidDisconnecting };
constexpr bt_bdaddr_t kNoHost{};

class EveryHidFunction : public e2e::EveryFunction {
protected:
    void Connect() {
        uint8_t text[] = {'k', 'e', 'y'};
        EXPECT_EQ(vym_hid_register_app(0x40, 3, text, 0, nullptr, 0, nullptr, 3, text, 0, nullptr, 0,
                                       nullptr),
                  BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("hid.application_state_changed", kNoHost, kRegistered));
        EXPECT_EQ(vym_hid_connect(kLaptop), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidConnected));
    }
};

TEST_F(EveryHidFunction, RegistersConnectsSendsReportsAndDisconnects) {
    EXPECT_EQ(CALL(vym_hid_connect)(kLaptop), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidDisconnected)) << "not registered yet";
    uint8_t descriptor[] = {5, 1, 9, 6};
    EXPECT_EQ(CALL(vym_hid_register_app)(0x40, 5, Bytes("Board"), 1, Bytes("d"), 1, Bytes("p"),
                                         sizeof descriptor, descriptor, 1, Bytes("i"), 1, Bytes("o")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("\"Board\", subclass 64, report descriptor 05 01 09 06\n"));
    EXPECT_TRUE(Hears("hid.application_state_changed", kNoHost, kRegistered));
    EXPECT_EQ(vym_hid_connect(kLaptop), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidConnecting));
    EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidConnected));

    uint8_t report[] = {0, 0, 4};
    EXPECT_EQ(CALL(vym_hid_send_report)(1, 1, sizeof report, report), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("the host has a report: type 1, id 1, 3 bytes: 00 00 04\n"));
    EXPECT_EQ(CALL(vym_hid_disconnect)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidDisconnecting));
    EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidDisconnected));
    EXPECT_EQ(CALL(vym_hid_unregister_app)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hid.application_state_changed", kLaptop, kNotRegistered));
}

TEST_F(EveryHidFunction, ReportsErrorsAndUnplugs) {
    Connect();
    EXPECT_EQ(CALL(vym_hid_report_error_impl)(2), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("the device reports error 2\n"));
    EXPECT_EQ(CALL(vym_hid_unplug_impl)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hid.hid_connection_state", kLaptop, kHidDisconnected));
    EXPECT_EQ(vym_hid_unregister_app(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hid.application_state_changed", kNoHost, kNotRegistered)) << "plugged into none";
}

} // namespace
