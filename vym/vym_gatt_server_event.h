// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT server's events: tags JA to JP.
#ifndef VYM_GATT_SERVER_EVENT_H
#define VYM_GATT_SERVER_EVENT_H

#include "vym_event_parser.h"
#include "vym_gatt_server_impl.h"

extern "C" {

typedef struct gatt_server_event_parser {
    event_parser_t base;
    gatt_server_impl_callback_t* cbk;
} gatt_server_event_parser_t;

// `cb` must live as long as the parser. NULL without memory.
event_parser_t* create_gatt_server_event_parser(gatt_server_impl_callback_t* cb);

// Frees the parser; NULL is accepted. Unregister it first.
void destroy_gatt_server_event_parser(event_parser_t* parser);

} // extern "C"

#endif
