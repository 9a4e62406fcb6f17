// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_pbap.h"

#include "vym_command.h"
#include "vym_pbap_event.h"
#include "vym_pbap_impl.h"
#include "vym_pbap_queue.h"
#include "vym_sdk.h"

#include <cstdlib>

namespace {

using vym::hex2;
using vym::hex4;
using vym::hex8;
using vym::send_command;
using vym::tag;
using vym::text;

event_parser_t* s_pbap_event_parser;

} // namespace

extern "C" {

void vym_pbap_init(pbap_callback_t* cbk) {
    vym_pbap_forget_connections();
    vym_pbap_set_delegate(cbk);
    vym_profile_start(&s_pbap_event_parser, create_pbap_event_parser(vym_pbap_handlers()),
                      destroy_pbap_event_parser);
}

void vym_pbap_done(void) {
    vym_profile_stop(&s_pbap_event_parser, destroy_pbap_event_parser);
    vym_pbap_set_delegate(nullptr);
    vym_pbap_forget_connections();
}

bt_status_t vym_pbap_connect(bt_bdaddr_t address) {
    return send_command<tag("TC")>(address);
}

bt_status_t vym_pbap_disconnect(bt_bdaddr_t address) {
    return send_command<tag("TD")>(address);
}

int vym_pbap_is_connected(void) {
    return vym_pbap_count_connections() > 0 ? 1 : 0;
}

bt_status_t vym_pbap_get_phonebook(sync_type_t type, uint16_t offset, uint16_t count) {
    return send_command<tag("TA")>(hex2(static_cast<uint8_t>(type)), hex4(offset), hex4(count));
}

bt_status_t vym_pbap_get_phonebook_size(sync_type_t type) {
    vym_pbap_get_phonebook(type, 0, 0);
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_pbap_cancel_get_phonebook(void) {
    return send_command<tag("TW")>();
}

bt_status_t vym_pbap_filter_mask(mask_type_t mask) {
    return send_command<tag("TM")>(hex8(mask));
}

bt_status_t vym_pbap_pull_vcard_by_number(int index, char* number) {
    return send_command<tag("TN")>(hex8(index), text(number));
}

void schedule_pbap_event(int event, void* param) {
    auto* item = static_cast<pbap_queue_t*>(calloc(1, sizeof(pbap_queue_t)));
    if (item != nullptr) {
        item->parse_index = static_cast<uint8_t>(event);
        item->param = param;
        writeto_pbap_queue(item);
    }
}

} // extern "C"
