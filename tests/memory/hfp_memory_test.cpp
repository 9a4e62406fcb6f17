// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The hands-free unit without memory: nothing is sent, and the list of calls is kept all the same.

#include "memory/profile_memory.h"
#include "wire/hfp_profile.h"

#include "vym_hfp_event.h"

namespace {

using memory::CommandCase;
using memory::FailingAllocations;

constexpr bt_bdaddr_t kPhone = {{1, 2, 3, 4, 5, 6}};
char s_text[] = "123";

const CommandCase kCommands[] = {
    {"connect", [] { return CALL(vym_hfp_connect)(kPhone); }, {"AT#HA060504030201\r\n"}},
    {"disconnect", [] { return CALL(vym_hfp_disconnect)(kPhone); }, {"AT#HB060504030201\r\n"}},
    {"connect_audio", [] { return CALL(vym_hfp_connect_audio)(kPhone); }, {"AT#HC060504030201\r\n"}},
    {"disconnect_audio",
     [] { return CALL(vym_hfp_disconnect_audio)(kPhone); },
     {"AT#HD060504030201\r\n"}},
    {"start_voice_recognition", [] { return CALL(vym_hfp_start_voice_recognition)(); }, {"AT#HE\r\n"}},
    {"stop_voice_recognition", [] { return CALL(vym_hfp_stop_voice_recognition)(); }, {"AT#HF\r\n"}},
    {"volume_control", [] { return CALL(vym_hfp_volume_control)(1, 2); }, {"AT#HG010002\r\n"}},
    {"dial", [] { return CALL(vym_hfp_dial)(s_text); }, {"AT#HH123\r\n"}},
    {"dial_memory", [] { return CALL(vym_hfp_dial_memory)(1); }, {"AT#HI01\r\n"}},
    {"send_dtmf", [] { return CALL(vym_hfp_send_dtmf)(1); }, {"AT#HN01\r\n"}},
    {"query_last_voice_tag_name",
     [] { return CALL(vym_hfp_query_last_voice_tag_name)(); },
     {"AT#HO\r\n"}},
    {"switch_mic_state", [] { return CALL(vym_hfp_switch_mic_state)(1); }, {"AT#HR01\r\n"}},
    {"terminate_call", [] { return CALL(vym_hfp_terminate_call)(kPhone, 0); }, {"AT#HJ0800\r\n"}},
    {"terminate_call of an active call",
     [] { return CALL(vym_hfp_terminate_call)(kPhone, 1); },
     {"AT#HJ0501\r\n"}},
    {"accept_call",
     [] { return CALL(vym_hfp_accept_call)(kPhone, CALL_ACCEPT_NONE); },
     {"AT#HJ0700\r\n"}},
    {"reject_call", [] { return CALL(vym_hfp_reject_call)(kPhone); }, {"AT#HJ0800\r\n"}},
    {"handle_call_action", [] { return vym_hfp_handle_call_action(1, 2); }, {"AT#HJ0102\r\n"}},
    {"query_current_calls", [] { return vym_hfp_query_current_calls(); }, {"AT#HK\r\n"}},
    {"query_current_operator_name",
     [] { return vym_hfp_query_current_operator_name(); },
     {"AT#HL\r\n"}},
    {"retrieve_subscriber_info", [] { return vym_hfp_retrieve_subscriber_info(); }, {"AT#HM\r\n"}},
    {"send_at_command",
     [] { return vym_hfp_send_at_command(1, 2, 3, s_text); },
     {"AT#HP000100020003123\r\n"}},
    {"switch_audio_hw", [] { return vym_hfp_switch_audio_hw(1); }, {"AT#HQ01\r\n"}},
};

class HfpWithoutMemory : public wire::ProfileConformance<wire::HfpProfile> {
protected:
    void Events(const std::vector<std::string>& events) {
        for (const std::string& event : events) {
            Server().Send(support::Event(event));
        }
    }
};

TEST_F(HfpWithoutMemory, CommandsAreNotSentAndSaySo) {
    Events({"HX09", "HO01000000111", "HO02000400222", "HQ0015"});
    EXPECT_TRUE(Session().EventsAreHandled());
    Server().ExpectCommand("AT#HK\r\n");
    memory::ExpectCommandsSurvive(Server(), kCommands);
}

TEST_F(HfpWithoutMemory, TheOperatorIsNotAskedForAndTheApplicationHearsOfItsNetwork) {
    {
        const FailingAllocations failing;
        Events({"HD01"});
        ExpectEntries({"network_state(1)"});
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectNothingMore();
}

TEST_F(HfpWithoutMemory, AQueryThatWasNotSentRunsUntilItsEndAllTheSame) {
    {
        const FailingAllocations failing;
        Events({"HX09"});
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(failing.Failed(), 1);
    }
    Events({"HX09"});
    EXPECT_TRUE(Session().EventsAreHandled());
    Server().ExpectNothingMore();
    Events({"HQ0115", "HX09"});
    Server().ExpectCommand("AT#HK\r\n");
}

TEST_F(HfpWithoutMemory, CallsArriveAndAreReportedEnded) {
    Events({"HX09"});
    Server().ExpectCommand("AT#HK\r\n");
    const FailingAllocations failing;
    Events({"HO01000000111", "HQ0015", "HA0000000003000001FFA1B2C3D4E5F6"});
    ExpectEntries({"call(1, 0, 0, 0, \"111\")", "call_action_complete(21, 0)", "current_call_num(1)",
                   "call(1, 0, 7, 0, \"111\")", "connection_state(0, 3, 511, A1B2C3D4E5F6)"});
}

TEST_F(HfpWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_hfp_event_parser);
}

TEST_F(HfpWithoutMemory, InitMayFailAndBeRepeated) {
    static hfp_callback_t table = wire::HfpTable();
    memory::ExpectInitSurvives(CALL(vym_hfp_init), &table, CALL(vym_hfp_done), [this](bool heard) {
        Events({"HC01"});
        ExpectEntries(heard ? std::vector<std::string>{"vr_cmd(1)"} : std::vector<std::string>{});
    });
}

} // namespace
