/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_event_parser.h
 * The framework that finds an event's end, matches its tag and calls its decoder.
 *
 * An event is a tag of two or three letters, fixed-width hexadecimal fields, sometimes a variable tail,
 * and one NUL. A profile is a table of entries, one for each tag; the receive loop offers the text to
 * each registered table in turn. All of it runs on the receive thread.
 */
#ifndef VYM_EVENT_PARSER_H
#define VYM_EVENT_PARSER_H

#include <stdarg.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One tag of a profile. */
typedef struct tag_parser {
    /** The tag as it stands on the wire, for example "BH". */
    const char* (*get_keyword)(void);
    /** The name of the event, for diagnostics only. */
    const char* (*get_tag)(void);
    /** Characters that the fixed fields occupy after the tag. */
    int (*get_min_expected_length)(void);
    /**
     * Decodes the fields at `buffer[pos]` and calls back.
     * @return the index after the last character decoded; negative when the event cannot be decoded,
     * either because it is malformed or because its variable tail has not arrived yet.
     */
    int (*parse)(uint8_t* buffer, int pos);
} parser_t;

/** A profile's table and the state of the event in progress. */
typedef struct tag_event_parser {
    /** Index of the NUL that ends the event in progress, -1 when it has not arrived. */
    int event_end_pos;
    /** Entries of `parser_list`. */
    int num_of_parsers;
    /** Owned by this structure. */
    parser_t* parser_list;
    /**
     * Offers the text at `buffer[offset]`.
     * @return the index after what was consumed; 0 or less when the text is not this profile's or not
     *         complete.
     */
    int (*process_event)(struct tag_event_parser* evt_parser, uint8_t* buffer, int offset, int length);
} event_parser_t;

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** @return a zeroed base that runs process_event_impl(), to be freed with free(); NULL without memory.
 */
event_parser_t* create_event_parser(void);

/** Does nothing: each profile frees its own parser. */
void destroy_event_parser(event_parser_t* parser);

/** Runs the table over the text at `offset`. @return see event_parser_t::process_event. */
int process_event_impl(event_parser_t* evt_parser, uint8_t* buffer, int offset, int length);

/** Tries one entry of the table. @return see event_parser_t::process_event. */
int process(event_parser_t* evt_parser, uint8_t* buffer, int offset, int length, parser_t* parser);

/** @return the index after the tag when it stands at `offset`, else -1. Case matters. */
int check_tag(const char* tag, uint8_t* buffer, int offset, int length);

/** @return the index of the first NUL in [offset, offset + length), else -1. */
int check_event_end_pos(uint8_t* buffer, int offset, int length);

/** @return 0 when the fields are there, 1 when the event ended before them, 2 when they have not
 * arrived. */
int check_event_length(event_parser_t* evt_parser, int offset, int length, int pos, int expectedMinLen);

/** @return 1 for NUL, CR and LF, else 0. */
int is_terminator_char(char b);

/** The framework's own diagnostics. They are discarded unless a sink was set. */
void evt_log(const char* format, ...);

/** Receives what evt_log() is given. */
typedef void (*evt_log_sink_t)(const char* format, va_list args);

/** Sets the sink of evt_log() (NULL: discard), for the library's own tests. */
void evt_log_set_sink(evt_log_sink_t sink);

/**
 * Where the text of the event being decoded ends: at its NUL or, while that has not arrived, after the
 * last character received. Outside the framework it is the text's own NUL.
 *
 * @param buffer   the buffer given to the decoder.
 * @param pos      the position given to the decoder.
 * @param complete set to 1 when the event's NUL is there, else 0.
 */
int vym_event_text_end(const uint8_t* buffer, int pos, int* complete);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
