/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_bluetooth_impl.h
 * What the adapter's API, its events and its bonded-device list share. Not installed.
 */
#ifndef VYM_BLUETOOTH_IMPL_H
#define VYM_BLUETOOTH_IMPL_H

#include "vym_bluetooth.h"

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The adapter's handlers, in the order of the event table. They run on the receive thread. */
typedef struct tag_bluetooth_impl_callback {
    void (*on_state_changed_cbk)(uint8_t state);
    void (*on_bt_version_cbk)(char* version);
    void (*on_data_transport_established_cbk)(uint8_t id, int number);
    void (*on_adapter_properties_cbk)(uint8_t status, uint8_t num_of_props, uint16_t len,
                                      uint8_t* value);
    void (*on_remote_device_properties_cbk)(uint8_t status, bt_bdaddr_t address, uint8_t num_of_props,
                                            uint16_t len, uint8_t* value);
    void (*on_device_found_cbk)(bt_bdaddr_t address, uint8_t type_of_device, int class_of_device,
                                uint8_t rssi, char* name, uint8_t num_of_uuid16, uint16_t* uuids);
    void (*on_discovery_state_changed_cbk)(uint8_t state);
    void (*on_pin_request_cbk)(bt_bdaddr_t address, int class_of_device, uint8_t min_16_digit,
                               char* name);
    void (*on_ssp_request_cbk)(bt_bdaddr_t address, int class_of_device, uint8_t pairing_variant,
                               int passkey, char* name);
    void (*on_bond_state_changed_cbk)(uint8_t status, bt_bdaddr_t address, uint8_t state);
    void (*on_acl_state_changed_cbk)(uint8_t status, bt_bdaddr_t address, uint8_t state);
    void (*on_app_gap_started_cbk)(uint16_t len, uint8_t* data);
    void (*on_connection_auth_req_cbk)(bt_bdaddr_t address, uint8_t profile_id);
    void (*on_le_test_cmd_complete_cbk)(uint8_t op_code, uint8_t status, uint16_t num_packets);
    void (*on_read_bt_address_cbk)(uint8_t status, bt_bdaddr_t address);
    void (*on_read_rssi_cbk)(bt_bdaddr_t address, uint8_t status, uint8_t rssi);
    void (*on_read_local_oob_data_cbk)(uint8_t status, bt_oob_data_t c192, bt_oob_data_t r192);
    void (*on_read_local_oob_data_ex_cbk)(uint8_t status, bt_oob_data_t c192, bt_oob_data_t r192,
                                          bt_oob_data_t c256, bt_oob_data_t r256);
} bluetooth_impl_callback_t;

/*
 * The local list: the bonds seen since init, newest last, the device of the latest ACL link first. Each
 * function takes the list's own lock; none calls back.
 */

/** Adds the address when `state` is bonded, removes it when none, ignores other states. */
void handle_device_bond_state_change(bt_bdaddr_t address, uint8_t state);

/** Moves the address to the front. */
void resort_bonded_dev_by_last_connect(bt_bdaddr_t address);

/** Copies at most 248 bytes over the entry's name; a longer old name keeps its tail. */
void handle_bond_device_name_update(bt_bdaddr_t address, char* name, int len);

void handle_bond_device_class_update(bt_bdaddr_t address, uint dev_cls);

/** @return the number of entries. */
int handle_get_bonded_device_count(void);

/** Copies up to `room` entries, last entry first. @return the number of entries in the list. */
int vym_bonded_list_copy(bt_remote_device_t* devices, int room);

/** Empties the list. */
void vym_bonded_list_clear(void);

/*
 * The adapter's state: what the server said last, and the wait for an answer.
 */

/** Prepares the state; a second time it empties what it holds. */
void vym_adapter_open(bluetooth_callback_t* cbk);

/** Releases the state. A getter that waits is let go first. */
void vym_adapter_close(void);

/** The table of handlers that the event parser calls. */
bluetooth_impl_callback_t* vym_adapter_handlers(void);

/** Whether an ACL link is up, to any device. */
int vym_adapter_is_acl_connected(void);

#ifdef __cplusplus
} // extern "C"

#include "vym_thread.h"

#include <semaphore.h>

namespace vym {

constexpr int kNoRequest = -1;

/** The adapter's state. Pointers to `name`, `address` and `sw_version` are handed to the application.
 */
struct adapter_state {
    mutex event_lock; // held by a getter for its whole wait: one request at a time
    mutex cache_lock; // held for moments, never while the application or the server is waited for

    bool open VYM_GUARDED_BY(event_lock); // `sem` exists
    sem_t sem;                            // posted when the awaited property arrives
    bt_state_t state VYM_GUARDED_BY(event_lock);

    int current_req_api VYM_GUARDED_BY(cache_lock) = kNoRequest; // the awaited property
    bt_bdaddr_t rmt_device VYM_GUARDED_BY(cache_lock); // the device a remote getter asks about
    bt_bdaddr_t address;                               // written under cache_lock, see above
    bt_bdname_t name;
    char sw_version[64];
    uint32_t class_of_device VYM_GUARDED_BY(cache_lock);
    uint32_t num_of_bonded_devices VYM_GUARDED_BY(cache_lock);
    uint32_t scan_mode VYM_GUARDED_BY(cache_lock);
    uint32_t discoverable_timeout VYM_GUARDED_BY(cache_lock);
    bt_manufacturer_code_t manuf_code VYM_GUARDED_BY(cache_lock);
    uint8_t priority VYM_GUARDED_BY(cache_lock);
    bt_128_service_t uuids VYM_GUARDED_BY(cache_lock);

    // The server's list of bonded devices, as it streams in.
    bt_remote_device_t* bonded_devices VYM_GUARDED_BY(cache_lock);
    int bonded_device_number VYM_GUARDED_BY(cache_lock); // entries filled
    int bonded_device_size VYM_GUARDED_BY(cache_lock);   // capacity
};

extern adapter_state s_adapter;

} // namespace vym

#endif

#endif
