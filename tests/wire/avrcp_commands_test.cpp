// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the remote control writes. Values differ in every byte, so that a swapped
// or reversed field shows.

#include "wire/avrcp_support.h"
#include "wire/full_socket.h"

#include "vym_avrcp_impl.h"

#include <atomic>
#include <thread>

namespace {

using avrcp::kDevice;

struct CommandCase {
    const char* name;
    bt_status_t (*call)();
    std::vector<std::string_view> commands;
};

class AvrcpCommands : public avrcp::AvrcpWireTest {
protected:
    void ExpectCommands(const std::vector<CommandCase>& cases) {
        for (const CommandCase& one : cases) {
            SCOPED_TRACE(one.name);
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            for (const std::string_view command : one.commands) {
                Server().ExpectCommand(command);
            }
        }
        Server().ExpectNothingMore();
    }

    // What the call prints.
    template <typename Call>
    std::string PrintedBy(Call call) {
        const size_t before = Output().Out().size();
        EXPECT_EQ(call(), BT_STATUS_SUCCESS);
        return Output().Out().substr(before);
    }
};

TEST_F(AvrcpCommands, PlainKeysArePressedAndReleased) {
    ExpectCommands({
        {"play",
         [] { return vym_avrcp_play(kDevice); },
         {"AT#RCA1B2C3D4E5F64400\r\n", "AT#RCA1B2C3D4E5F64401\r\n"}},
        {"pause",
         [] { return vym_avrcp_pause(kDevice); },
         {"AT#RCA1B2C3D4E5F64600\r\n", "AT#RCA1B2C3D4E5F64601\r\n"}},
        {"stop",
         [] { return vym_avrcp_stop(kDevice); },
         {"AT#RCA1B2C3D4E5F64500\r\n", "AT#RCA1B2C3D4E5F64501\r\n"}},
        {"forward",
         [] { return vym_avrcp_forward(kDevice); },
         {"AT#RCA1B2C3D4E5F64B00\r\n", "AT#RCA1B2C3D4E5F64B01\r\n"}},
        {"backward",
         [] { return vym_avrcp_backward(kDevice); },
         {"AT#RCA1B2C3D4E5F64C00\r\n", "AT#RCA1B2C3D4E5F64C01\r\n"}},
        {"next_group",
         [] { return vym_avrcp_next_group(kDevice); },
         {"AT#RDA1B2C3D4E5F60000\r\n", "AT#RDA1B2C3D4E5F60001\r\n"}},
        {"previous_group",
         [] { return vym_avrcp_previous_group(kDevice); },
         {"AT#RDA1B2C3D4E5F60100\r\n", "AT#RDA1B2C3D4E5F60101\r\n"}},
    });
}

TEST_F(AvrcpCommands, TheAddressGoesFromItsLastByteToItsFirst) {
    constexpr bt_bdaddr_t address = {{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}};
    EXPECT_EQ(vym_avrcp_play(address), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RC5544332211004400\r\n");
    Server().ExpectCommand("AT#RC5544332211004401\r\n");
}

TEST_F(AvrcpCommands, HeldKeysAreReleasedByZeroAndPressedByAnythingElse) {
    ExpectCommands({
        {"fast_forward 1",
         [] { return vym_avrcp_fast_forward(kDevice, 1); },
         {"AT#RCA1B2C3D4E5F64900\r\n"}},
        {"fast_forward 0",
         [] { return vym_avrcp_fast_forward(kDevice, 0); },
         {"AT#RCA1B2C3D4E5F64901\r\n"}},
        {"fast_forward 255",
         [] { return vym_avrcp_fast_forward(kDevice, 255); },
         {"AT#RCA1B2C3D4E5F64900\r\n"}},
        {"rewind 1", [] { return vym_avrcp_rewind(kDevice, 1); }, {"AT#RCA1B2C3D4E5F64800\r\n"}},
        {"rewind 0", [] { return vym_avrcp_rewind(kDevice, 0); }, {"AT#RCA1B2C3D4E5F64801\r\n"}},
        {"rewind 2", [] { return vym_avrcp_rewind(kDevice, 2); }, {"AT#RCA1B2C3D4E5F64800\r\n"}},
    });
}

TEST_F(AvrcpCommands, HeldKeysPrintALineAndOthersDoNot) {
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_fast_forward(kDevice, 7); }), "fast forward start ....");
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_fast_forward(kDevice, 0); }), "fast forward stoped ....");
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_rewind(kDevice, 7); }), "rewind start...\r\n");
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_rewind(kDevice, 0); }), "rewind stoped ...\r\n");
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_play(kDevice); }), "");
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_next_group(kDevice); }), "");
    EXPECT_EQ(PrintedBy([] { return vym_avrcp_get_folder_list(kDevice, 0, 1); }), "");
}

