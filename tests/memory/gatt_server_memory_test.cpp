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
    {"register_client",
     [] { return CALL(vym_gatt_server_register_client)({}, nullptr); },
     {"AT#KA00000000000000000000000000000000\r\n"}},
    {"unregister_client", [] { return CALL(vym_gatt_server_unregister_client)(1); }, {"AT#KB01\r\n"}},
    {"register_app",
     [] { return CALL(vym_gatt_server_register_app)({}); },
     {"AT#JA00000000000000000000000000000000\r\n"}},
    {"unregister_app", [] { return CALL(vym_gatt_server_unregister_app)(1); }, {"AT#JC01\r\n"}},
    {"connect",
     [] { return CALL(vym_gatt_server_connect)(1, kRemote, 1); },
     {"AT#JD0106050403020101\r\n"}},
    {"disconnect",
     [] { return CALL(vym_gatt_server_disconnect)(1, kRemote, 1); },
     {"AT#JE010605040302010001\r\n"}},
    {"add_service",
     [] { return CALL(vym_gatt_server_add_service)(1, 0, 0, {}, 4); },
     {"AT#JF010000000000000000000000000000000000000004\r\n"}},
    {"add_included_service",
     [] { return CALL(vym_gatt_server_add_included_service)(1, 2, 3); },
     {"AT#JG0100020003\r\n"}},
    {"add_characteristic",
     [] { return CALL(vym_gatt_server_add_characteristic)(1, 2, {}, 3, 4); },
     {"AT#JH01000200000000000000000000000000000000030004\r\n"}},
    {"add_descriptor",
     [] { return CALL(vym_gatt_server_add_descriptor)(1, 2, {}, 3); },
     {"AT#JI010002000000000000000000000000000000000002\r\n"}},
    {"start_service",
     [] { return CALL(vym_gatt_server_start_service)(1, 2, 3); },
     {"AT#JJ01000203\r\n"}},
    {"stop_service", [] { return CALL(vym_gatt_server_stop_service)(1, 2); }, {"AT#JK010002\r\n"}},
    {"delete_service", [] { return CALL(vym_gatt_server_delete_service)(1, 2); }, {"AT#JL010002\r\n"}},
    {"send_indication",
     [] { return CALL(vym_gatt_server_send_indication)(1, 2, 3, 1, 1, s_value); },
     {"AT#JM0100020003010001v\r\n"}},
    {"send_notification",
     [] { return CALL(vym_gatt_server_send_notification)(1, 2, 3, 1, s_value); },
     {"AT#JN01000200030001v\r\n"}},
    {"send_notification of nothing",
     [] { return CALL(vym_gatt_server_send_notification)(1, 2, 3, 0, nullptr); },
     {"AT#JN01000200030000\r\n"}},
    {"send_response",
     [] { return CALL(vym_gatt_server_send_response)(1, 2, 3, 0, 4, 0, 0, 1, s_value); },
     {"AT#JO01000200030000040000000001v\r\n"}},
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
    memory::ExpectCommandsSurvive(Server(), kCommands);
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
    memory::ExpectInitSurvives(
        CALL(vym_gatt_server_init), &s_table, CALL(vym_gatt_server_done), [this](bool heard) {
            ExpectFrom("JP00010017",
                       heard ? std::vector<std::string>{"mtu(1, 23)"} : std::vector<std::string>{});
        });
}

} // namespace
