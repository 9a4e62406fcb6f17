/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_bluetooth_event.h
 * The adapter's events: tags PA, PV, PD and BB to BV.
 */
#ifndef VYM_BLUETOOTH_EVENT_H
#define VYM_BLUETOOTH_EVENT_H

#include "vym_bluetooth_impl.h"
#include "vym_event_parser.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The adapter's parser: the base and the handlers it decodes for. */
typedef struct bluetooth_event_parser {
    event_parser_t base;
    bluetooth_impl_callback_t* cbk;
} bluetooth_event_parser_t;

/** @param cbks must live as long as the parser. @return NULL without memory. */
event_parser_t* create_bluetooth_event_parser(bluetooth_impl_callback_t* cbks);

/** Frees the parser; NULL is accepted. Unregister it first. */
void destroy_bluetooth_event_parser(event_parser_t* parser);

#ifdef __cplusplus
}
#endif

#endif
