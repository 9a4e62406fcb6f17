// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT server without memory: nothing is sent, and what is written still arrives.

#include "memory/profile_memory.h"
#include "support/record_text.h"
#include "support/session.h"

#include "vym_gatt_server_event.h"

namespace {

using memory::CommandCase;
using memory::FailingAllocations;

constexpr bt_bdaddr_t kRemote = {{1, 2, 3, 4, 5, 6}};
uint8_t s_value[] = {'v'};

const CommandCase kCommands[] = {
    {"register_client", [] { return vym_gatt_server_register_client({}, nullptr); }},
    {"unregister_client", [] { return vym_gatt_server_unregister_client(1); }},
    {"register_app", [] { return vym_gatt_server_register_app({}); }},
    {"unregister_app", [] { return vym_gatt_server_unregister_app(1); }},
    {"connect", [] { return vym_gatt_server_connect(1, kRemote, 1); }},
    {"disconnect", [] { return vym_gatt_server_disconnect(1, kRemote, 1); }},
    {"add_service", [] { return vym_gatt_server_add_service(1, 0, 0, {}, 4); }},
    {"add_included_service", [] { return vym_gatt_server_add_included_service(1, 2, 3); }},
    {"add_characteristic", [] { return vym_gatt_server_add_characteristic(1, 2, {}, 3, 4); }},
    {"add_descriptor", [] { return vym_gatt_server_add_descriptor(1, 2, {}, 3); }},
    {"start_service", [] { return vym_gatt_server_start_service(1, 2, 3); }},
    {"stop_service", [] { return vym_gatt_server_stop_service(1, 2); }},
    {"delete_service", [] { return vym_gatt_server_delete_service(1, 2); }},
    {"send_indication", [] { return vym_gatt_server_send_indication(1, 2, 3, 1, 1, s_value); }},
    {"send_notification", [] { return vym_gatt_server_send_notification(1, 2, 3, 1, s_value); }},
    {"send_notification of nothing",
     [] { return vym_gatt_server_send_notification(1, 2, 3, 0, nullptr); }},
    {"send_response", [] { return vym_gatt_server_send_response(1, 2, 3, 0, 4, 0, 0, 1, s_value); }},
};

gatt_server_callback_t s_table = {};

support::Recorder& Record() {
    static support::Recorder record;
    return record;
}

class GattServerWithoutMemory : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        Record().Reset();
        s_table.mtu_changed_cb = [](uint16_t conn_id, uint16_t mtu) {
            Record().Add(support::CallText("mtu", conn_id, mtu));
        };
        s_table.attribute_write_cb = [](bt_bdaddr_t, uint16_t, uint16_t, uint16_t, uint16_t, uint8_t,
                                        uint8_t, uint16_t length, uint8_t* value) {
            Record().Add(support::CallText("write", length, support::BytesOf{value, length}));
        };
        vym_gatt_server_init(&s_table);
    }
    void TearDown() override {
        vym_gatt_server_done();
        AdapterTest::TearDown();
    }
    void ExpectFrom(const std::string& event, const std::vector<std::string>& entries) {
        Server().Send(support::Event(event));
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Record().Take(), entries);
    }
};

TEST_F(GattServerWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectNothingSent(Server(), kCommands);
}

// Its room is the decoder's own, so that there is nothing that could fail.
TEST_F(GattServerWithoutMemory, AWrittenValueArrivesAllTheSame) {
    const FailingAllocations failing;
    ExpectFrom("JLA1B2C3D4E5F6000100020009000001000005a\xDC\xDD\xDC\xDC", {"write(3, 6100DC)"});
}

TEST_F(GattServerWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_gatt_server_event_parser);
}

TEST_F(GattServerWithoutMemory, InitMayFailAndBeRepeated) {
    for (int skip = 0; skip < 3; ++skip) {
        vym_gatt_server_done();
        {
            const FailingAllocations failing(skip, 1);
            vym_gatt_server_init(&s_table);
            EXPECT_EQ(failing.Failed(), 1);
        }
        ExpectFrom("JP00010017", {});
        vym_gatt_server_done();
        vym_gatt_server_init(&s_table);
        ExpectFrom("JP00010017", {"mtu(1, 23)"});
    }
}

} // namespace
