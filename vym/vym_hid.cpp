// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_hid.h"

#include "vym_command.h"
#include "vym_delegate.h"
#include "vym_hid_event.h"
#include "vym_hid_impl.h"
#include "vym_sdk.h"

namespace {

using app = hid_callback_t;
using vym::block;
using vym::hex2;
using vym::hex8;
using vym::pass_on;
using vym::send_command;
using vym::tag;

event_parser_t* s_hid_event_parser;
std::atomic<hid_callback_t*> s_delegate; // the application's table

// The server deals with what the host asks for.
template <class... Parameters>
void drop(Parameters...) {}

hid_impl_callback_t s_handlers = {
    pass_on<s_delegate, &app::application_state_changed_cb>::handler,
    pass_on<s_delegate, &app::hid_connection_state_cb>::handler,
    drop, // get_report_cb
    drop, // set_report_cb
    drop, // set_protocol_cb
    drop, // intr_data_cb
    drop, // vir_cable_unplug_cb
};

} // namespace

extern "C" {

void vym_hid_init(hid_callback_t* cbk) {
    s_delegate = cbk;
    vym_profile_start(&s_hid_event_parser, create_hid_event_parser(&s_handlers),
                      destroy_hid_event_parser);
}

void vym_hid_done(void) {
    vym_profile_stop(&s_hid_event_parser, destroy_hid_event_parser);
    s_delegate = nullptr;
}

bt_status_t vym_hid_register_app(uint8_t subclass, uint16_t name_len, uint8_t* name, uint16_t dc_len,
                                 uint8_t* description, uint16_t provider_len, uint8_t* provider,
                                 uint16_t desc_len, uint8_t* descriptors, uint16_t p_in_qos_len,
                                 uint8_t* p_in_qos, uint16_t p_out_qos_len, uint8_t* p_out_qos) {
    return send_command<tag("DA")>(hex2(subclass), block(name, name_len), block(description, dc_len),
                                   block(provider, provider_len), block(descriptors, desc_len),
                                   block(p_in_qos, p_in_qos_len), block(p_out_qos, p_out_qos_len));
}

bt_status_t vym_hid_unregister_app(void) {
    return send_command<tag("DB")>();
}

bt_status_t vym_hid_send_report(uint8_t type, int id, uint16_t data_len, uint8_t* report) {
    return send_command<tag("DC")>(hex2(type), hex8(id), block(report, data_len));
}

bt_status_t vym_hid_report_error_impl(uint8_t error) {
    return send_command<tag("DE")>(hex2(error));
}

bt_status_t vym_hid_unplug_impl(void) {
    return send_command<tag("DF")>();
}

bt_status_t vym_hid_connect(bt_bdaddr_t address) {
    return send_command<tag("DG")>(address);
}

bt_status_t vym_hid_disconnect(void) {
    return send_command<tag("DH")>();
}

} // extern "C"
