// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The phone book for tests: a table whose members record what they were given.
#ifndef VYM_TESTS_WIRE_PBAP_PROFILE_H
#define VYM_TESTS_WIRE_PBAP_PROFILE_H

#include "support/record_text.h"
#include "vym_pbap.h"
#include "wire/profile_conformance.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace wire {

/** The text of an entry's field in quotes; marked when it has no NUL or anything but zeroes behind it.
 */
template <size_t Room>
std::string FieldText(const char (&field)[Room]) {
    const char* const end = std::find(field, field + Room, '\0');
    const bool clean =
        end != field + Room && std::all_of(end, field + Room, [](char c) { return c == 0; });
    return "\"" + support::Escaped(std::string_view(field, static_cast<size_t>(end - field))) + "\"" +
           (clean ? "" : " and more");
}

/** `entry(target, index, "name", tel_type, "number", "time")` */
inline std::string EntryText(const phone_book_t& book) {
    return "entry(" + std::to_string(book.target) + ", " + std::to_string(book.index) + ", " +
           FieldText(book.name) + ", " + std::to_string(book.tel_type) + ", " + FieldText(book.number) +
           ", " + FieldText(book.time) + ")";
}

/** The bytes in hexadecimal digits, or "null". */
inline std::string BlockText(const uint8_t* data, size_t length) {
    std::string text = data == nullptr ? "null" : "";
    for (size_t i = 0; data != nullptr && i < length; ++i) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02X", data[i]);
        text += digits;
    }
    return text;
}

inline pbap_callback_t PbapTable() {
    pbap_callback_t table = {};
    table.connection_status_cb = [](uint8_t status, bt_bdaddr_t address) {
        ProfileRecord().Add(support::CallText("connection_status", status, address));
    };
    table.get_phonebook_status_cb = [](uint16_t result) {
        ProfileRecord().Add(support::CallText("get_phonebook_status", result));
    };
    table.get_phonebook_size_cb = [](uint16_t type, uint16_t size, uint16_t result) {
        ProfileRecord().Add(support::CallText("get_phonebook_size", type, size, result));
    };
    table.index_data_ind_cb = [](phone_book_t book) { ProfileRecord().Add(EntryText(book)); };
    table.phonebook_photodata_ind_cb = [](uint8_t state, uint16_t index, uint16_t length,
                                          uint8_t* data) {
        ProfileRecord().Add(support::CallText("photo", state, index, length) + " " +
                            BlockText(data, length));
    };
    return table;
}

struct PbapProfile {
    static void Init(Table kind) {
        static pbap_callback_t whole = PbapTable();
        static pbap_callback_t empty = {};
        vym_pbap_init(kind == Table::kNone ? nullptr : (kind == Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_pbap_done(); }
    static std::vector<std::string> Unknown() {
        return {"TA06", "TW", "TX0001", "tc0001", "Tc0001", " TC0001"};
    }
    static std::vector<ProfileEvent> Events() {
        const std::string photo = support::Bytes({0xDC, 0xDD, 0xDC, 0xDE, 'A', 0xDC, 0xDC});
        return {
            {"TS00A1B2C3D4E5F6", 14, "connection_status(0, A1B2C3D4E5F6)"},
            {"TSfea1b2c3d4e5f6", 14, "connection_status(254, A1B2C3D4E5F6)"},
            {"TC1234", 4, "get_phonebook_status(4660)"},
            {"TE00061234abcd", 12, "get_phonebook_size(6, 4660, 43981)"},
            {"TBN:Smith;Eva", 0, "", true},
            {"TBTC0001", 0, "", true},
            {"TB", 0, "", true},
            {"TD2ABCD0C05Smith;Eva;;;12345", 26, R"(entry(2, 43981, "EvaSmith", 0, "12345", ""))"},
            {"TD6000720511Alice13800138000", 26, R"(entry(6, 7, "", 2, "13800138000", ""))"},
            {"TD712340404Eva;9876 20260102T0304", 17,
             R"(entry(7, 4660, "Eva", 0, "9876", "20260102T0304"))", true},
            {"TR010003abc", 9, ""},
            {"TR010006TC0001", 12, ""},
            {"TP7FABCD0007" + photo, 17, "photo(127, 43981, 4) 000D41DC"},
            {"TP0112340000", 10, "photo(1, 4660, 0) null"},
        };
    }
};

} // namespace wire

#endif
