// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The HID events: tags DA to DH, without DD.
#ifndef VYM_HID_EVENT_H
#define VYM_HID_EVENT_H

#include "vym_event_parser.h"
#include "vym_hid_impl.h"

extern "C" {

typedef struct hid_event_parser {
    event_parser_t base;
    hid_impl_callback_t* cbk;
} hid_event_parser_t;

// `cb` must live as long as the parser. NULL without memory.
event_parser_t* create_hid_event_parser(hid_impl_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_hid_event_parser(event_parser_t* parser);

} // extern "C"

#endif
