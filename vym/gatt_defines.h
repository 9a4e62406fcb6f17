/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file gatt_defines.h
 * Names for the numbers that GATT clients and servers pass around.
 *
 * The library passes all of them through unchanged, named here or not. What the Bluetooth
 * specifications define has its place in them beside it; the other values are codes between application
 * and server.
 */
#ifndef VYM_GATT_DEFINES_H
#define VYM_GATT_DEFINES_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a characteristic allows, one bit each (Core Specification, Vol 3, Part G, 3.3.1.1). */
typedef VYM_ENUM(tag_gatt_char_prop){
    GATT_CHAR_PROP_BROADCAST = 0x01,         /**< its value may be broadcast in advertisements */
    GATT_CHAR_PROP_READ = 0x02,              /**< it may be read */
    GATT_CHAR_PROP_WRITE_NO_RESPONSE = 0x04, /**< it may be written without an answer */
    GATT_CHAR_PROP_WRITE = 0x08,             /**< it may be written, with an answer */
    GATT_CHAR_PROP_NOTIFY = 0x10,            /**< it notifies, without a confirmation */
    GATT_CHAR_PROP_INDICATE = 0x20,          /**< it indicates, with a confirmation */
    GATT_CHAR_PROP_SIGNED_WRITE = 0x40,      /**< it may be written with a signature */
    GATT_CHAR_PROP_EXTENDED = 0x80,          /**< more is in the descriptor 0x2900 */
} gatt_char_prop_t;

/** Value of a client characteristic configuration descriptor, sent as two bytes, low byte first (Core
 * Specification, Vol 3, Part G, 3.3.3.3). */
typedef VYM_ENUM(tag_gatt_cccd){
    GATT_CCCD_NONE = 0x0000,         /**< neither */
    GATT_CCCD_NOTIFICATION = 0x0001, /**< notifications */
    GATT_CCCD_INDICATION = 0x0002,   /**< indications */
} gatt_cccd_t;

/* 16-bit UUIDs of GATT itself (Assigned Numbers, "Declarations", "Descriptors" and "Services"). */

/** The service that names the device. */
#define GATT_UUID16_GAP_SERVICE 0x1800
/** The service that tells of changed services. */
#define GATT_UUID16_GATT_SERVICE 0x1801
/** Declares a primary service. */
#define GATT_UUID16_PRIMARY_SERVICE 0x2800
/** Declares a secondary service. */
#define GATT_UUID16_SECONDARY_SERVICE 0x2801
/** Declares an included service. */
#define GATT_UUID16_INCLUDE 0x2802
/** Declares a characteristic. */
#define GATT_UUID16_CHARACTERISTIC 0x2803
/** The descriptor that describes a characteristic in words. */
#define GATT_UUID16_CHAR_USER_DESCRIPTION 0x2901
/** The descriptor that switches notifications: gatt_cccd_t. */
#define GATT_UUID16_CLIENT_CHAR_CONFIG 0x2902

/**
 * Initialises a bt_uuid_t with a 16-bit UUID on the Bluetooth Base UUID (Core Specification, Vol 3,
 * Part B, 2.5.1):
 *
 *     bt_uuid_t heart_rate = GATT_UUID_FROM_16(0x180D);
 *
 * @param value a constant, 0x0000 to 0xFFFF.
 */
#define GATT_UUID_FROM_16(value)                                                                       \
    {                                                                                                  \
        {                                                                                              \
            0x00, 0x00, ((value) >> 8) & 0xFF, (value)&0xFF, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, \
                0x80, 0x5F, 0x9B, 0x34, 0xFB                                                           \
        }                                                                                              \
    }

/** Kind of a service, as the server numbers it. */
typedef VYM_ENUM(tag_gatt_service_type){
    GATT_SERVICE_TYPE_PRIMARY = 0,   /**< found by its UUID */
    GATT_SERVICE_TYPE_SECONDARY = 1, /**< found only where another one includes it */
} gatt_service_type_t;

/** How a value is written, as the server numbers it. The procedures: Core Specification, Vol 3, Part G,
 * 4.9. */
typedef VYM_ENUM(tag_gatt_write_type){
    GATT_WRITE_TYPE_NO_RESPONSE = 1, /**< not answered */
    GATT_WRITE_TYPE_DEFAULT = 2,     /**< answered */
    /** Kept by the peer until vym_gatt_client_execute_write(). */
    GATT_WRITE_TYPE_PREPARE = 3,
} gatt_write_type_t;

/** What a read or write asks of the link, as the server numbers it. */
typedef VYM_ENUM(tag_gatt_auth_req){
    GATT_AUTH_REQ_NONE = 0, /**< as the link is */
    /** Encrypted. */
    GATT_AUTH_REQ_NO_MITM = 1,
    /** Encrypted, and paired with protection against a man in the middle. */
    GATT_AUTH_REQ_MITM = 2,
} gatt_auth_req_t;

/** The radio of a connection, as the server numbers it. */
typedef VYM_ENUM(tag_gatt_transport){
    GATT_TRANSPORT_AUTO = 0,   /**< the server chooses */
    GATT_TRANSPORT_BR_EDR = 1, /**< Basic Rate */
    GATT_TRANSPORT_LE = 2,     /**< Low Energy */
} gatt_transport_t;

#ifdef __cplusplus
}
#endif

#endif
