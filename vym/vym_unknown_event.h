/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_unknown_event.h
 * The last parser in the registry: it takes whatever complete event nobody else wanted, in silence, so
 * that a newer server's events cost an older library nothing but themselves.
 */
#ifndef VYM_UNKNOWN_EVENT_H
#define VYM_UNKNOWN_EVENT_H

#include "vym_event_parser.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** @return the catch-all parser; NULL without memory. */
event_parser_t* create_unknown_event_parser(void);

/** Frees it; NULL is accepted. */
void destroy_unknown_event_parser(event_parser_t* parser);

/** @return the index of the NUL that ends the text at `offset`, -1 when there is none in `length`. */
int unknown_process_event(struct tag_event_parser* evt_parser, uint8_t* buffer, int offset, int length);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
