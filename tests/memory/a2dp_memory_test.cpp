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
    {"connect", [] { return vym_a2dp_connect({}); }},
    {"disconnect", [] { return vym_a2dp_disconnect({}); }},
    {"inform_audio_focus_state", [] { return vym_a2dp_inform_audio_focus_state(1); }},
    {"inform_audio_trace_gain", [] { return vym_a2dp_inform_audio_trace_gain(1); }},
    {"switch_audio_hw", [] { return vym_a2dp_switch_audio_hw(1); }},
};

class A2dpWithoutMemory : public wire::ProfileConformance<wire::A2dpProfile> {};

TEST_F(A2dpWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectNothingSent(Server(), kCommands);
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
    for (int skip = 0; skip < 3; ++skip) {
        vym_a2dp_done();
        {
            const FailingAllocations failing(skip, 1);
            wire::A2dpProfile::Init(wire::Table::kWhole);
            EXPECT_EQ(failing.Failed(), 1);
        }
        Server().Send(support::Event("AA55443322110002"));
        ExpectEntries({});
        vym_a2dp_done();
        wire::A2dpProfile::Init(wire::Table::kWhole);
        ExpectDelivered({"AA55443322110002", 14, "connection_state(554433221100, 2)"});
    }
}

} // namespace
