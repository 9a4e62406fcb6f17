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
    {"connect", [] { return vym_hfp_connect(kPhone); }},
    {"disconnect", [] { return vym_hfp_disconnect(kPhone); }},
    {"connect_audio", [] { return vym_hfp_connect_audio(kPhone); }},
    {"disconnect_audio", [] { return vym_hfp_disconnect_audio(kPhone); }},
    {"start_voice_recognition", [] { return vym_hfp_start_voice_recognition(); }},
    {"stop_voice_recognition", [] { return vym_hfp_stop_voice_recognition(); }},
    {"volume_control", [] { return vym_hfp_volume_control(1, 2); }},
    {"dial", [] { return vym_hfp_dial(s_text); }},
    {"dial_memory", [] { return vym_hfp_dial_memory(1); }},
    {"send_dtmf", [] { return vym_hfp_send_dtmf(1); }},
    {"query_last_voice_tag_name", [] { return vym_hfp_query_last_voice_tag_name(); }},
    {"switch_mic_state", [] { return vym_hfp_switch_mic_state(1); }},
    {"terminate_call", [] { return vym_hfp_terminate_call(kPhone, 0); }},
    {"terminate_call of an active call", [] { return vym_hfp_terminate_call(kPhone, 1); }},
    {"accept_call", [] { return vym_hfp_accept_call(kPhone, CALL_ACCEPT_NONE); }},
    {"reject_call", [] { return vym_hfp_reject_call(kPhone); }},
    {"handle_call_action", [] { return vym_hfp_handle_call_action(1, 2); }},
    {"query_current_calls", [] { return vym_hfp_query_current_calls(); }},
    {"query_current_operator_name", [] { return vym_hfp_query_current_operator_name(); }},
    {"retrieve_subscriber_info", [] { return vym_hfp_retrieve_subscriber_info(); }},
    {"send_at_command", [] { return vym_hfp_send_at_command(1, 2, 3, s_text); }},
    {"switch_audio_hw", [] { return vym_hfp_switch_audio_hw(1); }},
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
    memory::ExpectNothingSent(Server(), kCommands);
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
    for (int skip = 0; skip < 3; ++skip) {
        vym_hfp_done();
        {
            const FailingAllocations failing(skip, 1);
            wire::HfpProfile::Init(wire::Table::kWhole);
            EXPECT_EQ(failing.Failed(), 1);
        }
        Events({"HC01"});
        ExpectEntries({});
        vym_hfp_done();
        wire::HfpProfile::Init(wire::Table::kWhole);
        Events({"HC01"});
        ExpectEntries({"vr_cmd(1)"});
    }
}

} // namespace
