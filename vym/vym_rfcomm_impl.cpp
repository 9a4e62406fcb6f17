// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the serial channels' events do, and the results that calls wait for.

#include "vym_rfcomm_impl.h"

#include "vym_command.h"
#include "vym_delegate.h"
#include "vym_thread.h"

#include <atomic>
#include <cstdio>

namespace {

using app = rfcomm_callback_t;
using vym::hex2;
using vym::pass_on;
using vym::send_command;
using vym::tag;

std::atomic<rfcomm_callback_t*> s_delegate; // the application's table

struct tag_api_cb {
    vym::mutex event_lock;
    vym::condition event_cond;
    uint32_t event_flag VYM_GUARDED_BY(event_lock);
    unsigned
        results VYM_GUARDED_BY(event_lock); // how many have come: tells news from a wake-up for nothing
    uint8_t
        listen_channel VYM_GUARDED_BY(event_lock); // of the last listen result; its status is not used
};
typedef struct tag_api_cb api_cb_t;

api_cb_t s_api_cb = {};

void notify_for_event(uint32_t event_flag) {
    vym::lock_guard held(s_api_cb.event_lock);
    s_api_cb.event_flag |= event_flag;
    ++s_api_cb.results;
    s_api_cb.event_cond.notify_all();
}

// Returns 0 as soon as any result comes, ETIMEDOUT when none does.
int wait_for_next_result(int seconds) VYM_REQUIRES(s_api_cb.event_lock) {
    const timespec until = vym::condition::until_after(seconds);
    const unsigned before = s_api_cb.results;
    int result = 0;
    while (result == 0 && s_api_cb.results == before) {
        result = s_api_cb.event_cond.wait_until(s_api_cb.event_lock, until);
    }
    return result;
}

void on_rfcomm_connection_result_cbk(uint8_t status, bt_bdaddr_t address, uint8_t server_channel,
                                     int handle, uint16_t max_tx, uint16_t max_rx, uint8_t credit_in,
                                     uint8_t credit_out, uint8_t is_server) {
    const uint8_t* a = address.address;
    printf("%s(status:%d, address[%02X:%02X:%02X:%02X:%02X:%02X], server_channel:%d, handle:0x%x, "
           "max_tx:%d, max_rx:%d.credit_in:%d, credit_out:%d,is_server:%d\n",
           __func__, status, a[0], a[1], a[2], a[3], a[4], a[5], server_channel,
           static_cast<unsigned>(handle), max_tx, max_rx, credit_in, credit_out, is_server);
    if (status == BT_STATUS_SUCCESS) {
        vym_bluetooth_socket_t values = {};
        values.address = address;
        values.server_handle = server_channel;
        values.incoming_credit = credit_in;
        values.outgoing_credit = credit_out;
        values.incoming_mfs = max_rx;
        values.outgoing_mfs = max_tx;
        values.handle = handle;
        values.connected = 1;
        if (vym_rfcomm_add_connection(&values, is_server) == 0 && is_server != 0) {
            printf("%s rfcomm_svr_info is null\n", __func__);
        }
    }
    if (is_server == 0) {
        notify_for_event(RFCOMM_EVENT_CONNECT); // also when it failed: connect finds no connection then
    }
}

void on_rfcomm_disconnection_result_cbk(uint8_t status, int handle) {
    printf("%s(status:%d, handle:0x%x).\n", __func__, status, static_cast<unsigned>(handle));
    vym_rfcomm_mark_disconnected(handle); // whatever the status says
}

void on_rfcomm_listen_result_cbk(uint8_t status, uint8_t server_channel) {
    {
        vym::lock_guard held(s_api_cb.event_lock);
        s_api_cb.listen_channel = server_channel;
    }
    notify_for_event(RFCOMM_EVENT_LISTEN);
    printf("%s(status:%d), server_channel:%d.\n", __func__, status, server_channel);
}

rfcomm_impl_callback_t s_handlers = {
    on_rfcomm_connection_result_cbk,
    on_rfcomm_disconnection_result_cbk,
    on_rfcomm_listen_result_cbk,
    pass_on<s_delegate, &app::rfcomm_fetch_channels_cb>::handler,
    pass_on<s_delegate, &app::rfcomm_fetch_channels_end_cb>::handler,
};

} // namespace

extern "C" {

rfcomm_impl_callback_t* vym_rfcomm_handlers(void) {
    return &s_handlers;
}

void vym_rfcomm_set_delegate(rfcomm_callback_t* cbk) {
    s_delegate = cbk;
}

bt_status_t vym_rfcomm_connect_impl(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t port) {
    return send_command<tag("SE")>(address, vym::uuid_reverse(uuid), hex2(port));
}

bt_status_t vym_rfcomm_listen_impl(bt_uuid_t uuid, uint8_t port, char* service_name) {
    return send_command<tag("SL")>(vym::uuid_reverse(uuid), hex2(port),
                                   vym::text(service_name != nullptr ? service_name : ""));
}

void vym_rfcomm_clear_events(void) {
    vym::lock_guard held(s_api_cb.event_lock);
    s_api_cb.event_flag = 0;
    s_api_cb.listen_channel = 0;
}

// A result that came before the wait began ends it at once: results are not tied to calls.
int vym_rfcomm_wait_for_event(uint32_t event_flag, int timeout, uint8_t* listen_channel) {
    vym::lock_guard held(s_api_cb.event_lock);
    while ((s_api_cb.event_flag & event_flag) != event_flag) {
        if (timeout == 0) {
            s_api_cb.event_cond.wait(s_api_cb.event_lock);
            continue;
        }
        const int error = wait_for_next_result(timeout);
        if (error != 0) {
            return error;
        }
        break; // by whatever result it was
    }
    s_api_cb.event_flag &= ~event_flag;
    *listen_channel = s_api_cb.listen_channel;
    return 0;
}

} // extern "C"
