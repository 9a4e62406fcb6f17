// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the HID module's API and its events share.
#ifndef VYM_HID_IMPL_H
#define VYM_HID_IMPL_H

#include "vym_hid.h"

extern "C" {

// The module's handlers, in the order of the event table. They run on the receive thread.
typedef struct tag_hid_impl_callback {
    void (*application_state_changed_cb)(bt_bdaddr_t address, int state);
    void (*hid_connection_state_cb)(bt_bdaddr_t address, int state);
    // What the host asks for; the application has no callbacks for these.
    void (*get_report_cb)(uint8_t type, uint8_t id, int buffer_size);
    void (*set_report_cb)(uint8_t type, uint8_t id, uint16_t len, uint8_t* p_data);
    void (*set_protocol_cb)(uint8_t protocol);
    void (*intr_data_cb)(uint8_t report_id, uint16_t len, uint8_t* p_data);
    void (*vir_cable_unplug_cb)(void);
} hid_impl_callback_t;

} // extern "C"

#endif
