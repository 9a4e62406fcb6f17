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
    {"play",
     [] { return CALL(vym_avrcp_play)(kDevice); },
     {"AT#RCA1B2C3D4E5F64400\r\n", "AT#RCA1B2C3D4E5F64401\r\n"},
     BT_STATUS_SUCCESS},
    {"pause",
     [] { return CALL(vym_avrcp_pause)(kDevice); },
     {"AT#RCA1B2C3D4E5F64600\r\n", "AT#RCA1B2C3D4E5F64601\r\n"},
     BT_STATUS_SUCCESS},
    {"stop",
     [] { return CALL(vym_avrcp_stop)(kDevice); },
     {"AT#RCA1B2C3D4E5F64500\r\n", "AT#RCA1B2C3D4E5F64501\r\n"},
     BT_STATUS_SUCCESS},
    {"forward",
     [] { return CALL(vym_avrcp_forward)(kDevice); },
     {"AT#RCA1B2C3D4E5F64B00\r\n", "AT#RCA1B2C3D4E5F64B01\r\n"},
     BT_STATUS_SUCCESS},
    {"backward",
     [] { return CALL(vym_avrcp_backward)(kDevice); },
     {"AT#RCA1B2C3D4E5F64C00\r\n", "AT#RCA1B2C3D4E5F64C01\r\n"},
     BT_STATUS_SUCCESS},
    {"fast_forward",
     [] { return CALL(vym_avrcp_fast_forward)(kDevice, 1); },
     {"AT#RCA1B2C3D4E5F64900\r\n"},
     BT_STATUS_SUCCESS},
    {"rewind",
     [] { return CALL(vym_avrcp_rewind)(kDevice, 1); },
     {"AT#RCA1B2C3D4E5F64800\r\n"},
     BT_STATUS_SUCCESS},
    {"next_group",
     [] { return CALL(vym_avrcp_next_group)(kDevice); },
     {"AT#RDA1B2C3D4E5F60000\r\n", "AT#RDA1B2C3D4E5F60001\r\n"},
     BT_STATUS_SUCCESS},
    {"previous_group",
     [] { return CALL(vym_avrcp_previous_group)(kDevice); },
     {"AT#RDA1B2C3D4E5F60100\r\n", "AT#RDA1B2C3D4E5F60101\r\n"},
     BT_STATUS_SUCCESS},
    {"get_player_list",
     [] { return CALL(vym_avrcp_get_player_list)(kDevice, 0, 1); },
     {"AT#RMA1B2C3D4E5F60001\r\n"},
     BT_STATUS_SUCCESS},
    {"get_nowplaying_list",
     [] { return CALL(vym_avrcp_get_nowplaying_list)(kDevice, 0, 1); },
     {"AT#ROA1B2C3D4E5F60000000000000001\r\n"},
     BT_STATUS_SUCCESS},
    {"set_addressed_player",
     [] { return CALL(vym_avrcp_set_addressed_player)(kDevice, 1); },
     {"AT#RQA1B2C3D4E5F60001\r\n"},
     BT_STATUS_SUCCESS},
    {"get_player_app_setting",
     [] { return CALL(vym_avrcp_get_player_app_setting)(kDevice, 1, 1, s_block); },
     {"AT#REA1B2C3D4E5F6010001b\r\n"}},
    {"set_player_app_setting",
     [] {
         return CALL(vym_avrcp_set_player_app_setting)(kDevice, {1, &s_pair});
     },
     {"AT#RFA1B2C3D4E5F6010002\x01\x02\r\n"}},
    {"send_abs_vol_rsp",
     [] { return CALL(vym_avrcp_send_abs_vol_rsp)(kDevice, 1); },
     {"AT#RGA1B2C3D4E5F60100\r\n"}},
    {"send_register_abs_val_rsp",
     [] { return CALL(vym_avrcp_send_register_abs_val_rsp)(kDevice, 1, 1); },
     {"AT#RHA1B2C3D4E5F6010100\r\n"}},
    {"get_folder_list",
     [] { return CALL(vym_avrcp_get_folder_list)(kDevice, 0, 1); },
     {"AT#RIA1B2C3D4E5F60000000000000001\r\n"}},
    {"change_folder_path",
     [] { return CALL(vym_avrcp_change_folder_path)(kDevice, 1, 1, s_block); },
     {"AT#RJA1B2C3D4E5F6010001b\r\n"}},
    {"get_total_number_of_items",
     [] { return CALL(vym_avrcp_get_total_number_of_items)(kDevice); },
     {"AT#RKA1B2C3D4E5F6\r\n"}},
    {"play_item",
     [] { return CALL(vym_avrcp_play_item)(kDevice, 1, 1, s_block); },
     {"AT#RLA1B2C3D4E5F6010001b\r\n"}},
    {"cancel_browsing",
     [] { return CALL(vym_avrcp_cancel_browsing)(kDevice); },
     {"AT#RVA1B2C3D4E5F6\r\n"}},
    {"connect_bip",
     [] { return CALL(vym_avrcp_connect_bip)(kDevice, 1); },
     {"AT#RZAA1B2C3D4E5F600000001\r\n"}},
    {"get_element_attribute",
     [] { return CALL(vym_avrcp_get_element_attribute)(kDevice, 1, 1, s_block); },
     {"AT#RZBA1B2C3D4E5F6000000010001b\r\n"}},
    {"get_element_attribute of none",
     [] { return CALL(vym_avrcp_get_element_attribute)(kDevice, 0, 0, nullptr); },
     {"AT#RZBA1B2C3D4E5F6000000000000\r\n"}},
    {"get_linked_thumbnail",
     [] { return CALL(vym_avrcp_get_linked_thumbnail)(kDevice, 1, s_block, 1, s_block); },
     {"AT#RZCA1B2C3D4E5F60001b0001b\r\n"}},
    {"get_image",
     [] {
         return CALL(vym_avrcp_get_image)(kDevice, 1, 1, s_block, 1, s_block, 1, s_block, 1, s_block);
     },
     {"AT#RZDA1B2C3D4E5F6000000010001b0001b0001b0001b\r\n"}},
};

class AvrcpWithoutMemory : public avrcp::AvrcpWireTest {};

TEST_F(AvrcpWithoutMemory, CommandsAreNotSentAndSomeSaySo) {
    memory::ExpectCommandsSurvive(Server(), kCommands);
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
    memory::ExpectInitSurvives(
        CALL(vym_avrcp_init), avrcp::RecordingTable(), CALL(vym_avrcp_done), [this](bool heard) {
            ExpectDelivered("RA4401", heard ? std::vector<std::string>{"handle_passthrough_rsp(68, 1)"}
                                            : std::vector<std::string>{});
        });
}

} // namespace
