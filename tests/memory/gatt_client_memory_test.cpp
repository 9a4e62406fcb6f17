// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT client without memory: nothing is sent, nobody waits for what was not sent, and events
// arrive all the same, for their blocks need none.

#include "memory/profile_memory.h"
#include "vym_gatt_client_event.h"
#include "vym_gatt_client_impl.h"
#include "wire/gatt_client_profile.h"

namespace {

using gattc::kPeer;
using memory::CommandCase;
using memory::FailingAllocations;

constexpr bt_uuid_t kUuid = {};

uint8_t s_value[] = {'v'};

const CommandCase kCommands[] = {
    {"register_client_for_server",
     [] { return CALL(vym_gatt_client_register_client_for_server)(kUuid, nullptr); },
     {"AT#KA00000000000000000000000000000000\r\n"}},
    {"unregister_client_for_server",
     [] { return CALL(vym_gatt_client_unregister_client_for_server)(1); },
     {"AT#KB01\r\n"}},
    {"unregister", [] { return CALL(vym_gatt_client_unregister)(1); }, {"AT#KB01\r\n"}},
    {"connect_ex",
     [] { return CALL(vym_gatt_client_connect_ex)(1, kPeer, 1, 1); },
     {"AT#KE01A1B2C3D4E5F60101\r\n"}},
    {"disconnect",
     [] { return CALL(vym_gatt_client_disconnect)(1, kPeer, 1); },
     {"AT#KF01A1B2C3D4E5F60001\r\n"}},
    {"listen", [] { return CALL(vym_gatt_client_listen)(1, 1); }, {"AT#KD0101\r\n"}},
    {"listen_ex",
     [] { return CALL(vym_gatt_client_listen_ex)(1, 1, 1, 1); },
     {"AT#KZA010100010001\r\n"}},
    {"refresh", [] { return CALL(vym_gatt_client_refresh)(1, kPeer); }, {"AT#KG01A1B2C3D4E5F6\r\n"}},
    {"search_service",
     [] { return CALL(vym_gatt_client_search_service)(1, 1, 1); },
     {"AT#KH0001010001\r\n"}},
    {"get_included_service",
     [] { return CALL(vym_gatt_client_get_included_service)(1, 1, 1, kUuid, 1, 1, kUuid); },
     {"AT#KI00010100010000000000000000000000000000000001000100000000000000000000000000000000\r\n"}},
    {"get_characteristic",
     [] { return CALL(vym_gatt_client_get_characteristic)(1, 1, 1, kUuid, 1, kUuid); },
     {"AT#KJ000101000100000000000000000000000000000000000100000000000000000000000000000000\r\n"}},
    {"get_descriptor",
     [] { return CALL(vym_gatt_client_get_descriptor)(1, 1, 1, kUuid, 1, kUuid, 1, kUuid); },
     {"AT#"
      "KK0001010001000000000000000000000000000000000001000000000000000000000000000000000001000000000000"
      "00000000000000000000\r\n"}},
    {"read_characteristic",
     [] { return CALL(vym_gatt_client_read_characteristic)(1, 1, 1, kUuid, 1, kUuid, 1); },
     {"AT#KL00010100010000000000000000000000000000000000010000000000000000000000000000000001\r\n"}},
    {"write_characteristic",
     [] {
         return CALL(vym_gatt_client_write_characteristic)(1, 1, 1, kUuid, 1, kUuid, 1, 1, 1, s_value);
     },
     {"AT#"
      "KM00010100010000000000000000000000000000000000010000000000000000000000000000000001010001v\r\n"}},
    {"write_characteristic of nothing",
     [] {
         return CALL(vym_gatt_client_write_characteristic)(1, 1, 1, kUuid, 1, kUuid, 1, 1, 0, nullptr);
     },
     {"AT#"
      "KM00010100010000000000000000000000000000000000010000000000000000000000000000000001010000\r\n"}},
    {"read_descriptor",
     [] { return CALL(vym_gatt_client_read_descriptor)(1, 1, 1, kUuid, 1, kUuid, 1, kUuid, 1); },
     {"AT#"
      "KN0001010001000000000000000000000000000000000001000000000000000000000000000000000001000000000000"
      "0000000000000000000001\r\n"}},
    {"write_descriptor",
     [] {
         return CALL(vym_gatt_client_write_descriptor)(1, 1, 1, kUuid, 1, kUuid, 1, kUuid, 1, 1, 1,
                                                       s_value);
     },
     {"AT#"
      "KO0001010001000000000000000000000000000000000001000000000000000000000000000000000001000000000000"
      "0000000000000000000001010001v\r\n"}},
    {"execute_write", [] { return CALL(vym_gatt_client_execute_write)(1, 1); }, {"AT#KP000101\r\n"}},
    {"register_for_notifications",
     [] {
         return CALL(vym_gatt_client_register_for_notifications)(1, kPeer, 1, 1, kUuid, 1, kUuid, 1);
     },
     {"AT#"
      "KQ01A1B2C3D4E5F60100010000000000000000000000000000000000010000000000000000000000000000000001\r"
      "\n"}},
    {"connection_parameter_update",
     [] { return CALL(vym_gatt_connection_parameter_update)(1, kPeer, 1, 1, 1, 1); },
     {"AT#KR01A1B2C3D4E5F60001000100010001\r\n"}},
    {"read_remote_rssi",
     [] { return CALL(vym_gatt_client_read_remote_rssi)(1, kPeer); },
     {"AT#KU01A1B2C3D4E5F6\r\n"}},
    {"configure_mtu", [] { return CALL(vym_gatt_client_configure_mtu)(1, 1); }, {"AT#KY00010001\r\n"}},
    {"scan", [] { return CALL(vym_gatt_client_scan)(1); }, {"AT#KC01\r\n"}},
    {"client_set_adv_data",
     [] {
         return CALL(vym_gatt_client_set_adv_data)(1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1, s_value);
     },
     {"AT#KXQ0101010100010001v0001v0001v\r\n"}},
    {"set_adv_data",
     [] {
         return CALL(vym_gatt_set_adv_data)(1, 1, 1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1, s_value);
     },
     {"AT#KXR010101010001000100010001v0001v0001v\r\n"}},
    {"set_user_def_adv_data",
     [] { return CALL(vym_gatt_set_user_def_adv_data)(1, 1, 1, s_value); },
     {"AT#KZB01010001v\r\n"}},
    {"set_adv_command", [] { return CALL(vym_gatt_client_set_adv_command)(1); }, {"AT#KZC01\r\n"}},
    {"dump", [] { return vym_gatt_client_dump(1); }, {"AT#KV0001\r\n"}},
    {"cleanup", [] { return vym_gatt_cleanup(); }, {"AT#KW\r\n"}},
    {"send_data", [] { return vym_gatt_send_data(1, s_value); }, {"AT#KSB0001v\r\n"}},
    {"test",
     [] { return vym_gatt_test(1, 1, 1, kPeer, 1, 1, 1, 1, 1); },
     {"AT#KT000000010000000100000001A1B2C3D4E5F60000000100000001000000010000000101\r\n"}},
    {"scan_filter_add",
     [] {
         return vym_gatt_client_scan_filter_add(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1, 1,
                                                s_value, 1, s_value);
     },
     {"AT#KXC01000100010001000100000001000000010000000100000001010001v0001v0001v0001v\r\n"}},
    {"scan_filter_delete",
     [] {
         return vym_gatt_client_scan_filter_delete(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1,
                                                   1, s_value, 1, s_value);
     },
     {"AT#KXD01000100010001000100000001000000010000000100000001010001v0001v0001v0001v\r\n"}},
    {"scan_filter_param_add",
     [] { return vym_gatt_client_scan_filter_param_add(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1); },
     {"AT#KXE0100010001000100010001000100010001000100010001\r\n"}},
    {"scan_filter_param_clear_all",
     [] { return vym_gatt_client_scan_filter_param_clear_all(1); },
     {"AT#KXF01\r\n"}},
    {"scan_filter_param_delete",
     [] { return vym_gatt_client_scan_filter_param_delete(1, 1); },
     {"AT#KXG010001\r\n"}},
    {"scan_filter_clear", [] { return vym_gatt_client_scan_filter_clear(1, 1); }, {"AT#KXH010001\r\n"}},
    {"scan_filter_enable", [] { return vym_gatt_client_scan_filter_enable(1, 1); }, {"AT#KXI0101\r\n"}},
    {"set_scan_parameters",
     [] { return vym_gatt_set_scan_parameters(1, 1, 1); },
     {"AT#KXB0100010001\r\n"}},
    {"config_batch_scan_storage",
     [] { return vym_gatt_client_config_batch_scan_storage(1, 1, 1, 1); },
     {"AT#KXJ01000100010001\r\n"}},
    {"start_batch_scan",
     [] { return vym_gatt_client_start_batch_scan(1, 1, 1, 1, 1, 1); },
     {"AT#KXK0100010001000100010001\r\n"}},
    {"stop_batch_scan", [] { return vym_gatt_client_stop_batch_scan(1); }, {"AT#KXL01\r\n"}},
    {"read_scan_reports", [] { return vym_gatt_client_read_scan_reports(1, 1); }, {"AT#KXM010001\r\n"}},
    {"disable_adv", [] { return vym_gatt_client_disable_adv(1); }, {"AT#KXN01\r\n"}},
    {"enable_adv",
     [] { return vym_gatt_client_enable_adv(1, 1, 1, 1, 1, 1, 1); },
     {"AT#KXO01000100010101010001\r\n"}},
    {"update_adv",
     [] { return vym_gatt_client_update_adv(1, 1, 1, 1, 1, 1, 1); },
     {"AT#KXP01000100010101010001\r\n"}},
};

class GattClientWithoutMemory : public gattc::GattClientTest {};

TEST_F(GattClientWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectCommandsSurvive(Server(), kCommands);
}

// They answer with success in any case, and nobody waits for the report of what was not sent.
TEST_F(GattClientWithoutMemory, CallsThatWaitDoNotWhenNothingWasSent) {
    const CommandCase calls[] = {
        {"register",
         [] { return CALL(vym_gatt_client_register)(kUuid, nullptr); },
         {"AT#KA00000000000000000000000000000000\r\n"}},
        {"connect",
         [] { return CALL(vym_gatt_client_connect)(kPeer, 1, 2); },
         {"AT#KA41403130212011100078564534120000\r\n", "AT#KE05A1B2C3D4E5F60102\r\n"}},
    };
    for (const CommandCase& one : calls) {
        SCOPED_TRACE(one.name);
        const size_t printed = Output().Out().size();
        {
            const FailingAllocations failing;
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            EXPECT_EQ(failing.Failed(), 1);
        }
        Server().ExpectNothingMore();
        EXPECT_EQ(Output().Out().find('#', printed), std::string::npos);
        memory::ForEachFailure([&](int skip) {
            const FailingAllocations failing(skip, 1);
            Server().Send(support::Event("KA0005" + gattc::kService)); // ends the wait
            EXPECT_TRUE(Session().EventsAreHandled());
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            const bool failed = failing.Failed() > 0;
            const size_t sent = failed ? static_cast<size_t>(skip) : one.sent.size();
            for (size_t i = 0; i < sent; ++i) {
                Server().ExpectCommand(one.sent[i]);
            }
            Server().ExpectNothingMore();
            return failed;
        });
    }
}

TEST_F(GattClientWithoutMemory, TheServersCallbackIsTakenAndRemovedAllTheSame) {
    const auto hook = [](uint8_t client_if, bt_uuid_t) { gattc::Say("hook", client_if); };
    const std::string registered = support::Event("KA0005" + gattc::kService);
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_gatt_client_register_client_for_server(kUuid, hook), BT_STATUS_NOMEM);
    }
    Server().Send(registered);
    ExpectEntries({"hook(5)"});
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_gatt_client_unregister_client_for_server(5), BT_STATUS_NOMEM);
    }
    Server().Send(registered);
    ExpectEntries({});
}

TEST_F(GattClientWithoutMemory, EventsArriveWhole) {
    const FailingAllocations failing;
    for (const wire::ProfileEvent& one : gattc::Profile::Events()) {
        ExpectDelivered(one.event, one.Entries());
    }
}

TEST_F(GattClientWithoutMemory, ADisconnectionIsToldAndNothingIsSent) {
    {
        const FailingAllocations failing;
        ExpectDelivered("KF05123413A1B2C3D4E5F6", {"disconnected(5, 4660, 19, A1B2C3D4E5F6)"});
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectNothingMore();
}

TEST_F(GattClientWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_gatt_client_event_parser);
}

TEST_F(GattClientWithoutMemory, InitMayFailAndBeRepeated) {
    static gatt_client_callback_t table = gattc::RecordingTable();
    memory::ExpectInitSurvives(
        CALL(vym_gatt_client_init), &table, CALL(vym_gatt_client_done), [this](bool heard) {
            ExpectDelivered("KG123485", heard ? std::vector<std::string>{"search_completed(4660, 133)"}
                                              : std::vector<std::string>{});
        });
}

} // namespace
