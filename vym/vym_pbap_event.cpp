// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_pbap_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = pbap_impl_callback_t;
using namespace vym;

constexpr int kMaxName = sizeof(phone_book_t::name) - 1;
constexpr int kMaxNumber = sizeof(phone_book_t::number) - 1;
constexpr size_t kMaxTime = sizeof(phone_book_t::time) - 1;
constexpr size_t kTimeScan = 100; // a text this long is no time

// Targets of an entry.
enum target_t {
    SIM_CONTACT = 5,
    PHONE_CONTACT = 6,
    FIRST_CALL_LIST = 7,
    LAST_CALL_LIST = 10,
    CALL_LIST_F = 15
};

std::atomic<pbap_event_parser_t*> s_evt_parser;

bool is_contact(int target) {
    return target == SIM_CONTACT || target == PHONE_CONTACT;
}

// The other lists of calls come without their times.
bool has_time(int target) {
    return (target >= FIRST_CALL_LIST && target <= LAST_CALL_LIST) || target == CALL_LIST_F;
}

// A field that must be there whole.
template <size_t Room>
bool take(field_reader& in, char (&field)[Room]) {
    const uint8_t* at = in.chars(Room - 1);
    if (at == nullptr) {
        return false;
    }
    memcpy(field, at, Room - 1);
    field[Room - 1] = '\0';
    return true;
}

// A length in two digits, capped at what the entry has room for. Names count in hexadecimal, numbers in
// decimal: that is how servers write them.
bool take_length(field_reader& in, int base, int cap, int* length) {
    char digits[3];
    if (!take(in, digits)) {
        return false;
    }
    const int announced = parse_byte_with_base(digits, base);
    *length = announced < cap ? announced : cap;
    return true;
}

bool take_kind(field_reader& in, phone_book_t* entry) {
    char target[2];
    char index[5];
    char tel_type[2] = {};
    if (!take(in, target) || !take(in, index)) {
        return false;
    }
    entry->target = parse_char_with_base(target, 16);
    entry->index = parse_short(index);
    if (is_contact(entry->target) && !take(in, tel_type)) {
        return false;
    }
    entry->tel_type = parse_char_with_base(tel_type, 16);
    return true;
}

bool take_texts(field_reader& in, phone_book_t* entry) {
    int name_len = 0;
    int number_len = 0;
    if (!take_length(in, 16, kMaxName, &name_len) || !take_length(in, 10, kMaxNumber, &number_len)) {
        return false;
    }
    auto* name = reinterpret_cast<unsigned char*>(in.rest());
    if (in.chars(name_len) == nullptr) {
        return false;
    }
    const uint8_t* number = in.chars(number_len);
    if (number == nullptr) {
        return false;
    }
    combine_name(reinterpret_cast<unsigned char*>(entry->name), kMaxName, name, name_len);
    memcpy(entry->number, number, static_cast<size_t>(number_len));
    return true;
}

// One separator, then the time up to the event's end. Both may be missing.
void take_time(field_reader& in, phone_book_t* entry) {
    if (in.chars(1) == nullptr) {
        return;
    }
    const size_t length = strnlen(in.rest(), kTimeScan);
    if (length < kTimeScan) {
        memcpy(entry->time, in.rest(), length < kMaxTime ? length : kMaxTime);
        in.chars(static_cast<int>(length));
    }
}

// TD: one entry. It is malformed when it ends before its number.
bool TD_parse(field_reader& in, callbacks* cbk) {
    phone_book_t entry;
    memset(&entry, 0, sizeof entry); // the padding too: the application receives every byte
    if (!take_kind(in, &entry) || !take_texts(in, &entry)) {
        return false;
    }
    if (has_time(entry.target)) {
        take_time(in, &entry);
    }
    notify(cbk, &callbacks::index_data_ind_cb, entry);
    return true;
}

// TR: raw vCard data.
bool TR_parse(field_reader& in, callbacks* cbk) {
    const uint8_t type = in.byte();
    counted_block raw(in);
    if (raw.whole) {
        notify(cbk, &callbacks::phonebook_rawdata_ind_cb, type, raw.len, raw.data);
    }
    return raw.whole;
}

// TP: a piece of a photograph.
bool TP_parse(field_reader& in, callbacks* cbk) {
    const uint8_t state = in.byte();
    const uint16_t index = in.uint16();
    counted_block photo(in);
    if (photo.whole) {
        notify(cbk, &callbacks::phonebook_photodata_ind_cb, state, index, photo.len, photo.data);
    }
    return photo.whole;
}

using body = bodies<callbacks>;

constexpr event_row kEvents[] = {
    plain<&callbacks::connection_status_cb, byte, address>("TS", "onConnectionStatus", 14),
    plain<&callbacks::get_phonebook_status_cb, uint16>("TC", "onGetPhonebookStatus", 4),
    plain<&callbacks::get_phonebook_size_cb, uint16, uint16, uint16>("TE", "onGetPhonebookSize", 12),
    plain<&callbacks::vcf_data_ind_cb, rest>("TB", "onVcfDataInd", 0),
    body::with_tail<TD_parse>("TD", "onIndexDataInd", 0),
    body::with_tail<TR_parse>("TR", "onPhonebookRawdataInd", 6),
    body::with_tail<TP_parse>("TP", "onPhonebookPhotodataInd", 10),
};

} // namespace

extern "C" {

event_parser_t* create_pbap_event_parser(pbap_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, pbap_event_parser_t>(cb);
}

void destroy_pbap_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
