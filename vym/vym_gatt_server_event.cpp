// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_gatt_server_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = gatt_server_impl_callback_t;
using namespace vym;

std::atomic<gatt_server_event_parser_t*> s_evt_parser;

// JL: a remote device writes an attribute.
bool JL_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t address = in.address();
    const uint16_t conn_id = in.uint16();
    const uint16_t trans_id = in.uint16();
    const uint16_t attr_handle = in.uint16();
    const uint16_t offset = in.uint16();
    const uint8_t need_rsp = in.byte();
    const uint8_t is_prep = in.byte();
    counted_block value(in);
    if (value.whole) {
        notify(cbk, &callbacks::attribute_write_cb, address, conn_id, trans_id, attr_handle, offset,
               need_rsp, is_prep, value.len, value.data);
    }
    return value.whole;
}

constexpr event_row kEvents[] = {
    plain<&callbacks::server_registered_cb, byte, byte, uuid128>("JA", "onServerRegistered", 36),
    plain<&callbacks::client_connected_cb, address, byte, uint16, byte>("JB", "onClientConnected", 20),
    plain<&callbacks::service_added_cb, byte, byte, byte, uint16, uuid128, uint16>(
        "JC", "onServiceAdded", 46),
    plain<&callbacks::included_service_added_cb, byte, byte, uint16, uint16>(
        "JD", "onIncludedServiceAdded", 12),
    plain<&callbacks::characteristic_added_cb, byte, byte, uuid128, uint16, uint16>(
        "JE", "onCharacteristicAdded", 44),
    plain<&callbacks::descriptor_added_cb, byte, byte, uuid128, uint16, uint16>(
        "JF", "onDescriptorAdded", 44),
    plain<&callbacks::service_started_cb, byte, byte, uint16>("JG", "onServiceStarted", 8),
    plain<&callbacks::service_stopped_cb, byte, byte, uint16>("JH", "onServiceStopped", 8),
    plain<&callbacks::service_deleted_cb, byte, byte, uint16>("JI", "onServiceDeleted", 8),
    plain<&callbacks::response_send_completed_cb, byte, uint16>("JJ", "onResponseSendCompleted", 6),
    plain<&callbacks::attribute_read_cb, address, uint16, uint16, uint16, uint16, byte>(
        "JK", "onAttributeRead", 30),
    bodies<callbacks>::with_tail<JL_parse>("JL", "onAttributeWrite", 36),
    plain<&callbacks::execute_write_cb, address, uint16, uint16, byte>("JM", "onExecuteWrite", 22),
    plain<&callbacks::notification_sent_cb, uint16, byte>("JN", "onNotificationSent", 6),
    plain<&callbacks::server_congestion_cb, uint16, byte>("JO", "onServerCongestion", 6),
    plain<&callbacks::mtu_changed_cb, uint16, uint16>("JP", "onMtuChanged", 8),
};

} // namespace

extern "C" {

event_parser_t* create_gatt_server_event_parser(gatt_server_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, gatt_server_event_parser_t>(cb);
}

void destroy_gatt_server_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
