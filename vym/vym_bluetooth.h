/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_bluetooth.h
 * The local adapter: power, properties, discovery, pairing, bonded devices, links, out-of-band data, LE
 * test mode.
 *
 * A call writes one command and returns; what comes of it arrives in the callbacks, on the receive
 * thread (see vym_sdk.h for what a callback may do). A few getters and setters wait for the server's
 * answer, one second at most; without an answer they return what was known before. They exclude each
 * other, so a second caller may wait its turn first. Any thread may call.
 *
 * Unless a function says otherwise it returns BT_STATUS_SUCCESS when the command was written (or
 * dropped because the library is not connected) and BT_STATUS_NOMEM when it could not be built.
 * Addresses and structures are copied; nothing that is passed in is kept, but for the callback table.
 */
#ifndef VYM_BLUETOOTH_H
#define VYM_BLUETOOTH_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. Texts are UTF-8
 * as the remote device sent them, ended by a NUL, and valid until the callback returns. A class of
 * device is the 24-bit number of the Assigned Numbers; values above 0x7FFFFFFF arrive as 0x7FFFFFFF.
 */
typedef struct tag_bluetooth_callback {
    /** The adapter was switched. `state`: bt_state_t. */
    void (*state_changed_cb)(uint8_t state);
    /** Answer to vym_bluetooth_get_version(). */
    void (*bt_version_cb)(char* version);
    /**
     * Discovery found a device. `type_of_device`: 1 BR/EDR, 2 LE, 3 both; `rssi`: dBm as a signed byte;
     * `uuids`: `num_of_uuid16` 16-bit service class UUIDs, NULL when there are none.
     */
    void (*device_found_cb)(bt_bdaddr_t address, uint8_t type_of_device, int class_of_device,
                            uint8_t rssi, char* name, uint8_t num_of_uuid16, uint16_t* uuids);
    /** `state`: bt_discovery_state_t. */
    void (*discovery_state_changed_cb)(uint8_t state);
    /** A device asks for a PIN; answer with vym_bluetooth_pin_reply(). `min_16_digit`: 1 when it must
     * have 16 digits. */
    void (*pin_request_cb)(bt_bdaddr_t address, int class_of_device, uint8_t min_16_digit, char* name);
    /** A device pairs; answer with vym_bluetooth_ssp_reply(). `pairing_variant`: bt_ssp_variant_t;
     *  `passkey`: 0 to 999999, where the variant has one. */
    void (*ssp_request_cb)(bt_bdaddr_t address, int class_of_device, uint8_t pairing_variant,
                           int passkey, char* name);
    /** `status`: bt_status_t; `state`: bt_bond_state_t. */
    void (*bond_state_changed_cb)(uint8_t status, bt_bdaddr_t address, uint8_t state);
    /** `status`: bt_status_t; `state`: bt_acl_state_t (0 is connected). */
    void (*acl_state_changed_cb)(uint8_t status, bt_bdaddr_t address, uint8_t state);
    /** The GAP service started. `data`: `len` bytes of its choice, at most 255; NULL or empty when 0.
     */
    void (*app_gap_started_cb)(uint16_t len, uint8_t* data);
    /** A device wants to connect a profile; answer with vym_bluetooth_connection_auth(). */
    void (*connection_auth_req_cb)(bt_bdaddr_t address, uint8_t profile_id);
    /** Answer to vym_bluetooth_le_receiver_test(). `status`: HCI status, 0 is success. */
    void (*le_rx_test_cb)(uint8_t status);
    /** Answer to vym_bluetooth_le_transmitter_test(). */
    void (*le_tx_test_cb)(uint8_t status);
    /** Answer to vym_bluetooth_le_test_end(). `number_of_packets`: received during a receiver test. */
    void (*le_test_end_cb)(uint8_t status, uint16_t number_of_packets);
    /** Answer to vym_bluetooth_read_address(). */
    void (*read_bt_address_cb)(uint8_t status, bt_bdaddr_t address);
    /** Answer to vym_bluetooth_read_connected_device_rssi(). `rssi`: dBm as a signed byte. */
    void (*read_rssi_cb)(bt_bdaddr_t address, uint8_t status, uint8_t rssi);
    /** Answer to vym_bluetooth_read_local_device_oob_data(): hash and randomizer of P-192. */
    void (*read_local_device_oob_data_cb)(uint8_t status, bt_oob_data_t c192, bt_oob_data_t r192);
    /** Answer to vym_bluetooth_read_local_device_oob_data_ex(): hashes and randomizers of P-192, P-256.
     */
    void (*read_local_device_oob_data_ex_cb)(uint8_t status, bt_oob_data_t c192, bt_oob_data_t r192,
                                             bt_oob_data_t c256, bt_oob_data_t r256);
} bluetooth_callback_t;

