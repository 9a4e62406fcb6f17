/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file bluetooth.h
 * Types that several profiles share: results, addresses, UUIDs, adapter properties and states.
 *
 * Everything here is plain C99. Structures are passed by value through the callbacks, so their layout
 * is part of the binary interface; it is checked by the library's own tests for 32-bit ARM.
 */
#ifndef VYM_BLUETOOTH_TYPES_H
#define VYM_BLUETOOTH_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * An enumeration that may carry any 32-bit value: states and modes pass through the library as the
 * application or the server gave them, named here or not. C++ needs the width said; C has it.
 */
#ifdef __cplusplus
#define VYM_ENUM(name) enum name : int
#else
#define VYM_ENUM(name) enum name
#endif

/** Result of every call. The library itself produces 0 to 3 and 7; the others name what a server may
 * report. */
typedef VYM_ENUM(tag_bt_status){
    BT_STATUS_SUCCESS = 0,        /**< sent, or done */
    BT_STATUS_FAIL = 1,           /**< failed, without a reason */
    BT_STATUS_NOT_READY = 2,      /**< switched off, starting, or the profile is not initialised */
    BT_STATUS_NOMEM = 3,          /**< no memory */
    BT_STATUS_BUSY = 4,           /**< something else is in progress; later it may work */
    BT_STATUS_DONE = 5,           /**< it was already done */
    BT_STATUS_UNSUPPORTED = 6,    /**< not in this server or controller */
    BT_STATUS_PARM_INVALID = 7,   /**< an argument is not valid */
    BT_STATUS_UNHANDLED = 8,      /**< nobody took the request */
    BT_STATUS_AUTH_FAILURE = 9,   /**< authentication failed: a wrong PIN or passkey */
    BT_STATUS_RMT_DEV_DOWN = 10,  /**< the remote device does not answer */
    BT_STATUS_AUTH_REJECTED = 11, /**< the remote device rejected the pairing */
    BT_STATUS_JNI_ENVIRONMENT_ERROR = 12,   /**< the server lacks its Java environment */
    BT_STATUS_JNI_THREAD_ATTACH_ERROR = 13, /**< the server could not attach a thread to Java */
    BT_STATUS_WAKELOCK_ERROR = 14,          /**< the host could not be kept awake */
} bt_status_t;

/** A device address. `address[5]` is the most significant byte, the one written first:
 * 00:11:22:33:44:55 has `address[5]` 0x00 and `address[0]` 0x55. */
typedef struct tag_bt_bdaddr {
    /** Least significant byte first. */
    uint8_t address[6];
} bt_bdaddr_t;

/** A 128-bit UUID, most significant byte in `uu[0]`: 00001101-0000-1000-8000-00805F9B34FB begins with
 * 0x00, 0x00, 0x11, 0x01. The library does not look at it. On the wire events carry `uu[0]` first, most
 * commands `uu[15]`: each function says which. */
typedef struct tag_bt_uuid {
    /** Most significant byte first. */
    uint8_t uu[16];
} bt_uuid_t;

/** One value of out-of-band pairing data: a hash (C) or a randomizer (R), `data[0]` first on the wire.
 */
typedef struct tag_bt_oob_data {
    /** As it is exchanged out of band. */
    uint8_t data[16];
} bt_oob_data_t;

/** The longest device name in bytes (Core Specification, Link Manager: 248 bytes of UTF-8). */
#define BT_NAME_MAX_LEN 248

/** A device name: at most 248 bytes, always ended by a NUL in what the library returns. */
typedef struct tag_bt_bdname {
    /** UTF-8. */
    uint8_t name[BT_NAME_MAX_LEN + 1];
} bt_bdname_t;

/** One bonded device as the server keeps it. */
typedef struct tag_bt_remote_device {
    /** Its address. */
    bt_bdaddr_t address;
    /** Its name as it was last heard. */
    bt_bdname_t name;
    /** 24 bits (Assigned Numbers). */
    uint32_t class_of_device;
    /** What the server says; it may be above 16, the number of values that fit into `services`. */
    uint8_t num_service;
    /** 16-bit service class UUIDs (Assigned Numbers). */
    uint16_t services[16];
} bt_remote_device_t;

/** The 128-bit service UUIDs of a remote device: `num_service_128bit` times 16 bytes, at most five. */
typedef struct tag_bt_128_service {
    /** How many UUIDs there are. */
    uint8_t num_service_128bit;
    /** The UUIDs, one after the other. */
    uint8_t services_128bit[80];
} bt_128_service_t;

