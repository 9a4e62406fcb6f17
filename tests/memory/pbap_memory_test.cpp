// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The phone book without memory: nothing is sent, entries arrive all the same, and a phone for which
// there is no room is not counted.

#include "memory/profile_memory.h"
#include "wire/pbap_profile.h"

#include "vym_pbap_event.h"
#include "vym_pbap_queue.h"

namespace {

using memory::CommandCase;
using memory::FailingAllocations;

char s_number[] = "123";

const CommandCase kCommands[] = {
    {"connect", [] { return vym_pbap_connect({}); }, BT_STATUS_NOMEM},
    {"disconnect", [] { return vym_pbap_disconnect({}); }, BT_STATUS_NOMEM},
    {"get_phonebook", [] { return vym_pbap_get_phonebook(SYNC_OCH, 1, 2); }, BT_STATUS_NOMEM},
    {"get_phonebook_size", [] { return vym_pbap_get_phonebook_size(SYNC_OCH); }, BT_STATUS_SUCCESS},
    {"cancel_get_phonebook", [] { return vym_pbap_cancel_get_phonebook(); }, BT_STATUS_NOMEM},
    {"filter_mask", [] { return vym_pbap_filter_mask(PBAP_INFO_MASK_PHOTO); }, BT_STATUS_NOMEM},
    {"pull_vcard_by_number", [] { return vym_pbap_pull_vcard_by_number(1, s_number); },
     BT_STATUS_NOMEM},
};

class PbapWithoutMemory : public wire::ProfileConformance<wire::PbapProfile> {
protected:
    void ExpectFrom(const std::string& event, const std::vector<std::string>& entries) {
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }
};

TEST_F(PbapWithoutMemory, CommandsAreNotSentAndMostSaySo) {
    memory::ExpectNothingSent(Server(), kCommands);
}

TEST_F(PbapWithoutMemory, EntriesAndPhotographsArriveWhole) {
    const FailingAllocations failing;
    for (const wire::ProfileEvent& one : wire::PbapProfile::Events()) {
        ExpectDelivered(one);
    }
}

TEST_F(PbapWithoutMemory, APhoneIsToldButNotCounted) {
    {
        const FailingAllocations failing;
        ExpectFrom("TS00A1B2C3D4E5F6", {"connection_status(0, A1B2C3D4E5F6)"});
        EXPECT_EQ(failing.Failed(), 1);
    }
    EXPECT_EQ(vym_pbap_is_connected(), 0);
    ExpectFrom("TS00A1B2C3D4E5F6", {"connection_status(0, A1B2C3D4E5F6)"});
    EXPECT_EQ(vym_pbap_is_connected(), 1);
    EXPECT_EQ(Output().Out().find("connection state error"), std::string::npos);
}

TEST_F(PbapWithoutMemory, AnEventIsNotScheduled) {
    start_pbap_queue();
    {
        const FailingAllocations failing;
        schedule_pbap_event(1, nullptr);
        EXPECT_EQ(failing.Failed(), 1);
    }
    int posts = -1;
    EXPECT_EQ(sem_getvalue(&sem, &posts), 0);
    EXPECT_EQ(posts, 0);
    EXPECT_EQ(readfrom_pbap_queue(), nullptr);
    stop_pbap_queue();
}

TEST_F(PbapWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_pbap_event_parser);
}

TEST_F(PbapWithoutMemory, InitMayFailAndBeRepeated) {
    for (int skip = 0; skip < 3; ++skip) {
        vym_pbap_done();
        {
            const FailingAllocations failing(skip, 1);
            wire::PbapProfile::Init(wire::Table::kWhole);
            EXPECT_EQ(failing.Failed(), 1);
        }
        ExpectFrom("TC0001", {});
        vym_pbap_done();
        wire::PbapProfile::Init(wire::Table::kWhole);
        ExpectFrom("TC0001", {"get_phonebook_status(1)"});
    }
}

} // namespace
