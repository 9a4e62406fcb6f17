/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_hid.h
 * The HID device: this device as the keyboard, mouse or remote control of a host.
 *
 * Register the device with what its service record says and its report descriptor;
 * `application_state_changed_cb` answers. Then the host connects, or vym_hid_connect() does, and
 * `hid_connection_state_cb` tells; from then on vym_hid_send_report() sends each input report. There is
 * one host at a time, and the library keeps no state of the connection. What a host asks for (reports,
 * the protocol, unplugging) is dealt with by the server and does not reach the application.
 *
 * Every call writes one command and returns; what comes of it arrives in the callbacks, on the receive
 * thread (see vym_sdk.h), which may call every command here. Functions return BT_STATUS_SUCCESS when
 * the command was written (or dropped because the library is not connected) and BT_STATUS_NOMEM, with
 * nothing sent, when it could not be built: no memory, or a block that grows beyond 65535 bytes when it
 * is escaped (each 00, 0A, 0D and DC counts twice). Values are not checked: the server decides what to
 * do with them. Any thread may call.
 *
 * Report types, protocols and error codes are those of the Human Interface Device Profile; how the
 * server numbers states and others is up to the server, and they pass unchanged.
 */
#ifndef VYM_HID_H
#define VYM_HID_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The application's callbacks. Both run on the receive thread; NULL members are skipped. A member may
 * be changed after init; it is looked up for each event. States are as the server numbers them; one
 * above 0x7FFFFFFF arrives as 0x7FFFFFFF.
 */
typedef struct tag_hid_callback {
    /** The device was registered or unregistered. */
    void (*application_state_changed_cb)(bt_bdaddr_t address, int state);
    /** The connection to the host came or went. */
    void (*hid_connection_state_cb)(bt_bdaddr_t address, int state);
} hid_callback_t;

/**
 * Starts the HID module. Call it after vym_sdk_init_ex().
 *
 * @param cbk owned by the application, must live until vym_hid_done() returns. NULL: events are
 * dropped.
 */
void vym_hid_init(hid_callback_t* cbk);

/** Stops the HID module; no callback runs after it returns. Must not be called from a callback.
 * Harmless without init. The device stays registered at the server. */
void vym_hid_done(void);

/**
 * Registers the device; answered by `application_state_changed_cb`. The six blocks are bytes as they
 * are, each with its length in bytes; NULL is an empty one, whatever its length says. They are read
 * before the call returns.
 *
 * @param subclass    what the device is: the minor device class of a peripheral (Assigned Numbers,
 *                    Class of Device), e.g. 0x40 keyboard, 0x80 pointing device.
 * @param name        name of the service.
 * @param description its description.
 * @param provider    who provides it.
 * @param descriptors the HID report descriptor (USB Device Class Definition for HID).
 * @param p_in_qos    quality of service of the link towards this device, as the server wants it.
 * @param p_out_qos   the same, towards the host.
 */
bt_status_t vym_hid_register_app(uint8_t subclass, uint16_t name_len, uint8_t* name, uint16_t dc_len,
                                 uint8_t* description, uint16_t provider_len, uint8_t* provider,
                                 uint16_t desc_len, uint8_t* descriptors, uint16_t p_in_qos_len,
                                 uint8_t* p_in_qos, uint16_t p_out_qos_len, uint8_t* p_out_qos);

/** Takes the registration back; answered by `application_state_changed_cb`. */
bt_status_t vym_hid_unregister_app(void);

/**
 * Sends a report to the host.
 *
 * @param type     the report's type (input, output, feature).
 * @param id       the report's identifier; sent as the 8 digits of its 32 bits.
 * @param data_len bytes of the report.
 * @param report   the report; NULL is an empty one, whatever `data_len` says.
 */
bt_status_t vym_hid_send_report(uint8_t type, int id, uint16_t data_len, uint8_t* report);

/** Refuses the host's request. @param error why: a result code of the profile's handshake. */
bt_status_t vym_hid_report_error_impl(uint8_t error);

/** Ends the host's relation to this device (virtual cable unplug). */
bt_status_t vym_hid_unplug_impl(void);

/** Connects to a host; answered by `hid_connection_state_cb`. */
bt_status_t vym_hid_connect(bt_bdaddr_t address);

/** Ends the connection to the host; answered by `hid_connection_state_cb`. */
bt_status_t vym_hid_disconnect(void);

#ifdef __cplusplus
}
#endif

#endif
