// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The A2DP events: tags AA, AB, AC and AE. There is nothing between them and the application, so its
// own table is what they call.
#ifndef VYM_A2DP_EVENT_H
#define VYM_A2DP_EVENT_H

#include "vym_a2dp.h"
#include "vym_event_parser.h"

extern "C" {

typedef struct a2dp_event_parser {
    event_parser_t base;
    a2dp_callback_t* cbk;
} a2dp_event_parser_t;

// `cb` must live as long as the parser; NULL drops the events. NULL without memory.
event_parser_t* create_a2dp_event_parser(a2dp_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_a2dp_event_parser(event_parser_t* parser);

} // extern "C"

#endif
