// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_event_table.h"

#include <cstdlib>
#include <cstring>

namespace vym {

int process_indexed(event_parser_t* evt_parser, const tag_index& index, uint8_t* buffer, int offset,
                    int length) {
    evt_parser->event_end_pos = check_event_end_pos(buffer, offset, length);
    if (length < 2) {
        return -1;
    }
    const uint8_t* text = buffer + offset;
    uint8_t row = index.two[tag_index::place_of_two(text[0], text[1])];
    if (row == tag_index::kNone && length > 2) {
        row = index.three[tag_index::place_of_three(text[2])];
    }
    if (row == tag_index::kNone) {
        return -1;
    }
    const int pos = process(evt_parser, buffer, offset, length, &evt_parser->parser_list[row]);
    return pos > 0 ? pos : -1;
}

event_parser_t* create_with_entries(size_t size, const parser_t* entries, size_t count) {
    event_parser_t* base = create_event_parser();
    auto* list = static_cast<parser_t*>(malloc(count * sizeof(parser_t)));
    auto* parser = base != nullptr ? static_cast<event_parser_t*>(realloc(base, size)) : nullptr;
    if (parser == nullptr || list == nullptr) {
        free(parser != nullptr ? parser : base);
        free(list);
        return nullptr;
    }
    memcpy(list, entries, count * sizeof(parser_t));
    parser->num_of_parsers = static_cast<int>(count);
    parser->parser_list = list;
    return parser;
}

int decode_event(decode_function decode, bool waits_for_end, void* callbacks, uint8_t* buffer,
                 int pos) {
    field_reader in(buffer, pos);
    if (waits_for_end && !in.complete()) {
        return -1;
    }
    return decode(in, callbacks) ? in.pos() : -1;
}

} // namespace vym
