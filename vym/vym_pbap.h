/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_pbap.h
 * The phone book (PBAP): a phone's contacts and lists of calls, entry by entry.
 *
 * Connect to the phone, ask for the size of an object, then for its entries: each arrives in an
 * `index_data_ind_cb`, photographs in pieces in `phonebook_photodata_ind_cb` when the filter asks for
 * them, and `get_phonebook_status_cb` tells the end. Commands other than connect and disconnect name no
 * phone; the server takes the one that it is connected to.
 *
 * Every call writes one command and returns; what comes of it arrives in the callbacks, on the receive
 * thread (see vym_sdk.h). Functions return BT_STATUS_SUCCESS when the command was written (or dropped
 * because the library is not connected), BT_STATUS_NOMEM when it could not be built, and BT_STATUS_FAIL
 * where they say so. Values are not checked: the server decides what to do with them. Any thread may
 * call.
 */
#ifndef VYM_PBAP_H
#define VYM_PBAP_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What is fetched. */
typedef VYM_ENUM(tag_sync_type){
    SYNC_OCH = 2,           /**< outgoing calls */
    SYNC_MCH = 3,           /**< missed calls */
    SYNC_ICH = 4,           /**< incoming calls */
    SYNC_SIM_CONTACT = 5,   /**< contacts on the SIM card */
    SYNC_PHONE_CONTACT = 6, /**< contacts in the phone */
    SYNC_CALLLOG = 7,       /**< all calls */
} sync_type_t;

/** Properties of an entry's vCard, one bit each; bits without a name here are passed on as they are. */
typedef VYM_ENUM(tag_mask_type){
    PBAP_INFO_MASK_PHOTO = 0x10, /**< the photograph */
} mask_type_t;

/** One entry of a phone book or a list of calls; what does not apply is 0 or empty. */
typedef struct tag_phone_book {
    /** The object it belongs to, 0 to 15, as the server gives it. */
    int target;
    /** Its index in that object. */
    int index;
    /** Ended by a NUL. */
    char name[255];
    /** Contacts only: the kind of number. */
    int tel_type;
    /** Ended by a NUL, cut to 31 characters. */
    char number[32];
    /** Targets 7 to 10 and 15 only: the time of the call, ended by a NUL, cut to 39 characters. */
    char time[40];
} phone_book_t;

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. A member may be
 * changed after init; it is looked up for each event. `result` is as the server numbers it.
 */
typedef struct tag_pbap_callback {
    /** `status`: 0 connected, any other value disconnected. vym_pbap_is_connected() follows when the
     * callback has returned. */
    void (*connection_status_cb)(uint8_t status, bt_bdaddr_t address);
    /** The download has ended. */
    void (*get_phonebook_status_cb)(uint16_t result);
    /** Answer to vym_pbap_get_phonebook_size(). */
    void (*get_phonebook_size_cb)(uint16_t type, uint16_t size, uint16_t result);
    /** One entry of a download. */
    void (*index_data_ind_cb)(phone_book_t phone_book);
    /** A piece of the photograph of the entry `index`; `state` tells the pieces apart. `data` is valid
     * until the callback returns, and NULL when the piece is empty. */
    void (*phonebook_photodata_ind_cb)(uint8_t state, uint16_t index, uint16_t data_len, uint8_t* data);
} pbap_callback_t;

/**
 * Starts the phone-book module. Call it after vym_sdk_init_ex().
 *
 * @param cbk owned by the application, must live until vym_pbap_done() returns. NULL: events are
 * dropped, connections are counted all the same.
 */
void vym_pbap_init(pbap_callback_t* cbk);

/** Stops the phone-book module and forgets its connections; no callback runs after it returns. Must not
 * be called from a callback. Harmless without init. */
void vym_pbap_done(void);

/** Connects to a phone; answered by `connection_status_cb`. */
bt_status_t vym_pbap_connect(bt_bdaddr_t address);

/** Disconnects from a phone; answered by `connection_status_cb`. */
bt_status_t vym_pbap_disconnect(bt_bdaddr_t address);

/**
 * @return 1 while a phone is connected, else 0. With several phones it may stay 1 after the last has
 * gone: see Pbap_List_RemoveNodeByAddress().
 */
int vym_pbap_is_connected(void);

/**
 * Downloads entries.
 *
 * @param type   the object; its low 8 bits are sent.
 * @param offset the first entry.
 * @param count  how many; 0 asks for the size, see vym_pbap_get_phonebook_size().
 */
bt_status_t vym_pbap_get_phonebook(sync_type_t type, uint16_t offset, uint16_t count);

/** Asks for the number of entries; answered by `get_phonebook_size_cb`. @return BT_STATUS_SUCCESS. */
bt_status_t vym_pbap_get_phonebook_size(sync_type_t type);

/** Ends a download before its end. */
bt_status_t vym_pbap_cancel_get_phonebook(void);

/** Chooses the properties that later downloads bring. */
bt_status_t vym_pbap_filter_mask(mask_type_t mask);

/**
 * Fetches one entry.
 *
 * @param index  the entry's index.
 * @param number the number to look for.
 * @return BT_STATUS_FAIL, with nothing sent, for NULL and for a number with CR or LF inside.
 */
bt_status_t vym_pbap_pull_vcard_by_number(int index, char* number);

/** A connected phone. */
typedef struct PBAPConnectionStru {
    /** The phone. */
    bt_bdaddr_t address;
    /** The one that connected after it, or NULL. */
    struct PBAPConnectionStru* next;
} NODESTRU;

/** A list of them; {NULL, NULL} is an empty one. */
typedef struct tag_pbap_list {
    /** The first phone, NULL in an empty list. */
    NODESTRU* head;
    /** The last one. */
    NODESTRU* tail;
} LISTSTRU;

/**
 * Appends a node behind the last one that can be reached from `head`, whatever its `next` holds. In a
 * list without a tail it becomes the head, and what the head was is lost.
 *
 * The five functions work on lists of the application's own; nodes come from malloc() or calloc(). Each
 * takes the module's lock, so that any thread may call. A NULL list or node does nothing.
 */
void Pbap_List_AddTail(LISTSTRU* list, NODESTRU* node);

/** @return the first node with this address, NULL when there is none. */
NODESTRU* Pbap_List_GetNodeByAddress(LISTSTRU* list, bt_bdaddr_t address);

/**
 * Removes the first node with this address and returns it, NULL when there is none.
 *
 * @warning Only the head is really taken out. Any other node stays linked behind its predecessor: it is
 * still found, counted and freed with the list, and removing all nodes before it makes it the head
 * again. So do not free() what this returns unless it was the head. When the head goes that was the
 * tail as well, the nodes that were left behind it become the list without a tail, which the next
 * Pbap_List_AddTail() drops: keep track of them. The library counts its phones in such a list.
 */
NODESTRU* Pbap_List_RemoveNodeByAddress(LISTSTRU* list, bt_bdaddr_t address);

/** Frees every node that can be reached from `head` and empties the list. */
void Pbap_List_RemoveAll(LISTSTRU* list);

/** @return the number of nodes that can be reached from `head`. */
int Pbap_List_GetSize(LISTSTRU* list);

#ifdef __cplusplus
}
#endif

#endif
