// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the GATT client's events do. Most are passed on to the application; a registration wakes who
// waits for it, a disconnection unregisters its client.

#include "vym_gatt_client_impl.h"

#include "vym_delegate.h"
#include "vym_thread.h"

namespace {

using app = gatt_client_callback_t;
using vym::pass_on;

// Bits of event_flag.
constexpr uint32_t kClientRegistered = 1;

vym::mutex event_lock; // never held while a command is sent or the application is called
vym::condition event_cond;
// What has arrived and was not yet waited for. Two registrations before anybody waits are one.
uint32_t event_flag VYM_GUARDED_BY(event_lock);
uint8_t s_client_if VYM_GUARDED_BY(event_lock); // of the last registration

std::atomic<gatt_client_callback_t*> s_delegate; // the application's table
// Told of every registration. Not part of what init resets: a server keeps its callback while the
// client module is started again.
std::atomic<server_register_client_cbk_hlp> s_server_cb;

void notify_for_event(uint32_t bits) VYM_REQUIRES(event_lock) {
    event_flag |= bits;
    event_cond.notify_all();
}

// Consuming the bits makes one event release one of those who wait.
void wait_for_event(uint32_t bits) VYM_REQUIRES(event_lock) {
    while ((event_flag & bits) != bits) {
        event_cond.wait(event_lock);
    }
    event_flag &= ~bits;
}

// A failed registration counts like any other: whoever waits would wait for ever.
void on_client_registered_cbk(uint8_t status, uint8_t client_if, bt_uuid_t uuid) {
    (void)status;
    {
        vym::lock_guard held(event_lock);
        s_client_if = client_if;
        notify_for_event(kClientRegistered);
    }
    const server_register_client_cbk_hlp server_cb = s_server_cb;
    if (server_cb != nullptr) {
        server_cb(client_if, uuid);
    }
}

// A client serves one connection.
void on_disconnected_cbk(uint8_t client_if, uint16_t conn_id, uint8_t status, bt_bdaddr_t address) {
    vym::notify(s_delegate.load(), &app::disconnected_cb, client_if, conn_id, status, address);
    vym_gatt_client_unregister_client(client_if);
}

void ignore_filter_config(int, uint8_t, uint8_t, int, int) {}
void ignore_filter_params(int, uint8_t, uint8_t, int) {}
void ignore_action(int, uint8_t, uint8_t) {}
void ignore_status(uint8_t, uint8_t) {}
void ignore_congestion(int, uint8_t) {}
void ignore_reports(uint8_t, uint8_t, int, int, uint16_t, uint8_t*) {}
void ignore_threshold(uint8_t) {}

gatt_client_impl_callback_t s_handlers = {
    on_client_registered_cbk,
    pass_on<s_delegate, &app::scan_result_cb>::handler,
    pass_on<s_delegate, &app::scan_address_name_cb>::handler,
    pass_on<s_delegate, &app::notify_cb>::handler,
    pass_on<s_delegate, &app::connected_cb>::handler,
    on_disconnected_cbk,
    pass_on<s_delegate, &app::search_completed_cb>::handler,
    pass_on<s_delegate, &app::search_result_cb>::handler,
    pass_on<s_delegate, &app::get_characteristic_cb>::handler,
    pass_on<s_delegate, &app::get_descriptor_cb>::handler,
    pass_on<s_delegate, &app::get_included_service_cb>::handler,
    pass_on<s_delegate, &app::register_for_notifications_cb>::handler,
    pass_on<s_delegate, &app::read_characteristic_cb>::handler,
    pass_on<s_delegate, &app::write_characteristic_cb>::handler,
    pass_on<s_delegate, &app::execute_completed_cb>::handler,
    pass_on<s_delegate, &app::read_descriptor_cb>::handler,
    pass_on<s_delegate, &app::write_descriptor_cb>::handler,
    pass_on<s_delegate, &app::read_remote_rssi_cb>::handler,
    pass_on<s_delegate, &app::receive_data_from_central_cb>::handler,
    pass_on<s_delegate, &app::configure_mtu_cb>::handler,
    pass_on<s_delegate, &app::advertise_callback_cb>::handler,
    ignore_filter_config,
    ignore_filter_params,
    ignore_action, // filter enabled or disabled
    ignore_status, // instance enabled
    ignore_status, // data updated
    ignore_status, // data set
    ignore_status, // instance disabled
    ignore_congestion,
    ignore_status, // batch storage configured
    ignore_action, // batch scan started or stopped
    ignore_reports,
    ignore_threshold,
    ignore_status, // scan parameters set
};

} // namespace

extern "C" {

gatt_client_impl_callback_t* vym_gatt_client_handlers(void) {
    return &s_handlers;
}

void vym_gatt_client_set_delegate(gatt_client_callback_t* cbk) {
    s_delegate = cbk;
}

void vym_gatt_client_set_server_hook(server_register_client_cbk_hlp cb) {
    s_server_cb = cb;
}

void vym_gatt_client_forget_registrations(void) {
    vym::lock_guard held(event_lock);
    event_flag = 0;
    s_client_if = 0;
}

uint8_t vym_gatt_client_wait_for_registration(void) {
    vym::lock_guard held(event_lock);
    wait_for_event(kClientRegistered);
    return s_client_if;
}

} // extern "C"
