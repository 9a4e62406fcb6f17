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
     [] { return vym_gatt_client_register_client_for_server(kUuid, nullptr); }},
    {"unregister_client_for_server", [] { return vym_gatt_client_unregister_client_for_server(1); }},
    {"unregister", [] { return vym_gatt_client_unregister(1); }},
    {"connect_ex", [] { return vym_gatt_client_connect_ex(1, kPeer, 1, 1); }},
    {"disconnect", [] { return vym_gatt_client_disconnect(1, kPeer, 1); }},
    {"listen", [] { return vym_gatt_client_listen(1, 1); }},
    {"listen_ex", [] { return vym_gatt_client_listen_ex(1, 1, 1, 1); }},
    {"refresh", [] { return vym_gatt_client_refresh(1, kPeer); }},
    {"search_service", [] { return vym_gatt_client_search_service(1, 1, 1); }},
    {"get_included_service",
     [] { return vym_gatt_client_get_included_service(1, 1, 1, kUuid, 1, 1, kUuid); }},
    {"get_characteristic", [] { return vym_gatt_client_get_characteristic(1, 1, 1, kUuid, 1, kUuid); }},
    {"get_descriptor",
     [] { return vym_gatt_client_get_descriptor(1, 1, 1, kUuid, 1, kUuid, 1, kUuid); }},
    {"read_characteristic",
     [] { return vym_gatt_client_read_characteristic(1, 1, 1, kUuid, 1, kUuid, 1); }},
    {"write_characteristic",
     [] { return vym_gatt_client_write_characteristic(1, 1, 1, kUuid, 1, kUuid, 1, 1, 1, s_value); }},
    {"write_characteristic of nothing",
     [] { return vym_gatt_client_write_characteristic(1, 1, 1, kUuid, 1, kUuid, 1, 1, 0, nullptr); }},
    {"read_descriptor",
     [] { return vym_gatt_client_read_descriptor(1, 1, 1, kUuid, 1, kUuid, 1, kUuid, 1); }},
    {"write_descriptor",
     [] {
         return vym_gatt_client_write_descriptor(1, 1, 1, kUuid, 1, kUuid, 1, kUuid, 1, 1, 1, s_value);
     }},
    {"execute_write", [] { return vym_gatt_client_execute_write(1, 1); }},
    {"register_for_notifications",
     [] { return vym_gatt_client_register_for_notifications(1, kPeer, 1, 1, kUuid, 1, kUuid, 1); }},
    {"connection_parameter_update",
     [] { return vym_gatt_connection_parameter_update(1, kPeer, 1, 1, 1, 1); }},
    {"read_remote_rssi", [] { return vym_gatt_client_read_remote_rssi(1, kPeer); }},
    {"configure_mtu", [] { return vym_gatt_client_configure_mtu(1, 1); }},
    {"scan", [] { return vym_gatt_client_scan(1); }},
    {"client_set_adv_data",
     [] { return vym_gatt_client_set_adv_data(1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1, s_value); }},
    {"set_adv_data",
     [] { return vym_gatt_set_adv_data(1, 1, 1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1, s_value); }},
    {"set_user_def_adv_data", [] { return vym_gatt_set_user_def_adv_data(1, 1, 1, s_value); }},
    {"set_adv_command", [] { return vym_gatt_client_set_adv_command(1); }},
    {"dump", [] { return vym_gatt_client_dump(1); }},
    {"cleanup", [] { return vym_gatt_cleanup(); }},
    {"send_data", [] { return vym_gatt_send_data(1, s_value); }},
    {"test", [] { return vym_gatt_test(1, 1, 1, kPeer, 1, 1, 1, 1, 1); }},
    {"scan_filter_add",
     [] {
         return vym_gatt_client_scan_filter_add(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1, 1,
                                                s_value, 1, s_value);
     }},
    {"scan_filter_delete",
     [] {
         return vym_gatt_client_scan_filter_delete(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, s_value, 1, s_value, 1,
                                                   1, s_value, 1, s_value);
     }},
    {"scan_filter_param_add",
     [] { return vym_gatt_client_scan_filter_param_add(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1); }},
    {"scan_filter_param_clear_all", [] { return vym_gatt_client_scan_filter_param_clear_all(1); }},
    {"scan_filter_param_delete", [] { return vym_gatt_client_scan_filter_param_delete(1, 1); }},
    {"scan_filter_clear", [] { return vym_gatt_client_scan_filter_clear(1, 1); }},
    {"scan_filter_enable", [] { return vym_gatt_client_scan_filter_enable(1, 1); }},
    {"set_scan_parameters", [] { return vym_gatt_set_scan_parameters(1, 1, 1); }},
    {"config_batch_scan_storage", [] { return vym_gatt_client_config_batch_scan_storage(1, 1, 1, 1); }},
    {"start_batch_scan", [] { return vym_gatt_client_start_batch_scan(1, 1, 1, 1, 1, 1); }},
    {"stop_batch_scan", [] { return vym_gatt_client_stop_batch_scan(1); }},
    {"read_scan_reports", [] { return vym_gatt_client_read_scan_reports(1, 1); }},
    {"disable_adv", [] { return vym_gatt_client_disable_adv(1); }},
    {"enable_adv", [] { return vym_gatt_client_enable_adv(1, 1, 1, 1, 1, 1, 1); }},
    {"update_adv", [] { return vym_gatt_client_update_adv(1, 1, 1, 1, 1, 1, 1); }},
};

class GattClientWithoutMemory : public gattc::GattClientTest {};

TEST_F(GattClientWithoutMemory, CommandsAreNotSentAndSaySo) {
    memory::ExpectNothingSent(Server(), kCommands);
}

TEST_F(GattClientWithoutMemory, NobodyWaitsForARegistrationThatWasNotSent) {
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_gatt_client_register(kUuid, nullptr), BT_STATUS_SUCCESS);
        EXPECT_EQ(vym_gatt_client_connect(kPeer, 1, 2), BT_STATUS_SUCCESS);
        EXPECT_EQ(failing.Failed(), 2);
    }
    Server().ExpectNothingMore();
    EXPECT_EQ(Output().Out().find('#'), std::string::npos);
}

TEST_F(GattClientWithoutMemory, AConnectThatFailsAfterItsWaitIsASuccessToo) {
    Server().Send(support::Event("KA0005" + gattc::kService));
    EXPECT_TRUE(Session().EventsAreHandled());
    {
        const FailingAllocations failing(1, 1);
        EXPECT_EQ(vym_gatt_client_connect(kPeer, 1, 2), BT_STATUS_SUCCESS);
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectCommand("AT#KA41403130212011100078564534120000\r\n");
    Server().ExpectNothingMore();
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
    for (int skip = 0; skip < 3; ++skip) {
        vym_gatt_client_done();
        {
            const FailingAllocations failing(skip, 1);
            gattc::Profile::Init(wire::Table::kWhole);
            EXPECT_EQ(failing.Failed(), 1);
        }
        ExpectDelivered("KG123485", {});
        vym_gatt_client_done();
        gattc::Profile::Init(wire::Table::kWhole);
        ExpectDelivered("KG123485", {"search_completed(4660, 133)"});
    }
}

} // namespace
