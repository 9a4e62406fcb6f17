// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_event_parser.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

enum length_check_t { LENGTH_OK = 0, LENGTH_ENDED = 1, LENGTH_NOT_ARRIVED = 2 };

// The event being decoded on this thread. Decoders get only a buffer and a position; this is how they
// learn where the received text ends.
struct current_event_t {
    const uint8_t* buffer; // NULL outside a decoder
    int end;
    int complete;
};

thread_local current_event_t t_current;

std::atomic<evt_log_sink_t> s_sink{nullptr};

} // namespace

extern "C" {

event_parser_t* create_event_parser(void) {
    auto* parser = static_cast<event_parser_t*>(calloc(1, sizeof(event_parser_t)));
    if (parser != nullptr) {
        parser->process_event = process_event_impl;
    }
    return parser;
}

void destroy_event_parser(event_parser_t* parser) {
    (void)parser;
}

int process_event_impl(event_parser_t* evt_parser, uint8_t* buffer, int offset, int length) {
    if (evt_parser == nullptr || evt_parser->parser_list == nullptr) {
        return -1;
    }
    evt_parser->event_end_pos = check_event_end_pos(buffer, offset, length);
    for (int i = 0; i < evt_parser->num_of_parsers; ++i) {
        const int pos = process(evt_parser, buffer, offset, length, &evt_parser->parser_list[i]);
        if (pos > 0) {
            return pos;
        }
    }
    return -1;
}

int process(event_parser_t* evt_parser, uint8_t* buffer, int offset, int length, parser_t* parser) {
    const int pos = check_tag(parser->get_keyword(), buffer, offset, length);
    if (pos < 0) {
        return pos;
    }
    // Taken before the decoder runs: a callback may write into the text it is given.
    const int end = evt_parser->event_end_pos;
    switch (check_event_length(evt_parser, offset, length, pos, parser->get_min_expected_length())) {
    case LENGTH_ENDED:
        evt_log("%s: Invalid parameters!\n", parser->get_tag());
        return end;
    case LENGTH_NOT_ARRIVED:
        evt_log("%s: Not enough information!\n", parser->get_tag());
        return end;
    default:
        break;
    }
    const current_event_t outer = t_current;
    t_current = {buffer, end >= 0 ? end : offset + length, end >= 0 ? 1 : 0};
    const int processed = parser->parse(buffer, pos);
    t_current = outer;
    if (processed < 0) {
        return end;
    }
    if (end < 1 || end == processed) {
        return processed;
    }
    evt_log("%s: Still %d characters not processed!!", parser->get_tag(), end - processed);
    return end;
}

int check_tag(const char* tag, uint8_t* buffer, int offset, int length) {
    const int tag_len = static_cast<int>(strlen(tag));
    if (tag_len > length || memcmp(buffer + offset, tag, static_cast<size_t>(tag_len)) != 0) {
        return -1;
    }
    return offset + tag_len;
}

int check_event_end_pos(uint8_t* buffer, int offset, int length) {
    if (length <= 0) {
        return -1;
    }
    const void* nul = memchr(buffer + offset, 0, static_cast<size_t>(length));
    return nul != nullptr ? static_cast<int>(static_cast<const uint8_t*>(nul) - buffer) : -1;
}

int check_event_length(event_parser_t* evt_parser, int offset, int length, int pos,
                       int expectedMinLen) {
    const int need = pos + expectedMinLen;
    if (evt_parser->event_end_pos >= 1) {
        return evt_parser->event_end_pos < need ? LENGTH_ENDED : LENGTH_OK;
    }
    return offset + length < need ? LENGTH_NOT_ARRIVED : LENGTH_OK;
}

int is_terminator_char(char b) {
    return b == 0x00 || b == 0x0D || b == 0x0A ? 1 : 0;
}

void evt_log(const char* format, ...) {
    const evt_log_sink_t sink = s_sink.load(std::memory_order_acquire);
    if (sink == nullptr) {
        return;
    }
    va_list args;
    va_start(args, format);
    sink(format, args);
    va_end(args);
}

void evt_log_set_sink(evt_log_sink_t sink) {
    s_sink.store(sink, std::memory_order_release);
}

int vym_event_text_end(const uint8_t* buffer, int pos, int* complete) {
    if (t_current.buffer == buffer) {
        *complete = t_current.complete;
        return t_current.end;
    }
    *complete = 1;
    const size_t length = strnlen(reinterpret_cast<const char*>(buffer + pos), INT_MAX / 2);
    return pos + static_cast<int>(length);
}

} // extern "C"
