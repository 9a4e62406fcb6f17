// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_field_reader.h"

namespace vym {

field_reader::field_reader(uint8_t* buffer, int pos)
    : m_buffer(buffer), m_pos(pos), m_complete(0), m_end(vym_event_text_end(buffer, pos, &m_complete)) {
}

// A field's characters where they are; cut where the text ends, in `room` and ended by a NUL.
char* field_reader::take(int width, char (&room)[kWidest + 1]) {
    auto* at = reinterpret_cast<char*>(m_buffer + m_pos);
    const int left = m_end - m_pos;
    if (left >= width) {
        m_pos += width;
        return at;
    }
    const int n = left > 0 ? left : 0;
    memcpy(room, at, static_cast<size_t>(n));
    room[n] = '\0';
    m_pos += n;
    return room;
}

uint8_t field_reader::byte() {
    char room[kWidest + 1];
    return parse_byte(take(2, room));
}

uint8_t field_reader::peek_byte() {
    const int at = m_pos;
    const uint8_t value = byte();
    m_pos = at;
    return value;
}

uint16_t field_reader::uint16() {
    char room[kWidest + 1];
    return parse_short(take(4, room));
}

uint32_t field_reader::uint32() {
    char room[kWidest + 1];
    return parse_int(take(8, room));
}

bt_bdaddr_t field_reader::address() {
    char room[kWidest + 1];
    return parse_address(take(12, room));
}

bt_oob_data_t field_reader::oob_data() {
    char room[kWidest + 1];
    bt_oob_data_t value;
    parse_oob_data(take(32, room), &value);
    return value;
}

bt_uuid_t field_reader::uuid128() {
    char room[kWidest + 1];
    bt_uuid_t value;
    parse_uuid128(take(32, room), &value);
    return value;
}

const uint8_t* field_reader::chars(int count) {
    if (count > m_end - m_pos) {
        return nullptr;
    }
    const uint8_t* at = m_buffer + m_pos;
    m_pos += count;
    return at;
}

unescaped_block::unescaped_block(field_reader& in, int wire_len, int decode_len) {
    const uint8_t* wire = in.chars(wire_len);
    whole = wire != nullptr;
    if (!whole) {
        return;
    }
    // Zeroed: a bad escape leaves its byte as it was, and nothing old may reach the application.
    memset(m_room, 0, static_cast<size_t>(decode_len));
    data = str_bytes_to_raw_bytes(wire, static_cast<unsigned short>(decode_len), m_room, &len);
}

counted_block::counted_block(field_reader& in) : counted_block(in, in.uint16()) {}

counted_block::counted_block(field_reader& in, int count) : unescaped_block(in, count) {
    if (whole && count > 0) {
        data = m_room;
    }
}

} // namespace vym
