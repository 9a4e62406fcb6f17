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
    field_reader(uint8_t* buffer, int pos)
        : m_buffer(buffer), m_pos(pos), m_complete(0),
          m_end(vym_event_text_end(buffer, pos, &m_complete)) {}

    // Whether the event's NUL has arrived.
    bool complete() const { return m_complete != 0; }
    // The index after what was read, at most the end of the text.
    int pos() const { return m_pos; }

    uint8_t byte() { return number<2>(parse_byte); }
    // A byte that stays in front of the cursor.
    uint8_t peek_byte() {
        const int at = m_pos;
        const uint8_t value = byte();
        m_pos = at;
        return value;
    }
    uint16_t uint16() { return number<4>(parse_short); }
    uint32_t uint32() { return number<8>(parse_int); }
    bt_bdaddr_t address() { return number<12>(parse_address); }
    bt_oob_data_t oob_data() {
        bt_oob_data_t value;
        take<32> text(*this);
        parse_oob_data(text.chars, &value);
        return value;
    }
    bt_uuid_t uuid128() {
        bt_uuid_t value;
        take<32> text(*this);
        parse_uuid128(text.chars, &value);
        return value;
    }

    // `count` characters as they are; NULL when the text ends before them.
    const uint8_t* chars(int count) {
        if (count > m_end - m_pos) {
            return nullptr;
        }
        const uint8_t* at = m_buffer + m_pos;
        m_pos += count;
        return at;
    }

    // The text up to the event's NUL, without moving on: what follows the fields is skipped by the
    // framework.
    char* rest() const { return reinterpret_cast<char*>(m_buffer + m_pos); }

private:
    // A field's characters, ended by a NUL, cut where the text ends.
    template <unsigned Width>
    struct take {
        explicit take(field_reader& in) {
            const unsigned left = in.m_pos < in.m_end ? static_cast<unsigned>(in.m_end - in.m_pos) : 0u;
            const unsigned n = left < Width ? left : Width;
            memcpy(chars, in.m_buffer + in.m_pos, n);
            in.m_pos += static_cast<int>(n);
        }
        char chars[Width + 1] = {};
    };

    template <unsigned Width, class Result>
    Result number(Result (*parse)(char*)) {
        take<Width> text(*this);
        return parse(text.chars);
    }

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
    unescaped_block(field_reader& in, int wire_len, int decode_len) {
        const uint8_t* wire = in.chars(wire_len);
        whole = wire != nullptr;
        if (!whole) {
            return;
        }
        // Zeroed: a bad escape leaves its byte as it was, and nothing old may reach the application.
        memset(m_room, 0, static_cast<size_t>(decode_len));
        data = str_bytes_to_raw_bytes(wire, static_cast<unsigned short>(decode_len), m_room, &len);
    }
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
    explicit counted_block(field_reader& in) : counted_block(in, in.uint16()) {}

private:
    counted_block(field_reader& in, int count) : unescaped_block(in, count) {
        if (whole && count > 0) {
            data = m_room;
        }
    }
};

} // namespace vym

#endif
