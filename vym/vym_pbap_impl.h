// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the phone-book module's API, its events and its list of connections share.
#ifndef VYM_PBAP_IMPL_H
#define VYM_PBAP_IMPL_H

#include "vym_pbap.h"

extern "C" {

// The module's handlers, in the order of the event table. They run on the receive thread.
typedef struct tag_pbap_impl_callback {
    void (*connection_status_cb)(uint8_t status, bt_bdaddr_t address);
    void (*get_phonebook_status_cb)(uint16_t result);
    void (*get_phonebook_size_cb)(uint16_t type, uint16_t size, uint16_t result);
    void (*vcf_data_ind_cb)(char* line);
    void (*index_data_ind_cb)(phone_book_t phone_book);
    void (*phonebook_rawdata_ind_cb)(uint8_t type, uint16_t data_len, uint8_t* data);
    void (*phonebook_photodata_ind_cb)(uint8_t state, uint16_t index, uint16_t data_len, uint8_t* data);
} pbap_impl_callback_t;

// The phones that are connected. Their lock is never held while the application is called.

// Returns 0 when the phone is in the list already.
int vym_pbap_add_connection(bt_bdaddr_t address);
void vym_pbap_remove_connection(bt_bdaddr_t address);
int vym_pbap_count_connections(void);
// Empties the list and frees what it ever held.
void vym_pbap_forget_connections(void);
// How many nodes the module holds, linked or not.
int vym_pbap_count_nodes(void);

// Puts a work item for `event` (its low 8 bits) into the queue; nothing without memory. No event is
// wired to it.
void schedule_pbap_event(int event, void* param);

// The handlers, and the table they tell.
pbap_impl_callback_t* vym_pbap_handlers(void);
void vym_pbap_set_delegate(pbap_callback_t* cbk);

} // extern "C"

#endif
