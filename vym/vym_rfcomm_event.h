// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial channels' events: tags SE, SF, SL, SM and SN.
#ifndef VYM_RFCOMM_EVENT_H
#define VYM_RFCOMM_EVENT_H

#include "vym_event_parser.h"
#include "vym_rfcomm_impl.h"

extern "C" {

typedef struct rfcomm_event_parser {
    event_parser_t base;
    rfcomm_impl_callback_t* cbk;
} rfcomm_event_parser_t;

// `cb` must live as long as the parser. NULL without memory.
event_parser_t* create_rfcomm_event_parser(rfcomm_impl_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_rfcomm_event_parser(event_parser_t* parser);

} // extern "C"

#endif