/** Takes a descriptor that the server handed over; `fd` is 0 when it never came. Runs on the receive
 * thread; the callee owns `fd` from then on. */
typedef void (*data_transport_established_impl_callback)(uint8_t id, int fd);

/**
 * Starts the adapter module. Call it after vym_sdk_init_ex().
 *
 * @param cbk owned by the application, must live until vym_bluetooth_done() returns; NULL counts as a
 * table of NULL members.
 */
void vym_bluetooth_init(bluetooth_callback_t* cbk);

/** Stops the adapter module; no callback runs after it returns. Must not be called from a callback. */
void vym_bluetooth_done(void);

/* Power and identity. */

/** Sets the address the adapter will have after it is switched on. Prints the command. */
bt_status_t vym_bluetooth_preset_addr(bt_bdaddr_t address);

/** Switches the adapter on; answered by `state_changed_cb`. */
bt_status_t vym_bluetooth_enable(void);

/** @param down_firmware 1: as vym_bluetooth_enable(); any other value: on without loading the firmware.
 */
bt_status_t vym_bluetooth_enable_ex(int down_firmware);

/** Switches the adapter off; answered by `state_changed_cb`. */
bt_status_t vym_bluetooth_disable(void);

/** @return the last power state heard of, without asking the server. Waits while another getter waits.
 */
bt_state_t vym_bluetooth_get_state(void);

/**
 * Asks for the server's version and waits.
 *
 * @return at most 63 characters in storage of the library that the next answer overwrites. Without
 * memory for the command the pointer value 3 (BT_STATUS_NOMEM), which must not be followed.
 */
char* vym_bluetooth_get_version(void);

/** Asks for the adapter's name and waits. @return storage of the library that later answers overwrite.
 */
bt_bdname_t* vym_bluetooth_get_name(void);

/** Asks for the adapter's address and waits. @return storage of the library; all zero without an
 * answer. */
bt_bdaddr_t* vym_bluetooth_get_address(void);

/** Reads the controller's address; answered by `read_bt_address_cb`. */
bt_status_t vym_bluetooth_read_address(void);

/** Asks for the scan mode and waits. */
bt_scan_mode_t vym_bluetooth_get_scan_mode(void);

/** Asks for the adapter's class of device and waits. */
int vym_bluetooth_get_class(void);

/** Sets the adapter's name and waits for the server's confirmation. @param name at most 248 bytes. */
bt_status_t vym_bluetooth_set_name(bt_bdname_t name);

/** Sets the scan mode and waits for the server's confirmation. */
bt_status_t vym_bluetooth_set_scan_mode(bt_scan_mode_t mode);

/** @param timeout seconds after which the adapter stops being discoverable, 0 for never. */
bt_status_t vym_bluetooth_set_discoverable_timeout(int timeout);

/** @param interval length of one discovery in units of 1.28 s (Core Specification, Inquiry). */
bt_status_t vym_bluetooth_set_discovery_internval(int interval);

/** Asks for all properties; the answers refresh what the getters return. */
bt_status_t vym_bluetooth_get_adapter_properties(void);

/** Adds a service UUID to the extended inquiry response, `uu[0]` first. */
bt_status_t vym_bluetooth_add_AA_uuid(bt_uuid_t eir_uuid);

/* Discovery. */