// While nothing can be written, one line is there and the other is not.
TEST_F(AvrcpCommands, FastForwardPrintsBeforeItsCommandAndRewindAfterIt) {
    const std::string_view forward_command = "AT#RCA1B2C3D4E5F64900\r\n";
    const std::string_view rewind_command = "AT#RCA1B2C3D4E5F64800\r\n";
    const wire::FullSocket full(Server());
    std::thread forward([] { vym_avrcp_fast_forward(kDevice, 1); });
    EXPECT_TRUE(Output().WaitForOut("fast forward start ...."));
    std::atomic<pid_t> id{0};
    std::thread rewind([&id] {
        id = wire::ThreadId();
        vym_avrcp_rewind(kDevice, 1);
    });
    EXPECT_TRUE(support::WaitUntil([&id] { return id != 0 && support::IsAsleep(id); }));
    EXPECT_EQ(Output().Out().find("rewind"), std::string::npos);
    const std::string sent =
        Server().ReceiveBytes(full.Left() + forward_command.size() + rewind_command.size());
    EXPECT_NE(sent.find(forward_command), std::string::npos);
    EXPECT_NE(sent.find(rewind_command), std::string::npos);
    forward.join();
    rewind.join();
    EXPECT_NE(Output().Out().find("rewind start...\r\n"), std::string::npos);
}

TEST_F(AvrcpCommands, BrowsingCallsSendTheirNumbersInFixedWidth) {
    ExpectCommands({
        {"get_folder_list",
         [] { return vym_avrcp_get_folder_list(kDevice, 0x01020304, 0x0A0B0C0D); },
         {"AT#RIA1B2C3D4E5F6010203040A0B0C0D\r\n"}},
        {"get_folder_list of all",
         [] { return vym_avrcp_get_folder_list(kDevice, 0, -1); },
         {"AT#RIA1B2C3D4E5F600000000FFFFFFFF\r\n"}},
        {"get_total_number_of_items",
         [] { return vym_avrcp_get_total_number_of_items(kDevice); },
         {"AT#RKA1B2C3D4E5F6\r\n"}},
        {"get_player_list",
         [] { return vym_avrcp_get_player_list(kDevice, 0x0F, 0xF1); },
         {"AT#RMA1B2C3D4E5F60FF1\r\n"}},
        {"get_nowplaying_list",
         [] { return vym_avrcp_get_nowplaying_list(kDevice, -2, 0x10203040); },
         {"AT#ROA1B2C3D4E5F6FFFFFFFE10203040\r\n"}},
        {"set_addressed_player",
         [] { return vym_avrcp_set_addressed_player(kDevice, 0xABCD); },
         {"AT#RQA1B2C3D4E5F6ABCD\r\n"}},
        {"cancel_browsing",
         [] { return vym_avrcp_cancel_browsing(kDevice); },
         {"AT#RVA1B2C3D4E5F6\r\n"}},
        {"connect_bip",
         [] { return vym_avrcp_connect_bip(kDevice, 0x1005); },
         {"AT#RZAA1B2C3D4E5F600001005\r\n"}},
        {"connect_bip with a negative number",
         [] { return vym_avrcp_connect_bip(kDevice, -3); },
         {"AT#RZAA1B2C3D4E5F6FFFFFFFD\r\n"}},
    });
}

TEST_F(AvrcpCommands, VolumeAnswersWithoutARequestCarryLabelZero) {
    ExpectCommands({
        {"send_abs_vol_rsp",
         [] { return vym_avrcp_send_abs_vol_rsp(kDevice, 0x7E); },
         {"AT#RGA1B2C3D4E5F67E00\r\n"}},
        {"send_register_abs_val_rsp",
         [] { return vym_avrcp_send_register_abs_val_rsp(kDevice, 0x0D, 0x5A); },
         {"AT#RHA1B2C3D4E5F60D5A00\r\n"}},
    });
}

TEST_F(AvrcpCommands, TheServersOwnCommandsCanBeBuilt) {
    ExpectCommands({
        {"connect", [] { return vym_avrcp_connect_impl(kDevice); }, {"AT#RAA1B2C3D4E5F6\r\n"}},
        {"disconnect", [] { return vym_avrcp_disconnect_impl(kDevice); }, {"AT#RBA1B2C3D4E5F6\r\n"}},
        {"playback state",
         [] { return vym_avrcp_get_playback_state_impl(kDevice); },
         {"AT#RNA1B2C3D4E5F6\r\n"}},
        {"browsed player",
         [] { return vym_avrcp_set_browsed_player_impl(kDevice, 0x1A2B); },
         {"AT#RPA1B2C3D4E5F61A2B\r\n"}},
    });
}

} // namespace
