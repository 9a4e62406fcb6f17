// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The remote control without memory: nothing is sent, some calls say so and some never do, and lists
// arrive whole, for their entries need none.

#include "memory/profile_memory.h"
#include "wire/avrcp_support.h"

#include "vym_avrcp_event.h"

namespace {

using avrcp::kDevice;
using memory::CommandCase;
using memory::FailingAllocations;

uint8_t s_block[] = {'b'};
AVRCP_IDPairStru s_pair = {1, 2};

const CommandCase kCommands[] = {
    {"play", [] { return vym_avrcp_play(kDevice); }, BT_STATUS_SUCCESS},
    {"pause", [] { return vym_avrcp_pause(kDevice); }, BT_STATUS_SUCCESS},
    {"stop", [] { return vym_avrcp_stop(kDevice); }, BT_STATUS_SUCCESS},
    {"forward", [] { return vym_avrcp_forward(kDevice); }, BT_STATUS_SUCCESS},
    {"backward", [] { return vym_avrcp_backward(kDevice); }, BT_STATUS_SUCCESS},
    {"fast_forward", [] { return vym_avrcp_fast_forward(kDevice, 1); }, BT_STATUS_SUCCESS},
    {"rewind", [] { return vym_avrcp_rewind(kDevice, 1); }, BT_STATUS_SUCCESS},
    {"next_group", [] { return vym_avrcp_next_group(kDevice); }, BT_STATUS_SUCCESS},
    {"previous_group", [] { return vym_avrcp_previous_group(kDevice); }, BT_STATUS_SUCCESS},
    {"get_player_list", [] { return vym_avrcp_get_player_list(kDevice, 0, 1); }, BT_STATUS_SUCCESS},
    {"get_nowplaying_list", [] { return vym_avrcp_get_nowplaying_list(kDevice, 0, 1); },
     BT_STATUS_SUCCESS},
    {"set_addressed_player", [] { return vym_avrcp_set_addressed_player(kDevice, 1); },
     BT_STATUS_SUCCESS},
    {"get_player_app_setting", [] { return vym_avrcp_get_player_app_setting(kDevice, 1, 1, s_block); },
     BT_STATUS_NOMEM},
    {"set_player_app_setting",
     [] {
         return vym_avrcp_set_player_app_setting(kDevice, {1, &s_pair});
     },
     BT_STATUS_NOMEM},
    {"send_abs_vol_rsp", [] { return vym_avrcp_send_abs_vol_rsp(kDevice, 1); }, BT_STATUS_NOMEM},
    {"send_register_abs_val_rsp", [] { return vym_avrcp_send_register_abs_val_rsp(kDevice, 1, 1); },
     BT_STATUS_NOMEM},
    {"get_folder_list", [] { return vym_avrcp_get_folder_list(kDevice, 0, 1); }, BT_STATUS_NOMEM},
    {"change_folder_path", [] { return vym_avrcp_change_folder_path(kDevice, 1, 1, s_block); },
     BT_STATUS_NOMEM},
    {"get_total_number_of_items", [] { return vym_avrcp_get_total_number_of_items(kDevice); },
     BT_STATUS_NOMEM},
    {"play_item", [] { return vym_avrcp_play_item(kDevice, 1, 1, s_block); }, BT_STATUS_NOMEM},
    {"cancel_browsing", [] { return vym_avrcp_cancel_browsing(kDevice); }, BT_STATUS_NOMEM},
    {"connect_bip", [] { return vym_avrcp_connect_bip(kDevice, 1); }, BT_STATUS_NOMEM},
    {"get_element_attribute", [] { return vym_avrcp_get_element_attribute(kDevice, 1, 1, s_block); },
     BT_STATUS_NOMEM},
    {"get_element_attribute of none",
     [] { return vym_avrcp_get_element_attribute(kDevice, 0, 0, nullptr); }, BT_STATUS_NOMEM},
    {"get_linked_thumbnail",
     [] { return vym_avrcp_get_linked_thumbnail(kDevice, 1, s_block, 1, s_block); }, BT_STATUS_NOMEM},
    {"get_image",
     [] { return vym_avrcp_get_image(kDevice, 1, 1, s_block, 1, s_block, 1, s_block, 1, s_block); },
     BT_STATUS_NOMEM},
};

class AvrcpWithoutMemory : public avrcp::AvrcpWireTest {};

TEST_F(AvrcpWithoutMemory, CommandsAreNotSentAndSomeSaySo) {
    memory::ExpectNothingSent(Server(), kCommands);
}

TEST_F(AvrcpWithoutMemory, AKeyThatCannotBePressedIsReleased) {
    {
        const FailingAllocations failing(0, 1);
        EXPECT_EQ(vym_avrcp_play(kDevice), BT_STATUS_SUCCESS);
    }
    Server().ExpectCommand("AT#RCA1B2C3D4E5F64401\r\n");
    Server().ExpectNothingMore();
}

TEST_F(AvrcpWithoutMemory, ALabelIsSpentOnAnAnswerThatIsNotSent) {
    Handle({"RHA1B2C3D4E5F6407B"});
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_avrcp_send_abs_vol_rsp(kDevice, 1), BT_STATUS_NOMEM);
    }
    EXPECT_EQ(vym_avrcp_send_abs_vol_rsp(kDevice, 1), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RGA1B2C3D4E5F60100\r\n");
}

TEST_F(AvrcpWithoutMemory, EventsArriveWhole) {
    const FailingAllocations failing;
    for (const avrcp::EventCase& one : avrcp::AllEvents()) {
        ExpectDelivered(one.event, one.Entries());
    }
}

TEST_F(AvrcpWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_avrcp_event_parser);
}

TEST_F(AvrcpWithoutMemory, InitMayFailAndBeRepeated) {
    for (int skip = 0; skip < 3; ++skip) {
        vym_avrcp_done();
        {
            const FailingAllocations failing(skip, 1);
            vym_avrcp_init(avrcp::RecordingTable());
            EXPECT_EQ(failing.Failed(), 1);
        }
        ExpectDelivered("RA4401", {});
        vym_avrcp_done();
        vym_avrcp_init(avrcp::RecordingTable());
        ExpectDelivered("RA4401", {"handle_passthrough_rsp(68, 1)"});
    }
}

} // namespace