/** Company identifier, LMP version and subversion of a remote controller, as the server packs them. */
typedef uint32_t bt_manufacturer_code_t;

/** Power state of the local adapter. */
typedef VYM_ENUM(tag_bt_state){
    BT_STATE_OFF = 0, /**< switched off */
    BT_STATE_ON = 1,  /**< switched on */
} bt_state_t;

/** Who may find and connect to the local adapter. */
typedef VYM_ENUM(tag_bt_scan_mode){
    BT_SCAN_MODE_NONE = 0,                     /**< nobody may */
    BT_SCAN_MODE_CONNECTABLE = 1,              /**< who knows the address may connect */
    BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE = 2, /**< everybody may find it and connect */
} bt_scan_mode_t;

/** State of the ACL link to a remote device. Note that "connected" is 0. */
typedef VYM_ENUM(tag_bt_acl_state){
    BT_ACL_STATE_CONNECTED = 0,    /**< there is a link */
    BT_ACL_STATE_DISCONNECTED = 1, /**< there is none */
} bt_acl_state_t;

/** State of the bond with a remote device. */
typedef VYM_ENUM(tag_bt_bond_state){
    BT_BOND_STATE_NONE = 0,    /**< not bonded */
    BT_BOND_STATE_BONDING = 1, /**< pairing is in progress */
    BT_BOND_STATE_BONDED = 2,  /**< paired, and the keys are kept */
} bt_bond_state_t;

/** State of device discovery. */
typedef VYM_ENUM(tag_bt_discovery_state){
    BT_DISCOVERY_STOPPED = 0, /**< it has ended */
    BT_DISCOVERY_STARTED = 1, /**< it has begun */
} bt_discovery_state_t;

/** What secure simple pairing asks the user for. */
typedef VYM_ENUM(tag_bt_ssp_variant){
    BT_SSP_VARIANT_PASSKEY_CONFIRMATION = 0, /**< are the numbers the same on both sides? */
    BT_SSP_VARIANT_PASSKEY_ENTRY = 1,        /**< type the number that the other side shows */
    BT_SSP_VARIANT_CONSENT = 2,              /**< shall it be paired? There is no number. */
    BT_SSP_VARIANT_PASSKEY_NOTIFICATION = 3, /**< show the number; the other side types it */
} bt_ssp_variant_t;

/** Properties of the local adapter and of remote devices, by the number they have on the wire. */
typedef VYM_ENUM(tag_bt_property_type){
    BT_PROPERTY_BDNAME = 1,                    /**< name, bt_bdname_t */
    BT_PROPERTY_BDADDR = 2,                    /**< address of the adapter */
    BT_PROPERTY_UUIDS = 3,                     /**< UUIDs of a remote device's services */
    BT_PROPERTY_CLASS_OF_DEVICE = 4,           /**< class of device (Assigned Numbers) */
    BT_PROPERTY_ADAPTER_SCAN_MODE = 7,         /**< bt_scan_mode_t */
    BT_PROPERTY_ADAPTER_BONDED_DEVICES = 8,    /**< addresses of the bonded devices */
    BT_PROPERTY_ADAPTER_DISCOVERY_TIMEOUT = 9, /**< seconds of being discoverable, 0 without end */
    BT_PROPERTY_ADAPTER_SAVED_DEVICES = 15,    /**< the same with names: bt_remote_device_t */
    BT_PROPERTY_REMOTE_DEVICE_PRIORITY = 32,   /**< vym_bluetooth_get_device_priority() */
    BT_PROPERTY_REMOTE_MANUFACTURER_CODE = 33, /**< vym_bluetooth_get_manufacturer_code() */
    /** Not a property of the server: marks a wait for the version text. */
    BT_PROPERTY_VERSION = 34,
    BT_PROPERTY_BONDED_DEVICE_NUM = 35,  /**< how many bonded devices the server keeps */
    BT_PROPERTY_DISCOVERY_INTERVAL = 36, /**< length of a discovery in units of 1.28 s */
} bt_property_type_t;

/** A descriptor that the server hands over: serial data. */
#define IPC_ID_SPP 0
/** Sound. */
#define IPC_ID_AUDIO 1

#ifdef __cplusplus
}
#endif

#endif
