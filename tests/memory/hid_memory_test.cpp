// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The HID device without memory: nothing is sent, and the host's data is consumed all the same.

#include "memory/profile_memory.h"
#include "support/record_text.h"
#include "support/session.h"

#include "vym_hid_event.h"

namespace {

using memory::CommandCase;
using memory::FailingAllocations;

uint8_t s_block[] = {'b'};

const CommandCase kCommands[] = {
    {"register_app",
     [] {
         return CALL(vym_hid_register_app)(0x40, 1, s_block, 1, s_block, 1, s_block, 1, s_block, 1,
                                           s_block, 1, s_block);
     },
     {"AT#DA400001b0001b0001b0001b0001b0001b\r\n"}},
    {"register_app of nothing",
     [] {
         return CALL(vym_hid_register_app)(0x40, 0, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0,
                                           nullptr, 0, nullptr);
     },
     {"AT#DA40000000000000000000000000\r\n"}},
    {"unregister_app", [] { return CALL(vym_hid_unregister_app)(); }, {"AT#DB\r\n"}},
    {"send_report",
     [] { return CALL(vym_hid_send_report)(1, 2, 1, s_block); },
     {"AT#DC01000000020001b\r\n"}},
    {"report_error", [] { return CALL(vym_hid_report_error_impl)(1); }, {"AT#DE01\r\n"}},
    {"unplug", [] { return CALL(vym_hid_unplug_impl)(); }, {"AT#DF\r\n"}},
    {"connect", [] { return CALL(vym_hid_connect)({}); }, {"AT#DG000000000000\r\n"}},
    {"disconnect", [] { return CALL(vym_hid_disconnect)(); }, {"AT#DH\r\n"}},
};

hid_callback_t s_table = {};

support::Recorder& Record() {
    static support::Recorder record;
    return record;
}

class HidWithoutMemory : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        Record().Reset();
        s_table.hid_connection_state_cb = [](bt_bdaddr_t address, int state) {
            Record().Add(support::CallText("connection", address, state));
        };
        vym_hid_init(&s_table);
    }
    void TearDown() override {
        vym_hid_done();
        AdapterTest::TearDown();
    }
    void ExpectFrom(const std::string& event, const std::vector<std::string>& entries) {
        Server().Send(support::Event(event));
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Record().Take(), entries);
    }
};

TEST_F(HidWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectCommandsSurvive(Server(), kCommands);
}

TEST_F(HidWithoutMemory, TheHostsDataIsConsumed) {
    const FailingAllocations failing;
    ExpectFrom("DE01020003abc", {});
    ExpectFrom("DG010003abc", {});
    ExpectFrom("DBA1B2C3D4E5F600000002", {"connection(A1B2C3D4E5F6, 2)"});
}

TEST_F(HidWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_hid_event_parser);
}

TEST_F(HidWithoutMemory, InitMayFailAndBeRepeated) {
    memory::ExpectInitSurvives(CALL(vym_hid_init), &s_table, CALL(vym_hid_done), [this](bool heard) {
        ExpectFrom("DBA1B2C3D4E5F600000002",
                   heard ? std::vector<std::string>{"connection(A1B2C3D4E5F6, 2)"}
                         : std::vector<std::string>{});
    });
}

} // namespace
