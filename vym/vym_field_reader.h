// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The only way a decoder touches received text: a cursor that knows where the text ends. A field beyond
// the end reads as empty text, that is 0; a counted block beyond it fails.
#ifndef VYM_FIELD_READER_H
#define VYM_FIELD_READER_H

#include "bluetooth.h"
#include "bt_utils.h"
#include "vym_event_parser.h"

#include <cstdint>
#include <cstring>

namespace vym {

class field_reader {
public:
    field_reader(uint8_t* buffer, int pos);

    // Whether the event's NUL has arrived.
    bool complete() const { return m_complete != 0; }
    // The index after what was read, at most the end of the text.
    int pos() const { return m_pos; }

    uint8_t byte();
    // A byte that stays in front of the cursor.
    uint8_t peek_byte();
    uint16_t uint16();
    uint32_t uint32();
    bt_bdaddr_t address();
    bt_oob_data_t oob_data();
    bt_uuid_t uuid128();

    // `count` characters as they are; NULL when the text ends before them.
    const uint8_t* chars(int count);

    // The text up to the event's NUL, without moving on: what follows the fields is skipped by the
    // framework.
    char* rest() const { return reinterpret_cast<char*>(m_buffer + m_pos); }

private:
    static constexpr int kWidest = 32;
    char* take(int width, char (&room)[kWidest + 1]);

    uint8_t* m_buffer;
    int m_pos;
    int m_complete;
    int m_end;
};

// A counted block with its escapes undone, in room of its own (an event has at most 4095 characters).
// `data` is NULL when there is nothing in it.
class unescaped_block {
public:
    // Reads `wire_len` characters, of which the first `decode_len` are unescaped.
    unescaped_block(field_reader& in, int wire_len, int decode_len);
    unescaped_block(field_reader& in, int wire_len) : unescaped_block(in, wire_len, wire_len) {}

    bool whole = false; // false: the event ended inside the block
    uint16_t len = 0;
    uint8_t* data = nullptr;

protected:
    alignas(uint64_t) uint8_t m_room[4096];
};

// A block behind its count, of which only a count of 0 has no data: one of which unescaping leaves
// nothing has a pointer, though there is nothing to read.
class counted_block : public unescaped_block {
public:
    explicit counted_block(field_reader& in);

private:
    counted_block(field_reader& in, int count);
};

} // namespace vym

#endif