/** Starts looking for devices: `discovery_state_changed_cb`, `device_found_cb` for each. */
bt_status_t vym_bluetooth_start_discovery(void);

/** Ends discovery early. */
bt_status_t vym_bluetooth_stop_discovery(void);

/* Pairing and bonded devices. */

/** Pairs with a device; answered by requests and `bond_state_changed_cb`. */
bt_status_t vym_bluetooth_create_bond(bt_bdaddr_t address);

/**
 * Pairs with a device whose out-of-band data is known.
 *
 * @param transport 1 BR/EDR, 2 LE.
 * @param oob_len   bytes of `oob`.
 * @return also BT_STATUS_NOMEM, with nothing sent, when `oob` is NULL or empty.
 */
bt_status_t vym_bluetooth_create_bond_out_of_bond(bt_bdaddr_t address, int transport, uint16_t oob_len,
                                                  uint8_t* oob);

/** Forgets a device. */
bt_status_t vym_bluetooth_remove_bond(bt_bdaddr_t address);

/** Ends a pairing in progress. */
bt_status_t vym_bluetooth_cancel_bond(bt_bdaddr_t address);

/**
 * Answers `pin_request_cb`.
 *
 * @param accept  1 to go on, 0 to refuse.
 * @param pin_len bytes of `pincode`, 1 to 16.
 * @param pincode NULL is sent as an empty PIN, which suits a refusal.
 */
bt_status_t vym_bluetooth_pin_reply(bt_bdaddr_t address, uint8_t accept, uint16_t pin_len,
                                    uint8_t* pincode);

/**
 * Answers `ssp_request_cb`.
 *
 * @param ssp_variant as given in the request.
 * @param accept      1 to go on, 0 to refuse.
 * @param passkey     what the user entered, 0 to 999999; ignored by the other variants.
 */
bt_status_t vym_bluetooth_ssp_reply(bt_bdaddr_t address, uint8_t ssp_variant, uint8_t accept,
                                    int passkey);

/** @param mode whether devices may pair with the adapter; passed to the server as it is. */
bt_status_t vym_bluetooth_set_bond_mode(int mode);

/**
 * Asks for the bonded devices and waits. The newest comes first; a device the server lists twice is
 * delivered once. When the server has none, the bonds seen since vym_bluetooth_init() are delivered.
 *
 * @param devices room for `*size` entries, or NULL to get only the count.
 * @param size    in: the room, zero or less counts as none; out: the number of devices less the
 * duplicates seen. It may exceed the room, so never walk further than the room, and entries that
 *                duplicates have left free are not written.
 * @return BT_STATUS_SUCCESS always.
 */
bt_status_t vym_bluetooth_get_bonded_devices(bt_remote_device_t* devices, int* size);

/** Asks how many bonded devices the server keeps at most, and waits. */
int vym_bluetooth_get_number_of_bonded_devices(void);

/** Sets how many bonded devices the server keeps at most; does not wait. */
bt_status_t vym_bluetooth_set_number_of_bonded_devices(int num);

/** Asks for this adapter's P-192 data; answered by `read_local_device_oob_data_cb`. */
bt_status_t vym_bluetooth_read_local_device_oob_data(void);

/** Asks for this adapter's P-192 and P-256 data; answered by `read_local_device_oob_data_ex_cb`. */
bt_status_t vym_bluetooth_read_local_device_oob_data_ex(void);

/** Gives the server a remote device's hash and randomizer of P-192. */
bt_status_t vym_bluetooth_set_remote_device_oob_data(bt_bdaddr_t address, bt_oob_data_t c192,
                                                     bt_oob_data_t r192);

/* Remote devices. */

/** Asks for one property (bt_property_type_t) of a device; the answer refreshes what the getters
 * return. */
bt_status_t vym_bluetooth_get_remote_device_propertie(bt_bdaddr_t address, uint8_t type);

/**
 * Sets one property of a device.
 *
 * @param type bt_property_type_t.
 * @param len  bytes of `val`.
 * @param val  sent as it lies in memory; NULL is sent as an empty value.
 */
