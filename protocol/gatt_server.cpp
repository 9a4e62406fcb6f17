// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The application's own services, and the centrals that use them.

#include "fields.h"

namespace protocol {
namespace {

constexpr Message kCommands[] = {
    {"JA", "register_app", 0, {uuid_last("uuid")}},
    {"JC", "unregister_app", 0, {byte("server_if")}},
    {"JD", "connect", 0, {byte("server_if"), address(), byte("is_direct")}},
    {"JE", "disconnect", 0, {byte("server_if"), address(), word("conn_id")}},
    {"JF",
     "add_service",
     0,
     {byte("server_if"), byte("service_type"), word("instance"), uuid_last("uuid"), byte("handles")}},
    {"JG", "add_included_service", 0, {byte("server_if"), word("service"), word("included_service")}},
    {"JH",
     "add_characteristic",
     0,
     {byte("server_if"), word("service"), uuid_last("uuid"), byte("properties"), word("permissions")}},
    {"JI",
     "add_descriptor",
     0,
     {byte("server_if"), word("service"), uuid_last("uuid"), word("permissions")}},
    {"JJ", "start_service", 0, {byte("server_if"), word("service"), byte("transport")}},
    {"JK", "stop_service", 0, {byte("server_if"), word("service")}},
    {"JL", "delete_service", 0, {byte("server_if"), word("service")}},
    {"JM",
     "send_indication",
     0,
     {byte("server_if"), word("attribute"), word("conn_id"), byte("confirm"), of_peer(block("value"))}},
    {"JN",
     "send_notification",
     0,
     {byte("server_if"), word("attribute"), word("conn_id"), of_peer(block("value"))}},
    {"JO",
     "send_response",
     0,
     {byte("server_if"), word("conn_id"), word("trans_id"), byte("status"), word("attribute"),
      word("offset"), byte("auth_req"), of_peer(block("value"))}},
};

constexpr Message kEvents[] = {
    {"JA", "onServerRegistered", 36, {byte("status"), byte("server_if"), uuid_first("uuid")}},
    {"JB", "onClientConnected", 20, {address(), byte("connected"), word("conn_id"), byte("server_if")}},
    {"JC",
     "onServiceAdded",
     46,
     {byte("status"), byte("server_if"), byte("service_type"), word("instance"), uuid_first("uuid"),
      word("service")}},
    {"JD",
     "onIncludedServiceAdded",
     12,
     {byte("status"), byte("server_if"), word("service"), word("included_service")}},
    {"JE",
     "onCharacteristicAdded",
     44,
     {byte("status"), byte("server_if"), uuid_first("uuid"), word("service"), word("characteristic")}},
    {"JF",
     "onDescriptorAdded",
     44,
     {byte("status"), byte("server_if"), uuid_first("uuid"), word("service"), word("descriptor")}},
    {"JG", "onServiceStarted", 8, {byte("status"), byte("server_if"), word("service")}},
    {"JH", "onServiceStopped", 8, {byte("status"), byte("server_if"), word("service")}},
    {"JI", "onServiceDeleted", 8, {byte("status"), byte("server_if"), word("service")}},
    {"JJ", "onResponseSendCompleted", 6, {byte("status"), word("attribute")}},
    {"JK",
     "onAttributeRead",
     30,
     {address(), word("conn_id"), word("trans_id"), word("attribute"), word("offset"),
      byte("is_long")}},
    {"JL",
     "onAttributeWrite",
     36,
     {address(), word("conn_id"), word("trans_id"), word("attribute"), word("offset"),
      byte("need_response"), byte("is_prepared"), of_peer(block("value"))}},
    {"JM", "onExecuteWrite", 22, {address(), word("conn_id"), word("trans_id"), byte("execute")}},
    {"JN", "onNotificationSent", 6, {word("conn_id"), byte("status")}},
    {"JO", "onServerCongestion", 6, {word("conn_id"), byte("congested")}},
    {"JP", "onMtuChanged", 8, {word("conn_id"), word("mtu")}},
};

} // namespace

const Profile kGattServer{"gatt_server", "GATT server", kCommands, kEvents};

} // namespace protocol
