// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The remote control's events: tags RA to RS and RWA to RWG.
#ifndef VYM_AVRCP_EVENT_H
#define VYM_AVRCP_EVENT_H

#include "vym_avrcp_impl.h"
#include "vym_event_parser.h"

extern "C" {

typedef struct avrcp_event_parser {
    event_parser_t base;
    avrcp_impl_callback_t* cbk;
} avrcp_event_parser_t;

// `cb` must live as long as the parser. NULL without memory.
event_parser_t* create_avrcp_event_parser(avrcp_impl_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_avrcp_event_parser(event_parser_t* parser);

} // extern "C"

#endif
