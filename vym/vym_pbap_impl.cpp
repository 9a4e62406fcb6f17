// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the phone-book events do: they are passed on to the application, those about connections also
// feed the list, and raw vCards end here.

#include "vym_pbap_impl.h"

#include "vym_delegate.h"

#include <cstdio>

namespace {

using app = pbap_callback_t;
using vym::pass_on;

constexpr uint8_t kConnected = 0;

std::atomic<pbap_callback_t*> s_delegate; // the application's table

// The application hears first: inside its callback the list is still as it was.
void on_connection_status_cbk(uint8_t status, bt_bdaddr_t address) {
    vym::notify(s_delegate.load(), &app::connection_status_cb, status, address);
    if (status != kConnected) {
        vym_pbap_remove_connection(address);
    } else if (vym_pbap_add_connection(address) == 0) {
        puts("PBAP: on_connection_status_cbk  device connection state error");
    }
}

// Raw vCards have no place in the application's table.
template <class... Parameters>
void drop(Parameters...) {}

pbap_impl_callback_t s_handlers = {
    on_connection_status_cbk,
    pass_on<s_delegate, &app::get_phonebook_status_cb>::handler,
    pass_on<s_delegate, &app::get_phonebook_size_cb>::handler,
    drop, // vcf_data_ind_cb
    pass_on<s_delegate, &app::index_data_ind_cb>::handler,
    drop, // phonebook_rawdata_ind_cb
    pass_on<s_delegate, &app::phonebook_photodata_ind_cb>::handler,
};

} // namespace

extern "C" {

pbap_impl_callback_t* vym_pbap_handlers(void) {
    return &s_handlers;
}

void vym_pbap_set_delegate(pbap_callback_t* cbk) {
    s_delegate = cbk;
}

} // extern "C"
