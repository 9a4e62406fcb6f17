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
    {"connect", [] { return CALL(vym_pbap_connect)({}); }, {"AT#TC000000000000\r\n"}},
    {"disconnect", [] { return CALL(vym_pbap_disconnect)({}); }, {"AT#TD000000000000\r\n"}},
    {"get_phonebook",
     [] { return CALL(vym_pbap_get_phonebook)(SYNC_OCH, 1, 2); },
     {"AT#TA0200010002\r\n"}},
    {"get_phonebook_size",
     [] { return CALL(vym_pbap_get_phonebook_size)(SYNC_OCH); },
     {"AT#TA0200000000\r\n"},
     BT_STATUS_SUCCESS},
    {"cancel_get_phonebook", [] { return CALL(vym_pbap_cancel_get_phonebook)(); }, {"AT#TW\r\n"}},
    {"filter_mask",
     [] { return CALL(vym_pbap_filter_mask)(PBAP_INFO_MASK_PHOTO); },
     {"AT#TM00000010\r\n"}},
    {"pull_vcard_by_number",
     [] { return CALL(vym_pbap_pull_vcard_by_number)(1, s_number); },
     {"AT#TN00000001123\r\n"}},
};

class PbapWithoutMemory : public wire::ProfileConformance<wire::PbapProfile> {
protected:
    void ExpectFrom(const std::string& event, const std::vector<std::string>& entries) {
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }
};

TEST_F(PbapWithoutMemory, CommandsAreNotSentAndMostSaySo) {
    memory::ExpectCommandsSurvive(Server(), kCommands);
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
    static pbap_callback_t table = wire::PbapTable();
    memory::ExpectInitSurvives(CALL(vym_pbap_init), &table, CALL(vym_pbap_done), [this](bool heard) {
        ExpectFrom("TC0001", heard ? std::vector<std::string>{"get_phonebook_status(1)"}
                                   : std::vector<std::string>{});
    });
}

} // namespace