bt_status_t vym_bluetooth_set_remote_device_propertie(bt_bdaddr_t address, uint8_t type, uint16_t len,
                                                      uint8_t* val);

/** Asks for all properties of a device. */
bt_status_t vym_bluetooth_get_remote_device_properties(bt_bdaddr_t address);

/** Asks for the record of one service of a device. */
bt_status_t vym_bluetooth_get_remote_service_record(bt_bdaddr_t address, bt_uuid_t uuid);

/** Asks for the services of a device. */
bt_status_t vym_bluetooth_get_remote_services(bt_bdaddr_t address);

/** Asks for the priority the server gives a device, and waits. @return 0 also when the request failed.
 */
uint8_t vym_bluetooth_get_device_priority(bt_bdaddr_t address);

/** Asks for the manufacturer of a device's controller, and waits. @return 0 also when the request
 * failed. */
bt_manufacturer_code_t vym_bluetooth_get_manufacturer_code(bt_bdaddr_t address);

/** Asks for the 128-bit service UUIDs of a device, and waits. @return none also when the request
 * failed. */
bt_128_service_t vym_bluetooth_get_devices_uuids(bt_bdaddr_t address);

/** Asks for a link's state; answered by `acl_state_changed_cb`. @return 0 always: it says nothing of
 * the link. */
bt_acl_state_t vym_bluetooth_get_connection_state(bt_bdaddr_t address);

/** Asks for a link's signal strength; answered by `read_rssi_cb`. */
bt_status_t vym_bluetooth_read_connected_device_rssi(bt_bdaddr_t address);

/** Gives up connecting. @return BT_STATUS_FAIL, with nothing sent, while any ACL link is up. Prints the
 * state. */
bt_status_t vym_bluetooth_acl_cancel_connect(bt_bdaddr_t address);

/** Answers `connection_auth_req_cb`. @param accept 1 to allow, 0 to refuse. */
bt_status_t vym_bluetooth_connection_auth(bt_bdaddr_t address, uint8_t profile_id, uint8_t accept);

/* Power management and tests. */

/** Tells the server that the system is about to sleep. */
bt_status_t vym_bluetooth_os_suspend_action(void);

/** Tells the server that the system is awake. */
bt_status_t vym_bluetooth_os_wakeup_action(void);

/** @param rx_frequency RF channel 0x00 to 0x27: (MHz - 2402) / 2 (Core Specification, LE Receiver
 * Test). */
bt_status_t vym_bluetooth_le_receiver_test(uint8_t rx_frequency);

/**
 * @param tx_frequency        RF channel 0x00 to 0x27.
 * @param length_of_test_data bytes in each packet.
 * @param packet_payload      pattern 0x00 to 0x07 (Core Specification, LE Transmitter Test).
 */
bt_status_t vym_bluetooth_le_transmitter_test(uint8_t tx_frequency, uint8_t length_of_test_data,
                                              uint8_t packet_payload);

/** Ends the test; answered by `le_test_end_cb`. */
bt_status_t vym_bluetooth_le_test_end(void);

/** @param mode 0 none, 1 local, 2 remote loopback (Core Specification, Write Loopback Mode). */
bt_status_t vym_bluetooth_write_loopback_mode(uint8_t mode);

/* Descriptors handed over by the server. */

/**
 * Names who takes the descriptors of one kind; used by the audio and serial modules. The registration
 * outlives vym_bluetooth_done().
 *
 * @param id       IPC_ID_SPP or IPC_ID_AUDIO; any other is ignored.
 * @param callback NULL: descriptors of this kind are closed.
 */
void vym_bluetooth_register_data_transport_callback(uint8_t id,
                                                    data_transport_established_impl_callback callback);

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** Asks for one property of the adapter. */
bt_status_t vym_bluetooth_get_adapter_property(uint8_t type);

/** Sets one property of the adapter; `val` is sent as it lies in memory, NULL as an empty value. */
bt_status_t vym_bluetooth_set_adapter_property(uint8_t type, uint16_t len, uint8_t* val);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
