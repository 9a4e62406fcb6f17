// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The phone-book events: tags TB to TS.
#ifndef VYM_PBAP_EVENT_H
#define VYM_PBAP_EVENT_H

#include "vym_event_parser.h"
#include "vym_pbap_impl.h"

extern "C" {

typedef struct pbap_event_parser {
    event_parser_t base;
    pbap_impl_callback_t* cbk;
} pbap_event_parser_t;

// `cb` must live as long as the parser. NULL without memory.
event_parser_t* create_pbap_event_parser(pbap_impl_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_pbap_event_parser(event_parser_t* parser);

} // extern "C"

#endif
