// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial module's commands, byte by byte, and its events as far as the application sees them.

#include "wire/rfcomm_support.h"

#include <cstddef>

namespace wire {
INSTANTIATE_TYPED_TEST_SUITE_P(Rfcomm, ProfileConformance, RfcommProfile, );
} // namespace wire

namespace {

using wire::kPhone;
using wire::kSerialPort;

constexpr bt_uuid_t kCounting = {
    {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};

class RfcommCommands : public wire::RfcommTest {};

struct CommandCase {
    const char* name;
    bt_status_t (*call)();
    const char* command;
};

char s_name[] = "SPP";
char s_long_name[] = "A name of more than sixty-three characters, the record cuts it, the command "
                     "does not";

const CommandCase kCommands[] = {
    {"connect_impl", [] { return vym_rfcomm_connect_impl(kPhone, kCounting, 0x1E); },
     "AT#SEA1B2C3D4E5F6FFEEDDCCBBAA998877665544332211001E\r\n"},
    {"disconnect", [] { return vym_rfcomm_disconnect(0x1234); }, "AT#SF00001234\r\n"},
    {"disconnect, negative", [] { return vym_rfcomm_disconnect(-2); }, "AT#SFFFFFFFFE\r\n"},
    {"listen_impl", [] { return vym_rfcomm_listen_impl(kSerialPort, 0, s_name); },
     "AT#SLFB349B5F80000080001000000111000000SPP\r\n"},
    {"listen_impl without a name", [] { return vym_rfcomm_listen_impl(kCounting, 0xFF, nullptr); },
     "AT#SLFFEEDDCCBBAA99887766554433221100FF\r\n"},
    {"listen_impl with a long name", [] { return vym_rfcomm_listen_impl(kCounting, 1, s_long_name); },
     "AT#SLFFEEDDCCBBAA9988776655443322110001A name of more than sixty-three characters, the record "
     "cuts it, the command does not\r\n"},
    {"fetch_channels", [] { return vym_rfcomm_fetch_channels(kPhone, kCounting); },
     "AT#SMA1B2C3D4E5F6FFEEDDCCBBAA99887766554433221100\r\n"},
    {"server_disconnect", [] { return vym_rfcomm_server_disconnect(3); }, "AT#SN03\r\n"},
    {"server_disconnect, high", [] { return vym_rfcomm_server_disconnect(0xAB); }, "AT#SNAB\r\n"},
};

TEST_F(RfcommCommands, EachIsWrittenAsItIsDefined) {
    for (const CommandCase& one : kCommands) {
        SCOPED_TRACE(one.name);
        EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
        Server().ExpectCommand(one.command);
    }
    Server().ExpectNothingMore();
}

TEST_F(RfcommCommands, ANameThatWouldBreakTheLineIsRefused) {
    for (const char* bad : {"S\rPP", "S\nPP", "SPP\r\n", "\n"}) {
        std::string name = bad;
        EXPECT_EQ(vym_rfcomm_listen_impl(kSerialPort, 0, name.data()), BT_STATUS_FAIL);
        EXPECT_EQ(vym_rfcomm_listen(kSerialPort, 0, name.data()), nullptr);
    }
    Server().ExpectNothingMore();
}

TEST_F(RfcommCommands, NullPointersAreAnsweredAndNothingIsSent) {
    char room = 0;
    EXPECT_EQ(vym_rfcomm_close(nullptr), BT_STATUS_PARM_INVALID);
    EXPECT_EQ(vym_rfcomm_server_close(nullptr), BT_STATUS_PARM_INVALID);
    EXPECT_EQ(vym_rfcomm_accept(nullptr), nullptr);
    EXPECT_EQ(vym_rfcomm_read(nullptr, &room, 1), -1);
    EXPECT_EQ(vym_rfcomm_read_error(), BT_STATUS_PARM_INVALID);
    EXPECT_EQ(vym_rfcomm_write(nullptr, &room, 1), -1);
    EXPECT_EQ(support::ValueText(vym_rfcomm_get_address(nullptr)), "000000000000");
    Server().ExpectNothingMore();
}

TEST_F(RfcommCommands, ACopyOfASocketNamesItsConnection) {
    vym_bluetooth_socket_t copy = {};
    copy.address = kPhone;
    copy.handle = 0x1234;
    EXPECT_EQ(support::ValueText(vym_rfcomm_get_address(&copy)), "A1B2C3D4E5F6");
    EXPECT_EQ(vym_rfcomm_close(&copy), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#SF00001234\r\n");
    char room = 0;
    EXPECT_EQ(vym_rfcomm_read(&copy, &room, 1), -1) << "there is nothing behind it";
    EXPECT_EQ(vym_rfcomm_read_error(), BT_STATUS_PARM_INVALID);
}

TEST_F(RfcommCommands, AShortConnectionResultIsDeliveredWithWhatItHas) {
    const std::string fields = "00A1B2C3D4E5F605000012340001000203040A";
    for (size_t length = 32; length < 38; ++length) {
        SCOPED_TRACE(length);
        // What follows must not be read as the missing digits.
        Server().Send(support::Event("SE" + fields.substr(0, length)) + support::Event("FFFFFF") +
                      support::Event("SL0009"));
        EXPECT_TRUE(Session().EventsAreHandled());
    }
    const std::string line = "on_rfcomm_connection_result_cbk(status:0, address[F6:E5:D4:C3:B2:A1], "
                             "server_channel:5, handle:0x1234, max_tx:1, max_rx:2.credit_in:";
    EXPECT_EQ(
        support::LinesWith(Output().Out(), line),
        (wire::Texts{line + "0, credit_out:0,is_server:0", line + "0, credit_out:0,is_server:0",
                     line + "3, credit_out:0,is_server:0", line + "3, credit_out:0,is_server:0",
                     line + "3, credit_out:4,is_server:0", line + "3, credit_out:4,is_server:0"}));
    EXPECT_EQ(Printed("on_rfcomm_listen_result_cbk(status:0), server_channel:9."), 6U);
}

TEST_F(RfcommCommands, ACompleteConnectionResultNeedsNoEnd) {
    Server().Send("SE01A1B2C3D4E5F60500001234000100020304");
    EXPECT_TRUE(Server().ClientHasRead());
    EXPECT_EQ(Printed("on_rfcomm_connection_result_cbk"), 0U) << "its last field is not there yet";
    Server().Send("0A");
    EXPECT_TRUE(Output().WaitForOut("credit_out:4,is_server:10\n"));
    Server().Send("SL0001" + support::Event(""));
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Printed("on_rfcomm_listen_result_cbk"), 0U) << "surplus is no event";
}

TEST_F(RfcommCommands, WhatTheEventsDoIsPrinted) {
    Handle({"SE0AA1B2C3D4E5F61E8000000003F102A5030700", "SF0700001234", "SL010C"});
    const std::string out = Output().Out();
    for (const char* line : {
             "on_rfcomm_connection_result_cbk(status:10, address[F6:E5:D4:C3:B2:A1], "
             "server_channel:30, handle:0x7fffffff, max_tx:1009, max_rx:677.credit_in:3, "
             "credit_out:7,is_server:0\n",
             "on_rfcomm_disconnection_result_cbk(status:7, handle:0x1234).\n",
             "on_rfcomm_listen_result_cbk(status:1), server_channel:12.\n",
         }) {
        EXPECT_NE(out.find(line), std::string::npos) << line << "\n" << out;
    }
}

TEST_F(RfcommCommands, TheRecordsMembersComeInTheirOrder) {
    const std::vector<size_t> socket = {offsetof(vym_bluetooth_socket_t, status),
                                        offsetof(vym_bluetooth_socket_t, address),
                                        offsetof(vym_bluetooth_socket_t, server_handle),
                                        offsetof(vym_bluetooth_socket_t, incoming_credit),
                                        offsetof(vym_bluetooth_socket_t, outgoing_credit),
                                        offsetof(vym_bluetooth_socket_t, incoming_mfs),
                                        offsetof(vym_bluetooth_socket_t, outgoing_mfs),
                                        offsetof(vym_bluetooth_socket_t, handle),
                                        offsetof(vym_bluetooth_socket_t, connected),
                                        offsetof(vym_bluetooth_socket_t, buffer)};
    EXPECT_EQ(socket, (std::vector<size_t>{0, 1, 7, 8, 9, 10, 12, 16, 20, 24}));
    EXPECT_EQ(offsetof(vym_bluetooth_server_socket_t, uuid), 1U);
    EXPECT_EQ(offsetof(vym_bluetooth_server_socket_t, server_channel), 17U);
    EXPECT_EQ(offsetof(vym_bluetooth_server_socket_t, service_name), 18U);
    EXPECT_EQ(sizeof(vym_bluetooth_server_socket_t), 82U);
}

} // namespace
