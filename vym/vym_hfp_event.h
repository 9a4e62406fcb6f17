// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The hands-free events: tags HA to HZ.
#ifndef VYM_HFP_EVENT_H
#define VYM_HFP_EVENT_H

#include "vym_event_parser.h"
#include "vym_hfp_impl.h"

extern "C" {

typedef struct hfp_event_parser {
    event_parser_t base;
    hfp_impl_callback_t* cbk;
} hfp_event_parser_t;

// `cb` must live as long as the parser. NULL without memory.
event_parser_t* create_hfp_event_parser(hfp_impl_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_hfp_event_parser(event_parser_t* parser);

} // extern "C"

#endif
