// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Music without memory: nothing is sent, and events arrive all the same.

#include "memory/profile_memory.h"
#include "wire/a2dp_profile.h"

#include "vym_a2dp_event.h"

namespace {

using memory::CommandCase;
using memory::FailingAllocations;

const CommandCase kCommands[] = {
    {"connect", [] { return CALL(vym_a2dp_connect)({}); }, {"AT#AA000000000000\r\n"}},
    {"disconnect", [] { return CALL(vym_a2dp_disconnect)({}); }, {"AT#AB000000000000\r\n"}},
    {"inform_audio_focus_state", [] { return vym_a2dp_inform_audio_focus_state(1); }, {"AT#AC01\r\n"}},
    {"inform_audio_trace_gain", [] { return vym_a2dp_inform_audio_trace_gain(1); }, {"AT#AD0001\r\n"}},
    {"switch_audio_hw", [] { return CALL(vym_a2dp_switch_audio_hw)(1); }, {"AT#AQ01\r\n"}},
};

class A2dpWithoutMemory : public wire::ProfileConformance<wire::A2dpProfile> {};

TEST_F(A2dpWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectCommandsSurvive(Server(), kCommands);
}

TEST_F(A2dpWithoutMemory, EventsArrive) {
    const FailingAllocations failing;
    for (const wire::ProfileEvent& one : wire::A2dpProfile::Events()) {
        ExpectDelivered(one);
    }
}

TEST_F(A2dpWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_a2dp_event_parser);
}

TEST_F(A2dpWithoutMemory, InitMayFailAndBeRepeated) {
    static a2dp_callback_t table = wire::A2dpTable();
    memory::ExpectInitSurvives(CALL(vym_a2dp_init), &table, CALL(vym_a2dp_done), [this](bool heard) {
        Server().Send(support::Event("AA55443322110002"));
        ExpectEntries(heard ? std::vector<std::string>{"connection_state(554433221100, 2)"}
                            : std::vector<std::string>{});
    });
}

} // namespace
