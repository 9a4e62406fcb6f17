// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_unknown_event.h"

#include <cstdlib>

extern "C" {

event_parser_t* create_unknown_event_parser(void) {
    event_parser_t* parser = create_event_parser();
    if (parser != nullptr) {
        parser->process_event = unknown_process_event;
    }
    return parser;
}

void destroy_unknown_event_parser(event_parser_t* parser) {
    free(parser);
}

int unknown_process_event(struct tag_event_parser* evt_parser, uint8_t* buffer, int offset,
                          int length) {
    (void)evt_parser;
    return check_event_end_pos(buffer, offset, length);
}

} // extern "C"
